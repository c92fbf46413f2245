#include "host/terminal/background_program.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <utility>

#include "host/base/child.h"
#include "host/base/pipe.h"
#include "host/clock/hours.h"
#include "host/terminal/terminal.h"

namespace terminal {
namespace {

using std::chrono::milliseconds;

constexpr int kTold = 3;  // the descriptor by which the program tells that it is ready

[[noreturn]] void fail(int error, const std::string &what) {
  throw std::system_error(error, std::generic_category(), what);
}

// Whether the descriptor became readable in time. Throws Interrupted.
bool comes(int fd, int alarm, std::optional<milliseconds> patience) {
  std::optional<box_time::nanoseconds> deadline;
  if (patience) deadline = box_time::now() + *patience;
  for (;;) {
    std::array<pollfd, 2> wait{pollfd{fd, POLLIN, 0}, pollfd{alarm, POLLIN, 0}};
    const int ready = box_time::poll(wait, deadline);
    if (ready > 0 && wait[1].revents != 0) throw Interrupted();
    if (ready >= 0) return ready > 0;
    if (errno != EINTR) fail(errno, "poll");
  }
}

// Out of the way of the descriptors that the program gets.
int beyond_those_of_program(int fd, int exec_error) {
  if (fd > kTold) return fd;
  const int copy = fcntl(fd, F_DUPFD_CLOEXEC, kTold + 1);
  if (copy < 0) base::cannot_become_program(exec_error, errno);
  return copy;
}

// A program whose owner is gone, killed perhaps, would work on: nobody knew of it.
[[noreturn]] void become(const base::ArgumentVector &arguments, pid_t owner, int output, int tells, int exec_error) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != owner) _exit(127);
  exec_error = beyond_those_of_program(exec_error, exec_error);
  output = beyond_those_of_program(output, exec_error);
  tells = beyond_those_of_program(tells, exec_error);
  close(STDIN_FILENO);
  const bool is_ready = open("/dev/null", O_RDONLY) == STDIN_FILENO && dup2(output, STDOUT_FILENO) >= 0 &&
                        dup2(output, STDERR_FILENO) >= 0 && dup2(tells, kTold) >= 0;
  if (is_ready) execvp(arguments.program(), arguments.data());
  base::cannot_become_program(exec_error, errno);
}

}  // namespace

BackgroundProgram::BackgroundProgram(const std::vector<std::string> &command, int alarm) : alarm_(alarm) {
  const base::ArgumentVector arguments(command);
  output_ = base::Descriptor(memfd_create("output", MFD_CLOEXEC));
  // Processes that write at once would write over each other: the kernel keeps one place for them all and locks it for
  // files of a folder only.
  if (output_.get() < 0 || fcntl(output_.get(), F_SETFL, O_APPEND) != 0) fail(errno, "cannot run " + command.at(0));
  base::Pipe told, exec_error;
  const pid_t owner = getpid();
  pid_ = fork();
  if (pid_ < 0) base::no_process_for(command.at(0));
  if (pid_ == 0) become(arguments, owner, output_.get(), told.in.get(), exec_error.in.get());
  told_ = std::move(told.out);
  exec_error.in.reset();

  int error = 0;  // Nothing comes where execve succeeds.
  const bool failed = read(exec_error.out.get(), &error, sizeof error) == sizeof error;
  process_ = base::Descriptor(failed ? -1 : static_cast<int>(syscall(SYS_pidfd_open, pid_, 0)));
  if (process_.get() >= 0) return;
  if (!failed) error = errno;
  kill();
  fail(error, (failed ? "cannot run " : "cannot watch ") + command.at(0));
}

BackgroundProgram::BackgroundProgram(BackgroundProgram &&other) noexcept
    : pid_(std::exchange(other.pid_, -1)),
      alarm_(other.alarm_),
      status_(other.status_),
      process_(std::move(other.process_)),
      output_(std::move(other.output_)),
      told_(std::move(other.told_)) {}

BackgroundProgram::~BackgroundProgram() {
  try {
    kill();
  } catch (const std::exception &) {
    // It cannot be waited for: nobody can do more.
  }
}

void BackgroundProgram::kill() {
  if (pid_ < 0 || status_) return;
  ::kill(pid_, SIGKILL);
  status_ = base::exit_status_of(pid_);
}

std::optional<int> BackgroundProgram::wait(std::optional<milliseconds> patience) {
  if (!status_ && comes(process_.get(), alarm_, patience)) status_ = base::exit_status_of(pid_);
  return status_;
}

std::optional<bool> BackgroundProgram::wait_until_ready(milliseconds patience) {
  if (!comes(told_.get(), alarm_, patience)) return {};
  char byte = 0;
  return read(told_.get(), &byte, 1) == 1;
}

std::string BackgroundProgram::output() const {
  std::string text;
  std::array<char, 4096> bytes{};
  for (;;) {
    const auto length = pread(output_.get(), bytes.data(), bytes.size(), static_cast<off_t>(text.size()));
    if (length < 0 && errno == EINTR) continue;
    if (length < 0) throw std::system_error(errno, std::generic_category(), "what a program said cannot be read");
    if (length == 0) return text;
    text.append(bytes.data(), static_cast<std::size_t>(length));
  }
}

}  // namespace terminal
