// What became of a command that was answered from a recording.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/replay/make_score.h"

namespace replay {

struct Verdict {
  bool differs = false;
  bool in_child = false;             // by a call that a child made, as far as is known
  bool is_compared = true;           // as far as it goes; else the recording cannot say
  std::uint32_t calls = 0, of = 0;   // how many were made as they were recorded, and how many there are
  std::string sentence;              // "The command differs from the recording at call 7 of 42:"
  std::string recorded, of_command;  // both sides, in words; one may be empty
};

// How the command ended: by itself, or because it made no call for so long.
struct Ending {
  int exit_status = 0;
  std::int64_t silent_seconds = 0;  // 0: it ended by itself
};

// Of the score that the command has left, and of its end.
Verdict verdict_of(const std::string &score, const Run &run, const Ending &ending);

// How many calls the command has made as they were recorded, as the first eight bytes of its score say.
std::uint32_t calls_made(const std::string &score);

}  // namespace replay
