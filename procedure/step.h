// What several steps say and do.
#pragma once

#include <cstdint>

#include "include/lmainte_procedure.h"

namespace lmainte::procedure {

// The unit's state could not be read: tells it, and returns the outcome.
int32_t not_read(const lmainte_work &work, int32_t result);

}  // namespace lmainte::procedure
