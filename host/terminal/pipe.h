// A pipe whose two ends close themselves; execve closes them, too.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

#include "host/box/descriptor.h"

namespace terminal {

struct Pipe {
  Pipe() {  // throws std::system_error
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
      throw std::system_error(errno, std::generic_category(), "cannot make a pipe");
    out = box::Descriptor(ends[0]);
    in = box::Descriptor(ends[1]);
  }

  box::Descriptor out, in;
};

}  // namespace terminal
