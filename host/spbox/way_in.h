// How somebody at a shell reaches the box, for what a command advises them to type.
#pragma once

#include <filesystem>
#include <string>

namespace spbox {

// "spbox run box": the tool as it was called, and the folder as it was given. Nothing where the variable is there and empty:
// then whoever calls spbox runs a program by its name alone, as a play does.
std::string way_in(const std::filesystem::path &folder);

}  // namespace spbox
