// How somebody at a shell reaches the box, for what a command advises them to type.
#pragma once

#include <filesystem>
#include <string>

namespace spbox {

// "spbox run box": the tool as it was called, and the folder as it was given.
std::string way_in(const std::filesystem::path &folder);

}  // namespace spbox
