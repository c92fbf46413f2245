#include "host/spbox/handshake.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
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

void announce_to(int fd) {
  dprintf(fd, "%d", static_cast<int>(getpid()));
  shutdown(fd, SHUT_WR);
  std::string nothing;
  while (read_on(fd, nothing)) {
  }
}

pid_t announced_on(int fd, pid_t bwrap) {
  std::string text;
  while (comes_before_end(fd, bwrap)) {
    if (!read_on(fd, text)) return base::number_in<pid_t>(text).value_or(0);
  }
  return 0;
}

}  // namespace spbox
