#include "host/spbox/handshake.h"

#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string>

#include "host/base/descriptor.h"
#include "host/base/number.h"

namespace spbox {
bool comes_before_end(int fd, pid_t child) {
  const base::Descriptor its_end(static_cast<int>(syscall(SYS_pidfd_open, child, 0)));
  const int limit = its_end.get() < 0 ? 0 : -1;  // a child that was waited for has ended
  std::array<pollfd, 2> watched{{{fd, POLLIN, 0}, {its_end.get(), POLLIN, 0}}};
  while (poll(watched.data(), watched.size(), limit) < 0) {
    if (errno != EINTR) return false;
  }
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
