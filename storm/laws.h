// What has to hold in a box when nobody works in it, whoever was killed there.
#pragma once

#include <cstdint>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "host/box/place.h"

namespace storm {

// What must be in the box, because it was acknowledged.
struct Saved {
  const std::set<std::uint32_t> &events;  // their heads
  std::size_t savers;                     // of events, that were killed since the last look
  std::uint32_t counted;                  // the number that workers count up
};

class Laws {
 public:
  // Of a box that was just made, in a folder of its own.
  explicit Laws(const box::Place &place);

  // What does not hold, a sentence each.
  std::vector<std::string> broken(const Saved &saved);

  // The same for what takes longer to look at: what the next command finds, and the trace.
  std::vector<std::string> broken_for_next_command() const;

 private:
  box::Place place_;
  std::set<std::filesystem::path> files_;  // in the box, but for those in which it keeps its records
  std::size_t torn_ = 0;                   // events, at the last look
};

}  // namespace storm
