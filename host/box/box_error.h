// The error of everything that works on a box.

#pragma once

#include <stdexcept>

namespace box {

// What people are told: its text names the box, the unit, the reason and the way out.
class BoxError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace box
