// A process that reads what a command in a box may have forged can do no more than that command, whatever becomes of it.
#pragma once

#include <functional>
#include <string>

#include "host/box/place.h"

namespace box {

// From now on this process reads and writes in the box only, beside what it has open: no other file, no network, no other
// program, no signal to another process. As far as the kernel can: it cannot be undone, and never fails.
void confine_to(const Place &place);

// Does this in a child process that is confined, and returns what it returns. Throws what it throws, as a
// std::runtime_error, and says so where it dies.
std::string in_confinement(const Place &place, const std::function<std::string()> &work);

}  // namespace box
