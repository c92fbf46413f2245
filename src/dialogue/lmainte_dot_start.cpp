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
#include "trace_events/dialogue.h"

int sig_catch = 0;

namespace {

using lmainte::Block;
using lmainte::Call;
using lmainte::Level;
using trace_events::DotStart;

lmainte::Trace trace;
constexpr Block kBlock = lmainte::block_of<DotStart>();

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

// If the clock fails, this is -1.
time_t read_clock(const Call &call) {
  const time_t now = time(nullptr);
  if (now == static_cast<time_t>(-1)) call.system_call_failed(DotStart::kNoClock);
  return now;
}

// A clock of 32 bits becomes negative in January 2038: the difference has to be taken in its own width. Below 0 where the
// clock was set back.
int64_t elapsed(time_t start, time_t now) {
  if constexpr (sizeof(time_t) == sizeof(int32_t)) {
    return static_cast<int32_t>(static_cast<uint32_t>(now) - static_cast<uint32_t>(start));
  }
  return int64_t{now} - start;
}

void show_mark(const Call &call, unsigned long seconds) {
  if (seconds % kSecondsALine == 0) putchar('\n');
  if (seconds % kSecondsANumber == 0)
    printf("%4lu", seconds);
  else
    putchar('.');
  call.point(DotStart::kMark, static_cast<uint32_t>(seconds));
}

// After the clock jumps ahead, the marks catch up: one in each second.
void show_progress(const Call &call, int32_t seconds) {
  const time_t start = read_clock(call);
  fputs("   0", stdout);
  fflush(stdout);
  unsigned long shown = 0;
  for (int64_t passed = 0; passed < seconds; passed = elapsed(start, read_clock(call))) {
    if (passed >= static_cast<int64_t>(shown) + kSecondsAMark) {
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
  if (installed != LMAINTE_OK) call.error(DotStart::kHandlerNotSet, installed);
  lmainte_signal_mask(masks);
  show_progress(call, seconds);
  // NOLINTNEXTLINE(clang-diagnostic-format-security): the catalogue's text is the format
  printf(lmainte::translated(kDone));
  putchar('\n');
  call.point(DotStart::kEnded, caught());
  fflush(stdout);
  _exit(0);
}

}  // namespace

int32_t lmainte_dot_start(const DotParam *request) {
  const Call call(trace, kBlock);
  if (request == nullptr) {
    call.error(DotStart::kNoRequest);
    return kFailed;
  }
  if (request->enable == 0 || request->seconds < 1) {
    call.error(DotStart::kRefused, request->enable, request->seconds);
    return kFailed;
  }
  if (request->message != nullptr) printf("%s", request->message);
  // Write out what the caller has printed, or the child writes it a second time.
  fflush(stdout);
  // SIGTERM waits until the child has its handler.
  const lmainte::SignalsBlocked blocked(SIGTERM);
  const pid_t child = fork();
  if (child == -1) {
    call.system_call_failed(DotStart::kNoChild);
    return kFailed;
  }
  if (child == 0) run_indicator(call, request->seconds);
  call.point(Level::kProcess, DotStart::kChild, child);
  return child;
}

// Has a trace record of its own: it runs at any moment, also while another record is half built.
void disp_done(int) {
  const int error = errno;
  if (caught() == 0) __atomic_store_n(&sig_catch, 1, __ATOMIC_RELAXED);
  lmainte::Trace own;
  own.begin(__builtin_LINE());
  own.write(Level::kProgress, DotStart::kSignalCame);
  errno = error;
}
