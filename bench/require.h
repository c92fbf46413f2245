// What a benchmark cannot do without.
#pragma once

#include <stdexcept>
#include <string>

namespace bench {

inline void require(bool good, const char *what) {
  if (!good) throw std::runtime_error(std::string("bench: cannot ") + what);
}

}  // namespace bench
