// What server this is: how many units of each kind it holds, and how long its control programs may take.
#pragma once

#include <cstddef>
#include <cstdint>

#include "include/lmainte.h"

namespace lmainte::procedure {

class Server {
 public:
  // Gives the library's result.
  int32_t read() {
    for (uint32_t id = 0; id < kPrograms; ++id) times_[id].cmd_id = id;
    times_[kPrograms].cmd_id = LMAINTE_CMDTIME_END;
    return lmainte_get_model_data(&data_, times_);
  }

  const lmainte_model_data &data() const { return data_; }
  int32_t model() const { return static_cast<int32_t>(data_.model); }
  bool is_high_end() const { return data_.model >= LMAINTE_MODEL_QE1 && data_.model <= LMAINTE_MODEL_QE3; }

  // LMAINTE_CMD_...: seconds
  int32_t time(uint32_t program) const { return program < kPrograms ? static_cast<int32_t>(times_[program].time) : 0; }

  uint32_t count(size_t slot) const { return data_.unit[slot].max_count; }

 private:
  static constexpr uint32_t kPrograms = LMAINTE_CMD_LINKBOARD + 1;

  lmainte_cmdtime times_[kPrograms + 1] = {};
  lmainte_model_data data_ = {};  // cleared: not every field is written on every model
};

}  // namespace lmainte::procedure
