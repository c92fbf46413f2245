// How somebody at a shell reaches the box, for what a command advises them to type.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace spbox {

std::string shell_word(std::string_view text);  // quoted where a shell would not take it as it is

// "spbox run box": the tool as it was called, and the folder as it was given.
std::string way_in(const std::filesystem::path &folder);

}  // namespace spbox
