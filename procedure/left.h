// What a procedure leaves undone. The operator reads it, and the log keeps it: nobody may be at the terminal any more.
#pragma once

#include <cstdint>

#include "include/lmainte.h"

namespace procedure {

// `what` is LMAINTE_LEFT_...; of the server as a whole without a unit.
void log_left(uint8_t what, const UnitRecord *unit = nullptr);

}  // namespace procedure
