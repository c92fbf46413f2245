// A new folder of temporary files with an owner, such as /tmp/spbox-play.XXXXXX. Who is killed leaves their folder behind, and the next
// one finds it: whose folder nobody has locked, that one is dead.
#pragma once

#include <filesystem>
#include <functional>
#include <string_view>

#include "host/base/descriptor.h"

namespace base {

class OwnedFolder {
 public:
  // Its name begins with `prefix`. Throws std::system_error, which says what it is for.
  OwnedFolder(std::string_view prefix, std::string_view what_for);

  const std::filesystem::path &path() const { return path_; }

  // Hands over each folder of this user that a dead one has left: nobody else has it meanwhile.
  static void for_each_of_the_dead(std::string_view prefix,
                                   const std::function<void(const std::filesystem::path &)> &act);

 private:
  std::filesystem::path path_;
  Descriptor lock_;
};

}  // namespace base
