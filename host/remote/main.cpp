// platform_server DIR NAME FD [BOX]: the platform of the box in this folder, for programs on another machine that is emulated, until
// SIGTERM or until its parent ends. It listens under NAME in the box's folder of daemons. Writes its process id to the descriptor once
// it does; where it fails, before that or after, and where a process had to do without it, a line that says why. BOX is for whoever
// looks at the processes.
#include <fcntl.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <csignal>
#include <exception>
#include <string>

#include "host/base/descriptor.h"
#include "host/base/leave_terminal.h"
#include "host/base/number.h"
#include "host/base/told.h"
#include "host/box/full_file.h"
#include "host/remote/server.h"

namespace {

volatile sig_atomic_t asked_to_end = 0;

// Lets SIGTERM and SIGCHLD in only where they are waited for. The signals of the operator's terminal are for the command.
sigset_t prepare_signals() {
  sigset_t own, before;
  sigemptyset(&own);
  sigaddset(&own, SIGTERM);
  sigaddset(&own, SIGCHLD);
  sigprocmask(SIG_BLOCK, &own, &before);
  sigdelset(&before, SIGTERM);
  sigdelset(&before, SIGCHLD);
  struct sigaction action = {};
  action.sa_handler = [](int signal) {
    if (signal == SIGTERM) asked_to_end = 1;
  };
  sigaction(SIGTERM, &action, nullptr);
  sigaction(SIGCHLD, &action, nullptr);
  std::signal(SIGPIPE, SIG_IGN);
  setsid();
  prctl(PR_SET_PDEATHSIG, SIGTERM);
  return before;
}

void serve(const box::Place &place, const std::string &name, int fd, const sigset_t &signals) {
  remote::Tally tally;
  {
    remote::Server server(place, name, tally);
    base::write_all(fd, std::to_string(getpid()) + "\n");
    while (asked_to_end == 0) server.step(signals);
  }
  const auto say_after = [&](unsigned times, const std::string &line) {
    if (times > 0) base::write_all(fd, line + "\n");
  };
  say_after(tally.died,
            "a process that served the command died. The call under way failed, and what was open was closed.");
  say_after(tally.senseless, "what came from the command was no message of a platform. The call failed.");
  say_after(tally.turned_away, "there was no room for a process of the command: " +
                                   std::to_string(remote::kMostStandIns) + " are served at a time. Its calls failed.");
}

}  // namespace

int main(int argc, char **argv) {
  box::survive_full_files();
  if (argc != 4 && argc != 5) return 2;
  const auto fd = base::number_in<int>(argv[3]);
  if (!fd) return 2;
  fcntl(*fd, F_SETFD, FD_CLOEXEC);
  base::leave_terminal();  // whoever reads the other end of the command's pipes is not to wait for this process
  try {
    serve(box::Place(argv[1]), argv[2], *fd, prepare_signals());
    return 0;
  } catch (const std::exception &error) {
    base::write_all(*fd, base::told(error) + "\n");
    return 1;
  }
}
