// A whole play: its script is read, its box and its files are made, its steps are played, its books are kept.
#pragma once

#include <filesystem>
#include <iosfwd>
#include <string>
#include <vector>

#include "host/play/plan.h"

namespace play {

struct Files {
  std::filesystem::path script;
  std::filesystem::path box;              // empty: one that is gone after the play
  std::filesystem::path transcript;       // empty: none
  std::filesystem::path picture;          // empty: none
  int account = -1;                       // the descriptor for an account of the play; -1: none
  bool draws_server = false;              // in the picture
  std::filesystem::path report = {};      // empty: none
  std::filesystem::path cast = {};        // empty: none
  std::vector<std::string> options = {};  // of `spbox run`, for the commands of the play
};

// Reads the script and those that it plays. Throws script::Error where they make no sense, or not with these files, and
// nothing was done yet. `played` gets those that it plays.
std::vector<Step> prepare(const Files &files, const Values &values, const Verbs &verbs,
                          std::vector<std::filesystem::path> *played = nullptr);

// Plays, and tells of it on `out`. `spbox` is the program. Throws script::Error before the first step where one of the files
// cannot be written, Failure where a step fails, and terminal::Interrupted when the alarm rings.
void perform(const std::vector<Step> &steps, const Files &files, const std::string &spbox, std::ostream &out,
             int alarm);

}  // namespace play
