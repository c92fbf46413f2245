// One byte of a file as the kernel's record locks know it.
#pragma once

#include <fcntl.h>

namespace base {

// Of the type F_RDLCK, F_WRLCK or F_UNLCK, for fcntl.
inline struct flock byte_lock(short type, off_t byte) {
  struct flock lock {};
  lock.l_type = type;
  lock.l_whence = SEEK_SET;
  lock.l_start = byte;
  lock.l_len = 1;
  return lock;
}

}  // namespace base
