// The box that a command line means where it names none.
#pragma once

#include <filesystem>
#include <optional>

namespace spbox {

// The one that the environment variable SPBOX names, whether it is there or not; without it, the one in whose folder, or below
// whose folder, the caller stands, as a path from there. None where there is neither.
std::optional<std::filesystem::path> box_at_hand();

}  // namespace spbox
