// One run of a recording, as the library that answers from it reads it.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

#include "host/recording/recording.h"

namespace replay {

// A run of a command: its processes are its own and those that it forked.
struct Run {
  std::string words;
  std::uint32_t model = 0;
  bool is_fed = false, is_read = false;  // its standard input, its standard output is no terminal
  bool has_end = false;
  bool is_full = false;  // what came behind its last record found no room
  int exit_status = 0;   // where it has
  std::vector<const recording::Record *> records;
  std::string flaw;  // why no command can run against it: a sentence; empty where one can
  // What may be the reason of a difference, beside the command: a sentence; empty where nothing is known.
  std::string doubt;
};

// In the order in which they began. They belong to the recording.
std::vector<Run> runs_of(const recording::Recording &recording);

// The bytes of a score (score.h). The run has no flaw.
std::string score_of(const Run &run);

}  // namespace replay
