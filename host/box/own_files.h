// Whether what a box holds lies in its folder.
#pragma once

#include <fcntl.h>

#include <filesystem>
#include <optional>

#include "host/box/place.h"

namespace box {

// The first link where a box has files and folders of its own: its /mgb and /tmp, and all of its databases. Who writes there
// would write somewhere else.
std::optional<std::filesystem::path> link_in(const Place &place);

// How a file of the box is opened where somebody else may have put a link or a pipe: neither leads out of the box, nor waits.
inline constexpr int kOwnFile = O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
bool is_file(int fd);

}  // namespace box
