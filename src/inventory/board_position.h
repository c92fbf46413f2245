// A place within a system board as four levels of one byte, the board at level 0; an empty level is 0xFF.
#pragma once

#include <cstdint>

namespace lmainte {

inline constexpr uint32_t kLevels = 4;
inline constexpr uint32_t kEmptyLevel = 0xFF;

class BoardPosition {
 public:
  // The whole of a board.
  static constexpr BoardPosition of_board(int32_t board) {
    return BoardPosition((static_cast<uint32_t>(board) & kEmptyLevel) << 24 | 0x00FFFFFF);
  }

  // The byte at the last level that is not empty; -1 where all are.
  constexpr int32_t deepest_value() const {
    int32_t value = -1;
    for (uint32_t level = 0; level < kLevels; ++level) {
      const uint32_t byte = bits_ >> (24 - 8 * level) & 0xFF;
      if (byte == kEmptyLevel) break;
      value = static_cast<int32_t>(byte);
    }
    return value;
  }

 private:
  constexpr explicit BoardPosition(uint32_t bits) : bits_(bits) {}

  uint32_t bits_;
};

static_assert(BoardPosition::of_board(3).deepest_value() == 3);
static_assert(BoardPosition::of_board(-1).deepest_value() == -1);

}  // namespace lmainte
