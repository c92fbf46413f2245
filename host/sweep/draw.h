// Numbers that a seed gives: the same ones on every machine.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace sweep {

class Draw {
 public:
  explicit Draw(std::uint64_t seed) : state_(seed) {}

  // Of a text, another one for each seed (FNV-1a).
  static std::uint64_t hash_of(std::string_view text, std::uint64_t seed) {
    std::uint64_t hash = 0xCBF29CE484222325U;
    for (const char byte : text) hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001B3U;
    return Draw(hash ^ Draw(seed).next()).next();
  }

  // From 0 to one less than `most` (splitmix64).
  std::size_t below(std::size_t most) { return static_cast<std::size_t>(next() % most); }

 private:
  std::uint64_t next() {
    std::uint64_t z = (state_ += 0x9E3779B97F4A7C15U);
    z = (z ^ (z >> 30U)) * 0xBF58476D1CE4E5B9U;
    z = (z ^ (z >> 27U)) * 0x94D049BB133111EBU;
    return z ^ (z >> 31U);
  }

  std::uint64_t state_;
};

}  // namespace sweep
