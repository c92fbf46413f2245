// Whether what a box holds lies in its folder.
#pragma once

#include <fcntl.h>

#include <filesystem>
#include <optional>
#include <string>

#include "host/base/descriptor.h"
#include "host/box/place.h"

namespace box {

// The first link where a box has files and folders of its own: its /mgb and /tmp, and all of its databases. Who writes there
// would write somewhere else.
std::optional<std::filesystem::path> link_in(const Place &place);

// How a file of the box is opened where somebody else may have put a link or a pipe: neither leads out of the box, nor waits.
inline constexpr int kOwnFile = O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
bool is_file(int fd);

// A file of the box that was opened to be read, or the reason why not.
struct OwnFile {
  base::Descriptor descriptor;
  int error = 0;  // of the system; 0 without a descriptor: what is there is no file

  std::string why_not() const;
};
OwnFile open_own_file(const std::filesystem::path &file);

// A folder of the box, such as "mgb/cli/etc", for who makes or removes a file there: no link on the way leads out of the box. Throws
// std::filesystem::filesystem_error.
base::Descriptor open_own_folder(const Place &place, const std::filesystem::path &folder);

}  // namespace box
