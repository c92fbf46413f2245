#include "include/lmainte.h"

#include <sys/types.h>
#include <sys/wait.h>
#include <cerrno>
#include <csignal>

#include "src/frame/trace.h"
#include "trace_events/dialogue.h"

namespace {

using lmainte::Call;
using lmainte::Level;
using trace_events::DotEnd;

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::block_of<DotEnd>();

}  // namespace

void lmainte_dot_end(int32_t pid) {
  const Call call(trace, kBlock);
  if (pid <= 0) {
    call.error(DotEnd::kNoChild, pid);
    return;
  }
  const pid_t ended = waitpid(pid, nullptr, WNOHANG);
  call.point(Level::kProcess, DotEnd::kHasEnded, ended);
  if (ended != 0) return;
  kill(pid, SIGTERM);
  call.point(Level::kProcess, DotEnd::kSignalSent, pid);
  // The line on the terminal is finished when this returns, also where a signal of the caller's comes in between.
  while (waitpid(pid, nullptr, 0) == -1 && errno == EINTR) continue;
}
