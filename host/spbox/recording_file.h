// The file into which a command in a box is recorded: `spbox run --recording`.
#pragma once

#include <filesystem>

namespace spbox {

// Makes the file, or takes one in which a recording has begun, so that it goes on. Throws BoxError.
std::filesystem::path recording_for(const std::filesystem::path &file, bool without_contents);

}  // namespace spbox
