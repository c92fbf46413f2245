#include "include/lmainte.h"

#include <sys/wait.h>
#include <unistd.h>
#include <cerrno>
#include <cstdio>

#include "src/frame/signals_blocked.h"
#include "src/frame/trace.h"
#include "trace_events/dialogue.h"

int g_show_file_pid = -1;

namespace {

using lmainte::Call;
using lmainte::Level;
using lmainte::SignalsBlocked;
using trace_events::ShowFile;

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::block_of<ShowFile>();

constexpr int kCannotRun = 127;

// One vector for the process: it shows one file at a time. No shell is involved, so the pager takes "2>" and
// "/dev/null" for two more files; it has always been called so.
char path_argument[1024];
char pager[] = "/bin/busybox";
char applet[] = "more";
char errors_to[] = "2>";
char nowhere[] = "/dev/null";
char *const pager_arguments[] = {pager, applet, path_argument, errors_to, nowhere, nullptr};

// A signal handler of the maintenance command may look at any time.
void set_pager_pid(pid_t pid) {
  __atomic_store_n(&g_show_file_pid, pid, __ATOMIC_RELAXED);
}

// Standard output stays open: it is what the pager writes to, and it reads its keys from the terminal itself.
[[noreturn]] void run_pager(const Call &call, SignalsBlocked &blocked) {
  close(STDIN_FILENO);
  close(STDERR_FILENO);
  call.point(Level::kProcess, ShowFile::kChildRuns);
  char *const environment[] = {nullptr};
  blocked.restore();
  execve(pager, pager_arguments, environment);
  call.system_call_failed(ShowFile::kCannotRun);
  _exit(kCannotRun);
}

// A handler finds either no pager or the id of the one that runs; in the child it finds none.
pid_t start_pager(const Call &call) {
  SignalsBlocked blocked;
  const pid_t child = fork();
  const int error = errno;
  if (child == 0) run_pager(call, blocked);
  set_pager_pid(child);
  if (child == -1) call.system_error(ShowFile::kNoChild, error);
  return child;
}

// An operator who leaves early, a pager that is killed and a wait that fails are no failures of the show.
int32_t await_pager(const Call &call, pid_t child) {
  int status = 0;
  const pid_t reaped = waitpid(child, &status, 0);
  const int error = errno;
  set_pager_pid(-1);
  if (reaped != child) {
    call.system_error(ShowFile::kWaitFailed, reaped, error);
    return LMAINTE_OK;
  }
  if ((status & 0x7F) != 0) {
    call.error(ShowFile::kKilled, status);
    return LMAINTE_OK;
  }
  if (((status >> 8) & 0xFF) != kCannotRun) return LMAINTE_OK;
  call.error(ShowFile::kNotStarted, status);
  return LMAINTE_FAILED;
}

}  // namespace

int32_t lmainte_show_file(const char *path) {
  Call call(trace, kBlock);
  if (path == nullptr) {
    call.error(ShowFile::kNoPath);
    return call.returns(LMAINTE_FAILED);
  }
  snprintf(path_argument, sizeof path_argument, "%s", path);
  const pid_t child = start_pager(call);
  if (child == -1) return call.returns(LMAINTE_FAILED);
  return call.returns(await_pager(call, child));
}
