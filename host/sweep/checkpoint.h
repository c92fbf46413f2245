// The box as each command of a good play found it, and its time. A replay whose first deviation meets a later command than the first one begins
// there: what goes before would only be played as it was.
#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <string>
#include <utility>

#include "host/box/place.h"

namespace sweep {

class Checkpoints {
 public:
  // They lie in this folder.
  explicit Checkpoints(std::filesystem::path folder) : folder_(std::move(folder)) {}

  struct Found {
    box::Place place;                // in which nobody works
    std::chrono::nanoseconds ahead;  // the box's time, of the wall's
  };

  // Keeps it for the command of this number. Where there is no room for it, none is kept.
  void keep(std::size_t command, const Found &found) const;

  bool has(std::size_t command) const;

  // Makes the box as it was kept; there is none yet. Returns how far its time was ahead. Throws std::filesystem::filesystem_error.
  std::chrono::nanoseconds restore(std::size_t command, const box::Place &place) const;

 private:
  std::filesystem::path kept(std::size_t command) const { return folder_ / ("command " + std::to_string(command)); }

  std::filesystem::path folder_;
};

}  // namespace sweep
