// A program that runs under the eyes of this one, which lets one of its calls fail.
#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "failures/moment.h"

namespace failures {

using Words = std::vector<std::string>;

struct Run {
  std::optional<int> status;  // 128 + n where signal n ended it; none where it did not end in time
  std::string output, error;
  std::vector<Moment> moments;       // the calls that it made
  std::vector<std::string> unknown;  // numbers of calls that have no row
  bool has_failed = false;           // the call came, and failed
  bool was_silenced = false;         // what failed was a write to standard error
  std::vector<std::string> left;     // the processes that went on behind its end; they were ended
};

// Runs the program in the folder to its end, without input. The calls of the programs in `images` count, but for those that load a
// program into memory. Throws.
Run run_traced(const Words &command, const std::filesystem::path &folder, const std::optional<Failure> &failure,
               std::chrono::seconds patience);

}  // namespace failures
