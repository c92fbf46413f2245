// Puts right what is bent, broken or out in a box.
#pragma once

#include <string>
#include <vector>

#include "host/box/place.h"

namespace spbox {

// Adds what was put right to the lines, each behind its doing: records, programs, the daemon, points, units, and, where nobody is at work, what procedures leave
// in the hardware: the maintenance mode, flags, LEDs, fast fans, units out of operation. What a procedure changed in the records, such
// as the domains of a board, stays as it is. Throws where something could not be put right; what comes before it is right then.
void heal(const box::Place &place, bool somebody_works, std::vector<std::string> &lines);

}  // namespace spbox
