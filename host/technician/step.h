// The steps of a technician: a row for each that a script may have, and what a script has of them.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/script/form.h"

namespace technician {

using script::Words;

class Technician;
struct Step;

// How a step is written, what its words have to be, and what it does.
struct StepRow : script::Form {
  void (*check)(const Words &words);                       // throws std::invalid_argument; null: any words will do
  void (*look_up)(const Technician &hands, Words &words);  // puts whole locations of known units; null: it names none
  void (*perform)(Technician &hands, const Step &step);
};

// A statement of a script, whose verb is taken off its words.
struct Step : script::Statement {
  const StepRow *row;
};

// In the order of the help.
std::span<const StepRow> step_rows();

// A step in each line, and more of them with semicolons between. `name` names the script to people; empty where it is no
// file. Throws script::Error.
std::vector<Step> read_script(std::string text, const std::string &name);

// Throw std::invalid_argument, or script::Error with the step, where a server of this model lacks a unit. What only some boxes
// have passes: it is looked up when the work begins.
void check_unit(std::string_view model, const std::string &name);
void check_units(std::string_view model, const std::vector<Step> &steps);

}  // namespace technician
