// Numbers that a seed gives: the same ones on every machine.
#pragma once

#include <cstddef>
#include <cstdint>

namespace sweep {

class Draw {
 public:
  explicit Draw(std::uint64_t seed) : state_(seed) {}

  // From 0 to one less than `most` (splitmix64).
  std::size_t below(std::size_t most) {
    std::uint64_t z = (state_ += 0x9E3779B97F4A7C15U);
    z = (z ^ (z >> 30U)) * 0xBF58476D1CE4E5B9U;
    z = (z ^ (z >> 27U)) * 0x94D049BB133111EBU;
    return static_cast<std::size_t>((z ^ (z >> 31U)) % most);
  }

 private:
  std::uint64_t state_;
};

}  // namespace sweep
