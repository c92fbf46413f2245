// Reading what may fail at any byte: the file of a process that ends meanwhile, say.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <string>

#include "host/base/descriptor.h"

namespace base {

// Appends what comes until the end, or until there is more than `most`. Returns 0, or a number of errno; what came before that is
// there.
inline int read_all(int fd, std::string &to, std::size_t most = SIZE_MAX) {
  std::array<char, 65536> part{};
  ssize_t size = 0;
  while (to.size() <= most && (size = read(fd, part.data(), part.size())) != 0) {
    if (size > 0) to.append(part.data(), static_cast<std::size_t>(size));
    if (size < 0 && errno != EINTR) return errno;
  }
  return 0;
}

// Empty where the file cannot be read to its end.
inline std::string text_if_readable(const char *file) {
  const Descriptor fd(open(file, O_RDONLY | O_CLOEXEC));
  std::string text;
  return fd.get() >= 0 && read_all(fd.get(), text) == 0 ? text : std::string();
}

}  // namespace base
