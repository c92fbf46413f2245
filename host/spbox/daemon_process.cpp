#include "host/spbox/daemon_process.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <optional>
#include <system_error>

#include "host/base/child.h"

namespace spbox {
namespace {

[[noreturn]] void failure(const char *what) {
  throw std::system_error(errno, std::generic_category(), what);
}

// The next line that the daemon says; none once it has ended.
std::optional<std::string> line_from(int fd) {
  std::string line;
  char character = 0;
  for (ssize_t got = 0; (got = read(fd, &character, 1)) == 1 || (got < 0 && errno == EINTR);) {
    if (got == 1 && character == '\n') return line;
    if (got == 1) line += character;
  }
  return std::nullopt;
}

std::string ending(int status) {
  return status > 128 ? "signal " + std::to_string(status - 128) : "exit status " + std::to_string(status);
}

}  // namespace

DaemonProcess::DaemonProcess(const std::filesystem::path &program, const box::Place &place) {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) failure("pipe");
  says_ = base::Descriptor(ends[0]);
  base::Descriptor told(ends[1]);
  const base::ArgumentVector words(
      {program.string(), place.root().string(), std::to_string(told.get()), std::to_string(getpid())});
  std::fflush(nullptr);
  pid_ = fork();
  if (pid_ < 0) failure("fork");
  if (pid_ == 0) {
    fcntl(told.get(), F_SETFD, 0);
    execv(words.program(), words.data());
    _exit(127);
  }
  told.reset();
  await();
}

void DaemonProcess::await() {
  const std::optional<std::string> line = line_from(says_.get());
  ready_ = line == "";
  if (ready_) return;
  std::fprintf(stderr,
               "spbox: the box's daemon does not run%s. Requests to it will fail. The command runs without it.\n",
               line ? (": " + *line).c_str() : "");
}

DaemonProcess::~DaemonProcess() {
  kill(pid_, SIGTERM);
  try {
    const int status = base::exit_status_of(pid_);
    if (!ready_ || status == 0 || status == 128 + SIGTERM) return;
    std::fprintf(stderr, "spbox: the box's daemon ended before the command: %s. Requests to it failed from then on.\n",
                 line_from(says_.get()).value_or(ending(status)).c_str());
  } catch (const std::exception &) {
    // Nothing can be told of a child that nobody can wait for.
  }
}

}  // namespace spbox
