#include "host/spbox/ending.h"

#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <csignal>

#include "host/base/descriptor.h"

namespace spbox {

// What has its number when it is ended is still what was looked at.
void end_process(pid_t process, const std::function<bool()> &is_it) {
  constexpr int kPatience = 1000;  // milliseconds
  const base::Descriptor handle(static_cast<int>(syscall(SYS_pidfd_open, process, 0)));
  if (handle.get() < 0 || !is_it()) return;
  syscall(SYS_pidfd_send_signal, handle.get(), SIGKILL, nullptr, 0);
  pollfd ended{handle.get(), POLLIN, 0};
  poll(&ended, 1, kPatience);
}

}  // namespace spbox
