// Removes a folder with all that is in it, whatever is there: who filled it may have taken its owner the rights to look into a
// folder or to change it, or have put more folders into one another than there are descriptors.
#pragma once

#include <filesystem>

namespace base {

// Follows no link. Goes on where something cannot be removed, and throws a filesystem_error in the end. Nothing there is no error.
void remove_tree(const std::filesystem::path &path);

}  // namespace base
