// A script and those that it plays, read and checked: all the steps, one after the other.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "host/play/script.h"
#include "host/play/steps.h"

namespace play {

struct Step {
  const StepForm *form;
  Words words;
  std::string text;   // as it was written
  std::string place;  // "demo.play:12"
  std::string via;    // where the script with this step is played from: "\n  played from walk.play:3", or nothing
};

using Values = std::map<std::string, std::string>;

// NAME=VALUE. Throws std::invalid_argument.
void add_value(const std::string &word, Values &values);

// In the words of a script, "$NAME" stands for the value of this name, and "$$" for a dollar. A script that another one
// plays has the values that are given there, and no others. Throws ScriptError where a script cannot be read, or makes
// no sense.
std::vector<Step> read_plan(const std::filesystem::path &script, const Values &values, const Checks &checks);

}  // namespace play
