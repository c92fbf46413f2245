// What server this is, as lmainte_get_model_data tells it: how many units of each kind it holds, and how long its control
// programs may take. Copy it with the command.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "lmainte.h"

class Server {
 public:
  // Both give the library's result. A command that runs no control program needs no times.
  int32_t read() { return lmainte_get_model_data(&data_, nullptr); }
  int32_t read_with_times() {
    for (uint32_t id = 0; id < kPrograms; ++id) times_.at(id).cmd_id = id;
    times_.at(kPrograms).cmd_id = LMAINTE_CMDTIME_END;
    return lmainte_get_model_data(&data_, times_.data());
  }

  const lmainte_model_data &data() const { return data_; }
  int32_t model() const { return static_cast<int32_t>(data_.model); }
  const char *name() const {
    constexpr std::array<const char *, 7> kNames{"none", "qb1", "qb2", "qe1", "qe2", "qe3", "qa"};
    return kNames.at(data_.model);
  }
  bool is_high_end() const { return data_.model >= LMAINTE_MODEL_QE1 && data_.model <= LMAINTE_MODEL_QE3; }

  int32_t time(size_t program) const {
    return static_cast<int32_t>(times_.at(program).time);
  }  // LMAINTE_CMD_...: seconds

  uint32_t count(size_t slot) const { return data_.unit[slot].max_count; }
  // qb2 has one board and two I/O units. Its records are those of two boards, and both name the one board.
  uint32_t board_count() const { return std::max(count(LMAINTE_SLOT_CMU), count(LMAINTE_SLOT_IOU)); }

 private:
  static constexpr size_t kPrograms = LMAINTE_CMD_LINKBOARD + 1;

  std::array<lmainte_cmdtime, kPrograms + 1> times_{};
  lmainte_model_data data_{};  // cleared: not every field is written on every model
};
