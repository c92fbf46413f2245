// A script and those that it plays, read and checked: all the steps, one after the other.
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "host/play/step.h"

namespace play {

using Values = std::map<std::string, std::string>;

// The verbs of spbox that work on a box.
struct Verbs {
  Words names;
  std::function<void(const Words &words)> check;  // Throws what is wrong with a verb and what stands behind it.
};

// NAME=VALUE. Throws std::invalid_argument.
void add_value(const std::string &word, Values &values);

// As people are told it: "walk.play"; "standard input" for "-".
std::string name_of_script(const std::filesystem::path &script);

// In the words of a script, "$NAME" stands for the value of this name, and "$$" for a dollar. A script that another one
// plays has the values that are given there, and no others; each has $HERE, its folder. "-" is the standard input. Throws script::Error where a script cannot be read, or makes no
// sense. The scripts that it plays, and those that they play, are added to `played`, also where it throws.
std::vector<Step> read_plan(const std::filesystem::path &script, const Values &values, const Verbs &verbs,
                            std::vector<std::filesystem::path> *played = nullptr);

// Whether a step has this trait.
bool has_step(const std::vector<Step> &plan, bool Traits::*trait);

}  // namespace play
