// Where things sit on a system board: its quarters, which extended system boards hold, and the modules in them.
#pragma once

#include <cstdint>

namespace lmainte {

inline constexpr uint32_t kOneXsb = 1;
inline constexpr int32_t kXsbsOfABoard = 4;

// The extended system board that holds a quarter of a board.
constexpr int32_t xsb_of(int32_t board, uint32_t xsb_mode, int32_t quarter) {
  const uint32_t first = static_cast<uint32_t>(board) * kXsbsOfABoard;
  return static_cast<int32_t>(xsb_mode == kOneXsb ? first : first + static_cast<uint32_t>(quarter));
}

// CPU modules are read in the order of their numbers, one in each quarter.
constexpr int32_t cpu_module_at(int32_t position) {
  return position;
}
constexpr int32_t quarter_of_cpu_module(int32_t number) {
  return number;
}

// The operator's lists have always shown the memory modules in this order: eight by eight, as they sit on the board.
constexpr int32_t dimm_at(int32_t position) {
  constexpr int32_t kOfEight[] = {17, 19, 16, 18, 1, 3, 0, 2};
  return position / 8 * 4 + kOfEight[position % 8];
}

// Modules 0 to 15 fill the quarters four by four. Modules 16 to 31 fill them again in the same way.
constexpr int32_t quarter_of_dimm(int32_t number) {
  return number % 16 / 4;
}

// A board as the first level of a position within the server. A level is one byte, and 0xFF says that there is none: -1.
constexpr int32_t board_level(int32_t board) {
  const int32_t level = board & 0xFF;
  return level == 0xFF ? -1 : level;
}

}  // namespace lmainte
