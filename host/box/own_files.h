// Whether what a box holds lies in its folder.
#pragma once

#include <filesystem>
#include <optional>

#include "host/box/place.h"

namespace box {

// The first link where a box has files and folders of its own: its /mgb and /tmp, and all of its databases. Who writes there
// would write somewhere else.
std::optional<std::filesystem::path> link_in(const Place &place);

}  // namespace box
