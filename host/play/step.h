// The steps of a play: a row for each that a script may have, and what a script has of them.
#pragma once

#include <filesystem>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "host/script/form.h"
#include "host/script/pattern.h"

namespace play {

using script::Words;

struct Stage;
struct Step;

// What a play has to know of a step before it is played.
struct Traits {
  bool makes_box = false;   // of the model that the first word names
  bool uses_box = false;    // one that is there
  bool names_verb = false;  // The first word is a verb of spbox that works on a box.
  bool draws = false;       // a screen, for the picture

  // What a step before has to be, and which one ends it.
  bool starts_command = false, needs_command = false, takes_terminal = false;
  bool turns_to_operator = false;  // to the one whom the first word names
  bool needs_said = false;         // by a step that names a verb
  bool takes_value = false;        // for the name that is the first word

  // Throws std::invalid_argument with what is wrong with the words on a server of this model. Null: they suit every model.
  void (*check_on)(std::string_view model, const Words &words) = nullptr;
};

// How a step is written, what its words have to be, and what it does.
struct StepRow : script::Form {
  // Throws std::invalid_argument with what is wrong with the words. Null: any words will do.
  void (*check)(const Words &words);

  // Throws where something else happens than the script says. Null: the reader of scripts replaces the step.
  void (*perform)(Stage &stage, const Step &step);

  Traits traits = {};
};

// A word of which a part is known when the play is played: it was taken from what the play shows.
struct LatePart {
  std::string text;
  int slot = -1;  // what was taken there; -1: the text
};
using LateText = std::vector<LatePart>;
struct LateWord {
  std::size_t number;
  LateText text;
};

// A statement of a script, whose verb is taken off its words.
struct Step : script::Statement {
  const StepRow *row;
  std::filesystem::path folder;  // of its script
  std::vector<LateWord> late = {};
  int slot = -1;    // of a step that takes a value
  std::string via;  // where its script is played from: "\n  played from walk.play:3", or nothing

  // "walk.play:12: `exit soon`: REASON", and where the script is played from.
  script::Error error(const std::string &reason) const;
};

// In the order of the help.
std::span<const StepRow> step_rows();

// These parts of the table stand with what they do.
std::span<const StepRow> steps_that_set_up();
std::span<const StepRow> steps_of_the_operator();
std::span<const StepRow> steps_of_the_technician();
std::span<const StepRow> steps_that_check();

// Throws std::invalid_argument for a text of blanks.
void check_is_text(const std::string &word);

// What a step looks for in a line: a text or, behind the word `like`, a regular expression.
class Sought {
 public:
  explicit Sought(const Words &words);  // [like] TEXT. Throws std::invalid_argument.

  // Where it stands in a line, and what is taken of it.
  std::optional<script::Match> find(std::string_view line, std::size_t from = 0) const;
  const std::string &shown() const { return shown_; }  // "\"3\"", "a line like \"[0-9]\""

 private:
  std::string text_, shown_;
  std::optional<script::Pattern> pattern_;
};

// A step that fails although it is not the one that is played: a technician's, whose work goes on beside the others.
class StepError : public std::runtime_error {
 public:
  StepError(const Step &step, const std::string &reason) : std::runtime_error(reason), step_(&step) {}
  const Step &step() const { return *step_; }

 private:
  const Step *step_;
};

// What the command left that it should have taken back, a sentence for each.
class NotInOrder : public std::runtime_error {
 public:
  NotInOrder(const std::string &text, std::vector<std::string> left)
      : std::runtime_error(text), left_(std::move(left)) {}
  const std::vector<std::string> &left() const { return left_; }

 private:
  std::vector<std::string> left_;
};

}  // namespace play
