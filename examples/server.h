// What server this is, as lmainte_get_model_data tells it, and how many units of each kind it holds.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "lmainte.h"

class Server {
 public:
  // Gives the library's result.
  int32_t read() { return lmainte_get_model_data(&data_, nullptr); }

  const lmainte_model_data &data() const { return data_; }
  int32_t model() const { return static_cast<int32_t>(data_.model); }
  const char *name() const {
    constexpr std::array<const char *, 7> kNames{"none", "qb1", "qb2", "qe1", "qe2", "qe3", "qa"};
    return kNames.at(data_.model);
  }
  bool is_high_end() const { return data_.model >= LMAINTE_MODEL_QE1 && data_.model <= LMAINTE_MODEL_QE3; }

  uint32_t count(size_t slot) const { return data_.unit[slot].max_count; }
  // qb2 has one board and two I/O units. Its records are those of two boards, and both name the one board.
  uint32_t board_count() const { return std::max(count(LMAINTE_SLOT_CMU), count(LMAINTE_SLOT_IOU)); }

 private:
  lmainte_model_data data_{};  // cleared: not every field is written on every model
};
