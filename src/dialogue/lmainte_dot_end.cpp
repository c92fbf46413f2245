#include "include/lmainte.h"

#include <sys/types.h>
#include <sys/wait.h>
#include <cerrno>
#include <csignal>

#include "src/frame/trace.h"

namespace {

using lmainte::Call;
using lmainte::Level;

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::plain_block(0x038);

}  // namespace

void lmainte_dot_end(int32_t pid) {
  const Call call(trace, kBlock);
  if (pid <= 0) {
    call.error(1, pid);
    return;
  }
  const pid_t ended = waitpid(pid, nullptr, WNOHANG);
  call.point(Level::kProcess, 2, ended);
  if (ended != 0) return;
  kill(pid, SIGTERM);
  call.point(Level::kProcess, 3, pid);
  // The line on the terminal is finished when this returns, also where a signal of the caller's comes in between.
  while (waitpid(pid, nullptr, 0) == -1 && errno == EINTR) continue;
}
