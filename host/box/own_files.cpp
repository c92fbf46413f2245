#include "host/box/own_files.h"

#include <sys/stat.h>

namespace box {

namespace fs = std::filesystem;

std::optional<fs::path> link_in(const Place &place) {
  const fs::path databases = place.databases();
  for (const fs::path &folder : {databases.parent_path(), databases, place.tmp(), place.root() / "mgb/lib"}) {
    if (fs::is_symlink(fs::symlink_status(folder))) return folder;
  }
  for (const fs::directory_entry &entry : fs::recursive_directory_iterator(databases)) {
    if (entry.is_symlink()) return entry.path();
  }
  return std::nullopt;
}

bool is_file(int fd) {
  struct stat status {};
  return fstat(fd, &status) == 0 && S_ISREG(status.st_mode);
}

}  // namespace box
