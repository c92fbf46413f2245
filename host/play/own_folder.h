// The folder of a play whose box goes with it: /tmp/spbox-play.XXXXXX. A play that is killed leaves its folder behind, and the
// next play removes it.
#pragma once

#include <filesystem>

#include "host/base/owned_folder.h"

namespace play {

class OwnFolder {
 public:
  // Removes what the dead have left, and makes a new one. Throws.
  OwnFolder();
  ~OwnFolder();  // Ends what is left in its box.
  OwnFolder(const OwnFolder &) = delete;
  OwnFolder &operator=(const OwnFolder &) = delete;

  static void remove_what_the_dead_left();

  const std::filesystem::path &path() const { return folder_.path(); }
  std::filesystem::path box() const { return path() / "box"; }

 private:
  base::OwnedFolder folder_;
};

}  // namespace play
