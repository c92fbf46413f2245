// The box as each command of a good play found it. A replay whose first deviation meets a later command than the first one begins
// there: what goes before would only be played as it was.
#pragma once

#include <cstddef>
#include <filesystem>

#include "host/box/place.h"

namespace sweep {

class Checkpoints {
 public:
  // They lie in this folder.
  explicit Checkpoints(std::filesystem::path folder) : folder_(std::move(folder)) {}

  // Keeps a box in which nobody works, for the command of this number. Where there is no room for it, none is kept.
  void keep(std::size_t command, const box::Place &place) const;

  bool has(std::size_t command) const;

  // Makes the box as it was kept; there is none yet. Throws std::filesystem::filesystem_error.
  void restore(std::size_t command, const box::Place &place) const;

 private:
  box::Place kept(std::size_t command) const { return box::Place(folder_ / ("command " + std::to_string(command))); }

  std::filesystem::path folder_;
};

}  // namespace sweep
