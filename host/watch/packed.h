// What is seen as bytes, for the way from the process that reads a box to the one that shows it. Who reads them trusts none.
#pragma once

#include <string>
#include <string_view>

#include "host/watch/scene.h"

namespace watch {

std::string packed(const Scene &scene);
Scene unpacked(std::string_view bytes);  // throws std::runtime_error where they are none

}  // namespace watch
