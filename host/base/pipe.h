// A pipe whose two ends close themselves; execve closes them, too.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

#include "host/base/descriptor.h"

namespace base {

struct Pipe {
  explicit Pipe(int flags = 0) {  // of pipe2, such as O_NONBLOCK; throws std::system_error
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC | flags) != 0)
      throw std::system_error(errno, std::generic_category(), "cannot make a pipe");
    out = Descriptor(ends[0]);
    in = Descriptor(ends[1]);
  }

  Descriptor out, in;
};

}  // namespace base
