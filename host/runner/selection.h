// Which scripts are plays, and which of them are wanted.
#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "host/runner/search.h"

namespace runner {

// What the reading of a script says.
struct Reading {
  std::size_t steps = 0;
  std::vector<std::filesystem::path> plays;  // the scripts that it plays, and those that they play
  std::string wrong;                         // why it cannot be played; empty where it can
};

struct Play {
  std::filesystem::path file;
  std::string name;
  std::size_t steps;
  std::string wrong;
};

// One that lies in a folder, that another of these plays, and that cannot be played alone is a part and no play.
std::vector<Play> plays_among(const std::vector<Script> &scripts,
                              const std::function<Reading(const std::filesystem::path &)> &read);

// Those whose name fits, as file names fit a shell's pattern; a * stands for slashes, too.
std::vector<Play> fitting(std::vector<Play> plays, const std::string &glob);

// A share of them, the `number`th of `shares`: the same one each time, and all shares with about as many steps.
struct Shard {
  std::size_t number = 1, shares = 1;
};
Shard shard_in(const std::string &text);  // "2/8". Throws std::invalid_argument.
std::vector<Play> share_of(const std::vector<Play> &plays, const Shard &shard);

}  // namespace runner
