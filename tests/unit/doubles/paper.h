// Standard output in memory, where each write can fail.
#pragma once

#include <cstdio>

#include "tests/unit/doubles/machine.h"

namespace doubles {

// From here to its end the process writes on it. Each call of the library arrives at once, or with machine().keeps_output
// when the library flushes.
class Paper {
 public:
  Paper();
  Paper(const Paper &) = delete;
  Paper &operator=(const Paper &) = delete;
  ~Paper();

 private:
  Machine::Stream stream_;
  FILE *before_;
};

}  // namespace doubles
