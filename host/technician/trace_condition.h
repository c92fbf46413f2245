// What a technician waits for in the trace: a function, and perhaps an event of it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "host/script/script.h"

namespace technician {

class TraceCondition {
 public:
  // The words of a step: a function and an event by their names, as in "lmainte_chk_fru_install entry", or the function
  // alone; or both in the old spelling. Throws std::invalid_argument for what the library never records.
  explicit TraceCondition(const script::Words &words);

  bool is_met_by(std::uint32_t event) const;

 private:
  std::string function_;
  std::optional<std::uint32_t> event_;
};

}  // namespace technician
