// Writes a file that has either its old text or its new one, whatever happens.
#pragma once

#include <filesystem>
#include <string_view>

namespace spbox {

// A file that is there keeps its owner and its permissions, and a link to it stays. What is no file, such as a pipe, is
// written as it is. Throws std::system_error.
void write_whole_file(const std::filesystem::path &file, std::string_view text);

}  // namespace spbox
