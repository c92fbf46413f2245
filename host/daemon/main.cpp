// monitor_daemon DIR FD [BOX]: answers the requests that come to the box in this folder, until SIGTERM or until its parent
// ends. Writes its process id to the descriptor once requests are answered, by this daemon or by that of another command in
// the box: then this one waits, and takes over. Where it fails, before that or after, it writes a line that says why. BOX is
// for whoever looks at the processes: in a root of its own every box's folder is "/".
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <exception>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>

#include "host/base/descriptor.h"
#include "host/base/leave_terminal.h"
#include "host/base/number.h"
#include "host/base/told.h"
#include "host/box/daemon_socket.h"
#include "host/box/full_file.h"
#include "host/box/own_files.h"
#include "host/daemon/server.h"
#include "host/include/lmainte_host.h"

namespace {

volatile sig_atomic_t asked_to_end = 0;

// Lets SIGTERM in only where it is waited for. The signals of the operator's terminal are for the command.
sigset_t prepare_signals() {
  sigset_t term, before;
  sigemptyset(&term);
  sigaddset(&term, SIGTERM);
  sigprocmask(SIG_BLOCK, &term, &before);
  sigdelset(&before, SIGTERM);
  struct sigaction action = {};
  action.sa_handler = [](int) { asked_to_end = 1; };
  sigaction(SIGTERM, &action, nullptr);
  std::signal(SIGPIPE, SIG_IGN);  // nobody may care any more that it is ready
  setsid();
  return before;
}

// A parent that ended before this was said is never heard of again, but nobody listens to the descriptor any more.
void end_with_parent(int ready_fd) {
  prctl(PR_SET_PDEATHSIG, SIGTERM);
  pollfd at{ready_fd, 0, 0};
  if (poll(&at, 1, 0) == 1 && (at.revents & POLLERR) != 0) asked_to_end = 1;
}

// Returns 0, or a number of errno.
int say(int fd, const std::string &line) {
  return base::write_all(fd, line + "\n");
}

// Somebody may wait for this who does not learn it: then the daemon ends, which they see. Nobody is there any more where the
// pipe is closed.
void say_ready(int fd) {
  const int error = say(fd, std::to_string(getpid()));
  if (error != 0 && error != EPIPE) throw std::system_error(error, std::generic_category(), "saying that it is ready");
}

// One daemon of a box answers at a time. The file stays: to remove it would let two daemons hold two files of its name.
class Turn {
 public:
  explicit Turn(const box::Place &place)
      : place_(place), fd_(open((place.daemons() / ".turn").c_str(), O_RDWR | O_CREAT | box::kOwnFile, 0666)) {
    if (fd_.get() < 0) fail();
  }

  // Takes the turn, or waits until the one before answers, which it does soon when it has begun, and no more when it ends.
  // Returns whether the turn was taken.
  bool take_unless_answered() const {
    const auto end = std::chrono::steady_clock::now() + kPatience;
    while (flock(fd_.get(), LOCK_EX | LOCK_NB) != 0) {
      if (errno != EWOULDBLOCK && errno != EINTR) fail();
      if (box::daemon_listens(place_.daemons(), LMAINTE_HOST_MONITOR)) return false;
      if (std::chrono::steady_clock::now() >= end) {
        throw std::runtime_error("another one holds " + (place_.daemons() / ".turn").string() + " and does not listen");
      }
      std::this_thread::sleep_for(kBetweenTries);
    }
    return true;
  }

  // Waits for the end of the one before. SIGTERM ends a daemon that waits, which has nothing to clear away.
  void wait(const sigset_t &signals) const {
    struct sigaction end = {};
    struct sigaction later;
    end.sa_handler = SIG_DFL;
    sigaction(SIGTERM, &end, &later);
    sigset_t blocked;
    sigprocmask(SIG_SETMASK, &signals, &blocked);
    while (flock(fd_.get(), LOCK_EX) != 0) {
      if (errno != EINTR) fail();
    }
    sigprocmask(SIG_SETMASK, &blocked, nullptr);
    sigaction(SIGTERM, &later, nullptr);
  }

 private:
  static constexpr std::chrono::seconds kPatience{5};
  static constexpr std::chrono::milliseconds kBetweenTries{5};

  [[noreturn]] void fail() const {
    throw std::system_error(errno, std::generic_category(), (place_.daemons() / ".turn").string());
  }

  const box::Place &place_;
  base::Descriptor fd_;
};

void serve(const box::Place &place, int ready_fd, const sigset_t &signals) {
  std::filesystem::create_directories(place.daemons());
  const Turn turn(place);
  const bool first = turn.take_unless_answered();
  if (!first) {
    say_ready(ready_fd);
    turn.wait(signals);
  }
  monitor::Server server(place);
  if (first) say_ready(ready_fd);
  while (asked_to_end == 0) server.step(signals);
}

}  // namespace

int main(int argc, char **argv) {
  box::survive_full_files();
  if (argc != 3 && argc != 4) return 2;
  const auto ready_fd = base::number_in<int>(argv[2]);
  if (!ready_fd) return 2;
  try {
    const sigset_t signals = prepare_signals();
    base::leave_terminal();  // whoever reads the other end of the command's pipes is not to wait for the daemon
    end_with_parent(*ready_fd);
    serve(box::Place(argv[1]), *ready_fd, signals);
    return 0;
  } catch (const std::exception &error) {
    say(*ready_fd, base::told(error));
    return 1;
  }
}
