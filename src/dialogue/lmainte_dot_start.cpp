#include "include/lmainte.h"

#include <sys/types.h>
#include <unistd.h>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <ctime>

#include "src/dialogue/catalogue.h"
#include "src/frame/signals_blocked.h"
#include "src/frame/trace.h"

int sig_catch = 0;

namespace {

using lmainte::Block;
using lmainte::Call;
using lmainte::Level;

lmainte::Trace trace;
constexpr Block kBlock = lmainte::plain_block(0x037);
constexpr uint32_t kDonePoint = 9;

constexpr int32_t kFailed = -1;
constexpr int64_t kSecondsAMark = 5;
constexpr unsigned long kSecondsANumber = 30;
constexpr unsigned long kSecondsALine = 240;

// TRANSLATORS: stands behind the last dot of a progress line.
// xgettext:c-format
constexpr lmainte::Message kDone = lmainte::message("done\n");

// Written by the signal handler while the loop reads it.
int caught() {
  return __atomic_load_n(&sig_catch, __ATOMIC_RELAXED);
}

// The clock in a width that no sum of it can leave. A clock that fails reads -1.
int64_t read_clock(const Call &call) {
  const time_t now = time(nullptr);
  if (now == static_cast<time_t>(-1)) call.system_error(4, errno);
  return now;
}

void show_mark(const Call &call, unsigned long seconds) {
  if (seconds % kSecondsALine == 0) putchar('\n');
  if (seconds % kSecondsANumber == 0)
    printf("%4lu", seconds);
  else
    putchar('.');
  call.point(3, static_cast<uint32_t>(seconds));
}

// A clock that jumps ahead is caught up by one mark a second.
void show_progress(const Call &call, int32_t seconds) {
  const int64_t start = read_clock(call);
  fputs("   0", stdout);
  fflush(stdout);
  unsigned long shown = 0;
  for (int64_t now = start; now < start + seconds; now = read_clock(call)) {
    if (now - start >= static_cast<int64_t>(shown) + kSecondsAMark) {
      shown += kSecondsAMark;
      show_mark(call, shown);
    }
    fflush(stdout);
    sleep(1);
    if (caught() == 1) break;
  }
}

// Ends with _exit: the caller's exit handlers are the caller's.
[[noreturn]] void run_indicator(const Call &call, int32_t seconds) {
  const lmainte_signal_entry handlers[] = {{SIGTERM, disp_done}, {-1, nullptr}};
  const lmainte_mask_entry masks[] = {{SIGTERM, SIG_UNBLOCK}, {-1, 0}};
  const int32_t installed = lmainte_signal(handlers);
  if (installed != LMAINTE_OK) call.error(5, installed);
  lmainte_signal_mask(masks);
  show_progress(call, seconds);
  // NOLINTNEXTLINE(clang-diagnostic-format-security): the catalogue's text is the format
  printf(lmainte::translated(kDone));
  putchar('\n');
  call.point(4, caught());
  fflush(stdout);
  _exit(0);
}

}  // namespace

int32_t lmainte_dot_start(const DotParam *request) {
  const Call call(trace, kBlock);
  if (request == nullptr) {
    call.error(1);
    return kFailed;
  }
  if (request->enable == 0 || request->seconds < 1) {
    call.error(2, request->enable, request->seconds);
    return kFailed;
  }
  if (request->message != nullptr) printf("%s", request->message);
  // What is still unwritten is the caller's: the child must not write it a second time.
  fflush(stdout);
  // SIGTERM waits until the child has its handler.
  const lmainte::SignalsBlocked blocked(SIGTERM);
  const pid_t child = fork();
  if (child == -1) {
    call.system_error(3, errno);
    return kFailed;
  }
  if (child == 0) run_indicator(call, request->seconds);
  call.point(Level::kProcess, 2, child);
  return child;
}

// Runs while any other record may be half built, so it has a trace of its own.
void disp_done(int) {
  const int error = errno;
  if (caught() == 0) __atomic_store_n(&sig_catch, 1, __ATOMIC_RELAXED);
  lmainte::Trace own;
  own.begin(__builtin_LINE());
  own.write(Level::kProgress, kBlock.point(kDonePoint));
  errno = error;
}
