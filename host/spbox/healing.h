// Puts right what is bent, broken or out in a box.
#pragma once

#include <string>
#include <vector>

#include "host/box/place.h"

namespace spbox {

// What was put right, a line each: records, programs, the daemon, points, units, and, where nobody is at work, what procedures leave
// in the hardware: the maintenance mode, flags, LEDs, fast fans, units out of operation. What a procedure changed in the records, such
// as the domains of a board, stays as it is. Throws where something could not be put right; what comes before it is right then.
std::vector<std::string> heal(const box::Place &place, bool somebody_works);

}  // namespace spbox
