// The pauses between two tries for something that another process has: short at first, because most things are free again in a
// moment, then twice as long each time.
#pragma once

#include <algorithm>
#include <chrono>

namespace base {

class Pauses {
 public:
  explicit constexpr Pauses(std::chrono::microseconds longest) : longest_(longest), next_(longest / kShorter) {}

  constexpr std::chrono::microseconds next() {
    const auto pause = next_;
    next_ = std::min(2 * next_, longest_);
    return pause;
  }

 private:
  static constexpr int kShorter = 64;

  std::chrono::microseconds longest_, next_;
};

}  // namespace base
