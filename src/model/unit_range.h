// Which units a reader reads: one by its number, or the first ones.
#pragma once

#include <cstdint>

namespace lmainte {

inline constexpr int32_t kAllUnits = -1;

struct UnitRange {
  int32_t first;
  int32_t count;
};

constexpr UnitRange range_of(int32_t number, int32_t count) {
  return number == kAllUnits ? UnitRange{0, count} : UnitRange{number, 1};
}

}  // namespace lmainte
