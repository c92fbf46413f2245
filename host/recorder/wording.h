// By which text on the screen an operator knew what to do: what a play waits for.
#pragma once

#include <string>
#include <vector>

namespace recorder {

using Lines = std::vector<std::string>;

// A piece of the lowest of these lines that has one: short, without what changes from time to time (process ids, times,
// sizes), and found once where one is. The lines of `before`, which stood there already, have it nowhere. Empty where there is
// none.
std::string deciding_text(const Lines &fresh, const Lines &before);

}  // namespace recorder
