// Events for the log. The operator reads what is left undone, and the log keeps it: nobody may be at the terminal any more.
#pragma once

#include <cstdint>

#include "include/lmainte.h"

namespace lmainte::procedure {

// An event of this library or of an author, of a unit or of the server as a whole. False where the log has it not, which the
// operator was told.
bool log_event(uint8_t form, uint8_t code, const UnitRecord *unit);

// What a procedure leaves undone: LMAINTE_LEFT_...
void log_left(uint8_t what, const UnitRecord *unit = nullptr);

}  // namespace lmainte::procedure
