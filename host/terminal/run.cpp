#include "host/terminal/run.h"

#include <fcntl.h>
#include <spawn.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

#include "host/box/child.h"

namespace terminal {
namespace {

std::string read_to_end(int fd) {
  std::string text;
  std::array<char, 4096> bytes{};
  for (;;) {
    const auto length = read(fd, bytes.data(), bytes.size());
    if (length < 0 && errno == EINTR) continue;
    if (length <= 0) return text;
    text.append(bytes.data(), static_cast<std::size_t>(length));
  }
}

}  // namespace

Done run(const std::vector<std::string> &command) {
  const box::ArgumentVector arguments(command);
  int output[2];
  if (pipe2(output, O_CLOEXEC) != 0) throw std::system_error(errno, std::generic_category(), "pipe");
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, output[1], STDERR_FILENO);
  pid_t pid = -1;
  const int error = posix_spawnp(&pid, arguments.program(), &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  close(output[1]);
  Done done{0, error == 0 ? read_to_end(output[0]) : ""};
  close(output[0]);
  if (error != 0) throw std::system_error(error, std::generic_category(), "cannot run " + command.at(0));
  done.exit_status = box::exit_status_of(pid);
  return done;
}

}  // namespace terminal
