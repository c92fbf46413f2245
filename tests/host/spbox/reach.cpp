// reach HOW [WHERE]: a command that tries to reach out of its box. Prints what came of each try: "done", or the reason why not.
#include <arpa/inet.h>
#include <asm/ioctls.h>
#include <fcntl.h>
#include <linux/keyctl.h>
#include <netinet/in.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <iostream>
#include <iterator>
#include <string>

#include "host/base/number.h"
#include "host/include/lmainte_host.h"

namespace {

void tell(long result) {
  std::cout << (result >= 0 ? "done" : std::strerror(errno)) << "\n";
}

// Types into the terminal; also with bits above a request's own, which the kernel does not look at.
void type(const char *keys) {
  const int terminal = open("/dev/tty", O_RDWR | O_CLOEXEC);
  constexpr unsigned long kHigherBit = 1UL << 32U;
  for (const unsigned long request : {static_cast<unsigned long>(TIOCSTI), TIOCSTI | kHigherBit}) {
    tell(syscall(SYS_ioctl, terminal, request, keys));
  }
  char paste[] = {3};
  tell(syscall(SYS_ioctl, terminal, TIOCLINUX, paste));
}

void take_key(const char * /*nothing*/) {
  tell(syscall(SYS_keyctl, KEYCTL_GET_KEYRING_ID, KEY_SPEC_USER_KEYRING, 1));
}

// Sets a limit of another process, to what it is.
void limit(const char *process) {
  const auto pid = base::number_in<pid_t>(process).value();
  rlimit same{};
  prlimit(pid, RLIMIT_CPU, nullptr, &same);
  tell(prlimit(pid, RLIMIT_CPU, &same, nullptr));
}

void connect_to(const char *port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(base::number_in<std::uint16_t>(port).value());
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  tell(connect(fd, reinterpret_cast<const sockaddr *>(&address), sizeof address));
}

// Lets the daemon write: its answer's result.
void save_event(const char * /*nothing*/) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strcpy(address.sun_path, "/mgb/run/monitor");
  const int fd = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
  const struct {
    lmainte_host_message head;
    std::uint32_t event[12];
  } request = {{sizeof request, LMAINTE_HOST_MONITOR_NUMBER, LMAINTE_HOST_SAVE_EVENT, 1}, {}};
  lmainte_host_reply reply{};
  const bool asked = connect(fd, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0 &&
                     send(fd, &request, sizeof request, 0) == sizeof request &&
                     recv(fd, &reply, sizeof reply, 0) == sizeof reply;
  std::cout << (asked ? "result " + std::to_string(reply.result) : std::strerror(errno)) << "\n";
}

constexpr struct {
  const char *name;
  void (*act)(const char *where);
} kWays[] = {{"type", type}, {"key", take_key}, {"limit", limit}, {"port", connect_to}, {"log", save_event}};

}  // namespace

int main(int argc, char **argv) {
  for (const auto &way : kWays) {
    if (argc < 2 || std::strcmp(argv[1], way.name) != 0) continue;
    way.act(argc > 2 ? argv[2] : "");
    return 0;
  }
  return 2;
}
