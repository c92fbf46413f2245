#include "host/spbox/daemon_process.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <string>
#include <system_error>

namespace spbox {
namespace {

[[noreturn]] void become(const std::filesystem::path &program, const std::string &box, int ready_fd, pid_t parent) {
  const std::string fd = std::to_string(ready_fd), pid = std::to_string(parent);
  execl(program.c_str(), program.c_str(), box.c_str(), fd.c_str(), pid.c_str(), nullptr);
  _exit(127);
}

// True once the daemon has said so, false when it has ended without a word.
bool is_ready(int fd) {
  char byte = 0;
  ssize_t got = 0;
  while ((got = read(fd, &byte, 1)) < 0 && errno == EINTR) {
  }
  return got == 1;
}

}  // namespace

DaemonProcess::DaemonProcess(const std::filesystem::path &program, const box::Place &place) {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::system_error(errno, std::generic_category(), "pipe");
  const std::string box = place.root().string();
  const pid_t parent = getpid();
  std::fflush(nullptr);
  pid_ = fork();
  if (pid_ < 0) throw std::system_error(errno, std::generic_category(), "fork");
  if (pid_ == 0) {
    fcntl(ends[1], F_SETFD, 0);
    become(program, box, ends[1], parent);
  }
  close(ends[1]);
  if (!is_ready(ends[0])) {
    std::fputs("spbox: the box's daemon does not run: requests to it will fail. The command runs without it.\n",
               stderr);
  }
  close(ends[0]);
}

DaemonProcess::~DaemonProcess() {
  kill(pid_, SIGTERM);
  while (waitpid(pid_, nullptr, 0) < 0 && errno == EINTR) {
  }
}

}  // namespace spbox
