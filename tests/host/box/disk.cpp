#include "tests/host/box/disk.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

namespace {

int waits = 0;
bool failing = false;

}  // namespace

int disk_waits() {
  return waits;
}
void fail_disk_waits(bool fail) {
  failing = fail;
}

// Stands before the C library's function of this name, also for the shared libraries of the program.
extern "C" __attribute__((visibility("default"))) int fdatasync(int fd) {
  ++waits;
  if (failing) {
    errno = EIO;
    return -1;
  }
  return static_cast<int>(syscall(SYS_fdatasync, fd));
}
