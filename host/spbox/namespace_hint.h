// Why the system may have refused a command a root of its own.
#pragma once

#include <string>

namespace spbox {

// What helps, as far as that can be told: a sentence without its end.
std::string namespace_hint();

}  // namespace spbox
