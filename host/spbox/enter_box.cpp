#include "host/spbox/enter_box.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "host/base/number.h"
#include "host/box/advice.h"
#include "host/spbox/handshake.h"
#include "host/spbox/machine.h"
#include "host/spbox/own_signals.h"
#include "host/spbox/signals.h"
#include "host/spbox/standard_output.h"
#include "host/spbox/verb.h"

namespace spbox {
namespace {

// Why a program cannot be run inside the box's root, and what helps.
std::string cannot_run(const std::string &program, int error) {
  if (error == ENOENT && program.find('/') == std::string::npos) {
    return "there is no such program on the PATH in the box. The box has the workstation's programs, but of /tmp only "
           "the program's own folder, the working folder and spbox's.";
  }
  if (error == ENOENT && access(program.c_str(), F_OK) != 0) {
    return "there is no such file in the box. It has the workstation's folders, but a /tmp, a /dev and a /mgb of its "
           "own.";
  }
  if (error == ENOENT) return "the interpreter or loader that it names is not there.";
  if (error == EACCES) return "it is no program that may be run (see its permissions).";
  return std::string("it cannot be run: ") + std::strerror(error) + ".";  // NOLINT(concurrency-mt-unsafe): one thread
}

int refuse() {
  complain(box::advice({"run"}) + " alone enters a box. " + box::advice({"help", "run"}) + " says more.");
  return kUsage;
}

}  // namespace

int enter_box(int argc, char **argv) {
  const auto fd = base::number_in<int>(argc < 3 ? "" : argv[0]);
  if (!fd) return refuse();
  const sigset_t ending = ending_signals();
  sigset_t before;
  sigprocmask(SIG_BLOCK, &ending, &before);
  if (!restore_signals(argv[1])) return refuse();
  if (const int untold = announce_to(*fd); untold != 0) {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): one thread
    complain(std::string("the command cannot be announced: ") + std::strerror(untold) + ".");
    return kFailure;
  }
  close(*fd);
  keep_signals_among_own();
  sigprocmask(SIG_SETMASK, &before, nullptr);
  char **command = argv + 2;
  const std::string why = become_command(command);
  const int error = why.empty() ? errno : ENOEXEC;
  complain(command[0] + (": " + (why.empty() ? cannot_run(command[0], error) : why)));
  return error == ENOENT ? 127 : 126;
}

}  // namespace spbox
