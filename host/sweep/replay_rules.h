// What holds for the good play and for each replay of it.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "host/box/place.h"
#include "host/clock/pace.h"
#include "host/sweep/checkpoint.h"

namespace sweep {

struct ReplayRules {
  std::string spbox;                // the program
  std::chrono::milliseconds limit;  // of the box's time, in which something has to come from a command
  int alarm;
  box_time::Speed speed;
  std::function<std::vector<std::string>(const box::Place &place)> log;  // in words, the same for the same entry
  std::vector<std::string> options = {};                                 // of `spbox run`, for the commands of the play
  Checkpoints checkpoints;  // which the good play keeps, and at which replays begin
  std::filesystem::path findings =
      {};                     // the folder of the plays that show a fault: they find their programs from there
  bool notes_sequel = false;  // of a replay
};

}  // namespace sweep
