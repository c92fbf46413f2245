#include "host/spbox/handshake.h"

#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <string>

#include "host/base/descriptor.h"
#include "host/base/number.h"
#include "host/clock/hours.h"

namespace spbox {
namespace {

constexpr std::chrono::seconds kLongestStart{10};

}  // namespace

// bwrap waits for ever for its own child where it could not tell it to go on.
bool comes_before_end(int fd, pid_t child) {
  const base::Descriptor its_end(static_cast<int>(syscall(SYS_pidfd_open, child, 0)));
  const bool has_ended = its_end.get() < 0;  // and was waited for
  std::array<pollfd, 2> watched{{{fd, POLLIN, 0}, {its_end.get(), POLLIN, 0}}};
  const auto now = box_time::wall();
  int ready = 0;
  while ((ready = box_time::poll_by_wall(watched, has_ended ? now : now + kLongestStart)) < 0) {
    if (errno != EINTR) return false;
  }
  if (ready == 0 && !has_ended) kill(child, SIGKILL);
  return watched[0].revents != 0;
}

bool read_on(int fd, std::string &text) {
  char character = 0;
  const ssize_t got = read(fd, &character, 1);
  if (got == 1) text += character;
  return got == 1 || (got < 0 && errno == EINTR);
}

int announce_to(int fd) {
  if (const int error = base::write_all(fd, std::to_string(getpid()) + "\n"); error != 0) return error;
  std::string nothing;
  while (read_on(fd, nothing)) {
  }
  return 0;
}

pid_t announced_on(int fd, pid_t bwrap) {
  std::string text;
  while (!text.ends_with('\n')) {
    if (!comes_before_end(fd, bwrap) || !read_on(fd, text)) return 0;
  }
  text.pop_back();
  return base::number_in<pid_t>(text).value_or(0);
}

}  // namespace spbox
