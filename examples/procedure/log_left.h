// What a procedure leaves undone. The operator reads it, and the log keeps it: nobody may be at the terminal any more.
#pragma once

#include <cstddef>
#include <cstdint>

#include "lmainte.h"
#include "lmainte_host.h"
#include "lmainte_platform.h"
#include "telling.h"

namespace procedure {

// `what` is LMAINTE_HOST_LEFT_...; of the server as a whole without a unit.
inline void log_left(uint8_t what, const UnitRecord &unit = {}) {
  constexpr uint32_t kHead = LMAINTE_HOST_EVENT_HEAD;
  uint8_t event[LMAINTE_HOST_EVENT_SIZE] = {};
  event[LMAINTE_HOST_EVENT_SOURCE_AT] = LMAINTE_HOST_EVENT_SOURCE;
  event[LMAINTE_HOST_EVENT_FORM_AT] = LMAINTE_HOST_EVENT_LEFT;
  event[LMAINTE_HOST_EVENT_CODE_AT] = what;
  for (size_t i = 0; i < sizeof unit.ident; ++i)  // the most significant byte first
    event[LMAINTE_HOST_EVENT_UNIT_AT + i] = static_cast<uint8_t>(unit.ident[i / 4] >> (24 - 8 * (i % 4)));
  if (mgblog_save(&kHead, event) < 0) tell("The log has no record of this. Is the disk of the log full?");
}

}  // namespace procedure
