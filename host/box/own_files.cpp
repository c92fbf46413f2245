#include "host/box/own_files.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <system_error>
#include <utility>

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

std::string OwnFile::why_not() const {
  const bool is_none = error == 0 || error == ELOOP || error == EISDIR || error == ENXIO;
  return is_none ? "it is no file. Make the box anew, or load a dump of it." : std::strerror(error);
}

OwnFile open_own_file(const fs::path &file) {
  base::Descriptor descriptor(open(file.c_str(), O_RDONLY | kOwnFile));
  if (descriptor.get() < 0) return {{}, errno};
  if (!is_file(descriptor.get())) return {};
  return {std::move(descriptor)};
}

base::Descriptor open_own_folder(const Place &place, const fs::path &folder) {
  constexpr int kFolder = O_PATH | O_DIRECTORY | O_CLOEXEC;
  base::Descriptor at(open(place.root().c_str(), kFolder));
  for (const fs::path &part : folder) {
    if (at.get() >= 0) at = base::Descriptor(openat(at.get(), part.c_str(), kFolder | O_NOFOLLOW));
  }
  if (at.get() >= 0) return at;
  throw fs::filesystem_error("a folder of the box cannot be opened", place.root() / folder,
                             {errno, std::generic_category()});
}

}  // namespace box
