// The folder in which spbox works, as it is and as it was.
#pragma once

#include <filesystem>
#include <set>
#include <string>

#include "failures/verbs.h"

namespace failures {

// What boxes and files in the folder hold. That spbox cannot read a box is a part of it.
struct State {
  std::string contents;
  std::set<std::string> files;

  bool operator==(const State &) const = default;
};

class Scene {
 public:
  // Makes the folder, ready for this line. Throws.
  Scene(const std::filesystem::path &folder, const Line &line);

  const std::filesystem::path &folder() const { return work_; }
  const State &before() const { return before_; }

  // As it is now. It is looked at as the next user of the box would: by spbox.
  State now() const;
  void restore() const;

 private:
  const Line &line_;
  std::filesystem::path start_, work_;
  State before_;
};

// Makes the boxes and the files that all lines find. Throws.
void make_start(const std::filesystem::path &folder);

}  // namespace failures
