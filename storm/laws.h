// What has to hold in a box when nobody works in it, whoever was killed there.
#pragma once

#include <cstdint>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "host/box/place.h"

namespace storm {

class Laws {
 public:
  // Of a box that was just made, in a folder of its own.
  explicit Laws(const box::Place &place);

  // What does not hold, a sentence each. `events` are the heads of the events whose saving was acknowledged; `savers` is how
  // many were killed that saved some.
  std::vector<std::string> broken(const std::set<std::uint32_t> &events, std::size_t savers) const;

  // The same for what takes longer to look at: what the next command finds, and the trace.
  std::vector<std::string> broken_for_next_command() const;

 private:
  box::Place place_;
  std::set<std::filesystem::path> files_;  // in the box, but for those in which it keeps its records
};

}  // namespace storm
