#include "host/play/helper.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <utility>

#include "host/box/child.h"
#include "host/terminal/terminal.h"

namespace play {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr int kTold = 3;  // the descriptor by which the program tells that it is ready

[[noreturn]] void fail(int error, const std::string &what) {
  throw std::system_error(error, std::generic_category(), what);
}

// Whether the descriptor became readable in time. Throws Interrupted.
bool comes(int fd, int alarm, std::optional<milliseconds> patience) {
  const auto deadline = Clock::now() + patience.value_or(milliseconds{0});
  for (;;) {
    const auto left = std::chrono::duration_cast<milliseconds>(deadline - Clock::now()).count();
    std::array<pollfd, 2> wait{pollfd{fd, POLLIN, 0}, pollfd{alarm, POLLIN, 0}};
    const int ready = poll(wait.data(), wait.size(), !patience ? -1 : left > 0 ? static_cast<int>(left) : 0);
    if (ready > 0 && wait[1].revents != 0) throw terminal::Interrupted();
    if (ready > 0) return true;
    if (ready == 0 && patience && Clock::now() >= deadline) return false;
    if (ready < 0 && errno != EINTR) fail(errno, "poll");
  }
}

}  // namespace

Helper::Helper(const std::vector<std::string> &command, int alarm) : alarm_(alarm) {
  const box::ArgumentVector arguments(command);
  output_ = box::Descriptor(memfd_create("output", MFD_CLOEXEC));
  std::array<int, 2> ends{};
  if (output_.get() < 0 || pipe2(ends.data(), O_CLOEXEC) != 0) fail(errno, "cannot run " + command.at(0));
  told_ = box::Descriptor(ends[0]);
  const box::Descriptor tells(ends[1]);

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, output_.get(), STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, output_.get(), STDERR_FILENO);
  posix_spawn_file_actions_adddup2(&actions, tells.get(), kTold);
  const int error = posix_spawnp(&pid_, arguments.program(), &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) fail(error, "cannot run " + command.at(0));
  process_ = box::Descriptor(static_cast<int>(syscall(SYS_pidfd_open, pid_, 0)));
  if (process_.get() < 0) {
    const int reason = errno;
    kill();
    fail(reason, "cannot watch " + command.at(0));
  }
}

Helper::Helper(Helper &&other) noexcept
    : pid_(std::exchange(other.pid_, -1)),
      alarm_(other.alarm_),
      status_(other.status_),
      process_(std::move(other.process_)),
      output_(std::move(other.output_)),
      told_(std::move(other.told_)) {}

Helper::~Helper() {
  try {
    kill();
  } catch (const std::exception &) {
    // It cannot be waited for: nobody can do more.
  }
}

void Helper::kill() {
  if (pid_ < 0 || status_) return;
  ::kill(pid_, SIGKILL);
  status_ = box::exit_status_of(pid_);
}

std::optional<int> Helper::wait(std::optional<milliseconds> patience) {
  if (!status_ && comes(process_.get(), alarm_, patience)) status_ = box::exit_status_of(pid_);
  return status_;
}

bool Helper::is_ready() {
  comes(told_.get(), alarm_, {});
  char byte = 0;
  return read(told_.get(), &byte, 1) == 1;
}

std::string Helper::output() const {
  std::string text;
  std::array<char, 4096> bytes{};
  for (;;) {
    const auto length = pread(output_.get(), bytes.data(), bytes.size(), static_cast<off_t>(text.size()));
    if (length <= 0) return text;
    text.append(bytes.data(), static_cast<std::size_t>(length));
  }
}

}  // namespace play
