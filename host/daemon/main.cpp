// monitor_daemon DIR FD: answers the requests that come to the box in this folder, until SIGTERM or until its parent ends.
// Writes a byte to the descriptor once requests are answered, by this daemon or by that of another command in the box:
// then this one waits, and takes over.
#include <fcntl.h>
#include <sys/file.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <exception>
#include <string_view>
#include <system_error>

#include "host/daemon/server.h"

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
  setsid();
  return before;
}

// A parent that ended before this was said is never heard of again.
void end_with(pid_t parent) {
  prctl(PR_SET_PDEATHSIG, SIGTERM);
  if (getppid() != parent) asked_to_end = 1;
}

// Whoever reads the other end of the command's pipes is not to wait for the daemon.
void leave_terminal() {
  const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
  if (nothing < 0) return;
  for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) dup2(nothing, fd);
  if (nothing > STDERR_FILENO) close(nothing);
}

void say_ready(int fd) {
  leave_terminal();
  const char ready = 'r';
  [[maybe_unused]] const ssize_t nobody_may_care = write(fd, &ready, 1);
  close(fd);
}

// One daemon of a box answers at a time. The file stays: to remove it would let two daemons hold two files of its name.
class Turn {
 public:
  explicit Turn(const box::Place &place)
      : fd_(open((place.daemons() / ".turn").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666)) {
    if (fd_ < 0) throw std::system_error(errno, std::generic_category(), place.daemons().string());
  }
  ~Turn() { close(fd_); }
  Turn(const Turn &) = delete;
  Turn &operator=(const Turn &) = delete;

  bool take_at_once() const { return flock(fd_, LOCK_EX | LOCK_NB) == 0; }

  // Waits for the end of the one before. SIGTERM ends a daemon that waits, which has nothing to clear away.
  void wait(const sigset_t &signals) const {
    struct sigaction end = {};
    struct sigaction later;
    end.sa_handler = SIG_DFL;
    sigaction(SIGTERM, &end, &later);
    sigset_t blocked;
    sigprocmask(SIG_SETMASK, &signals, &blocked);
    while (flock(fd_, LOCK_EX) != 0 && errno == EINTR) {
    }
    sigprocmask(SIG_SETMASK, &blocked, nullptr);
    sigaction(SIGTERM, &later, nullptr);
  }

 private:
  int fd_;
};

void serve(const box::Place &place, int ready_fd, const sigset_t &signals) {
  std::filesystem::create_directories(place.daemons());
  const Turn turn(place);
  const bool first = turn.take_at_once();
  if (!first) {
    say_ready(ready_fd);
    turn.wait(signals);
  }
  monitor::Server server(place);
  if (first) say_ready(ready_fd);
  while (asked_to_end == 0) server.step(signals);
}

int number_in(std::string_view text) {
  int number = -1;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

}  // namespace

int main(int argc, char **argv) {
  if (argc != 4) return 2;
  try {
    const sigset_t signals = prepare_signals();
    end_with(number_in(argv[3]));
    serve(box::Place(argv[1]), number_in(argv[2]), signals);
    return 0;
  } catch (const std::exception &error) {
    std::fprintf(stderr, "spbox: the box's daemon: %s\n", error.what());
    return 1;
  }
}
