#include "host/spbox/handshake.h"

#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string>

#include "host/base/number.h"

namespace spbox {
namespace {

// What comes until the other end is closed.
std::string read_to_end(int fd) {
  std::string text;
  char character = 0;
  for (ssize_t got = 0; (got = read(fd, &character, 1)) == 1 || (got < 0 && errno == EINTR);) {
    if (got == 1) text += character;
  }
  return text;
}

}  // namespace

void announce_to(int fd) {
  dprintf(fd, "%d", static_cast<int>(getpid()));
  shutdown(fd, SHUT_WR);
  read_to_end(fd);
}

pid_t announced_on(int fd) {
  return base::number_in<pid_t>(read_to_end(fd)).value_or(0);
}

}  // namespace spbox
