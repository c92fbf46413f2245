// The scripts below folders.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace runner {

struct Script {
  std::filesystem::path file;  // without "./" in front
  std::string name;            // the same as a text
  bool was_named = false;      // itself, and not a folder
};

// The files that are named, and those called *.play in the folders that are named and below them, by name and each once.
// Hidden folders and files are left out, and links to folders are not followed. Throws script::Error for what is not there,
// std::filesystem::filesystem_error for a folder that cannot be read.
std::vector<Script> find_scripts(const std::vector<std::string> &paths);

}  // namespace runner
