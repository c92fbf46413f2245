// A command that is answered from a recording: `spbox replay FILE -- COMMAND`.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "host/recording/recording.h"

namespace spbox {

inline constexpr int kNothingToCompare = 2;  // the exit status

struct Replayed {
  std::filesystem::path file;        // of the recording
  std::string run;                   // last, its number, or the name of its command; empty: the only one
  std::int64_t limit = 60;           // so many seconds it may make no call
  std::vector<std::string> command;  // and its arguments
};

// Prints whether the command differs from the recording, and where. Returns the exit status. Throws BoxError where
// there is nothing to compare.
int replay_command(const recording::Recording &recording, const Replayed &replayed);

}  // namespace spbox
