// What a play is played on.
#include <algorithm>
#include <array>

#include "host/box/model.h"
#include "host/play/stage.h"
#include "host/play/step.h"
#include "host/script/values.h"

namespace play {
namespace {

void check_model(const Words &words) {
  if (box::find_model(words[0]) != nullptr) return;
  throw std::invalid_argument("there is no model \"" + words[0] + "\"; the models are " + box::model_names());
}

void make_box(Stage &stage, const Step &step) {
  const bool has_dump = step.words.size() > 1;
  stage.box.make(step.words[0], has_dump ? step.folder / step.words[1] : "", stage.patience);
  stage.narrator.remarks("A box of model " + step.words[0] + (has_dump ? ", as " + step.words[1] + " has it." : "."));
}

terminal::Size size_in(const Words &words) {
  constexpr int kLargest = 500;
  return {script::number_in(words[0], kLargest, "a number of rows"),
          script::number_in(words[1], kLargest, "a number of columns")};
}

void check_size(const Words &words) {
  const auto size = size_in(words);
  if (size.rows < terminal::Size::kFewestRows || size.columns < terminal::Size::kFewestColumns) {
    throw std::invalid_argument("a terminal has at least one row and two columns");
  }
}

void take_terminal(Stage &stage, const Step &step) {
  stage.op().take_terminal(size_in(step.words));
}

void resize(Stage &stage, const Step &step) {
  const terminal::Size size = size_in(step.words);
  stage.op().resize(size);
  stage.narrator.happens(stage.operators.subject() + "'s window has " + std::to_string(size.rows) + " rows of " +
                         std::to_string(size.columns) + " columns now.");
}

void check_operator(const Words &words) {
  for (const std::string &name : words) {
    const auto is_plain = [](char c) {
      return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    };
    if (name.empty() || !std::ranges::all_of(name, is_plain))
      throw std::invalid_argument("\"" + name + "\" is no name of an operator: letters and digits");
  }
}

void turn_to_operator(Stage &stage, const Step &step) {
  stage.operators.turn_to(step.words.empty() ? "" : step.words[0]);
}

constexpr std::array<StepRow, 5> kStepsThatSetUp{{
    {{"box", 1, 2, "box MODEL [DUMP]",
      "a new, healthy box of this model, or the one that\nwas dumped into DUMP, relative to this script"},
     check_model,
     make_box,
     {.makes_box = true}},
    {{"terminal", 2, 2, "terminal ROWS COLUMNS", "for the next commands; 24 80 at first"},
     check_size,
     take_terminal,
     {.takes_terminal = true}},
    {{"resize", 2, 2, "resize ROWS COLUMNS", "the window changes its size, while a command runs,\ntoo"},
     check_size,
     resize,
     {.needs_command = true}},
    {{"operator", 0, 1, "operator [NAME]",
      "the next steps are of this operator, who has a\nterminal of their own; without NAME, of the\nfirst one"},
     check_operator,
     turn_to_operator,
     {.turns_to_operator = true}},
    {{"play", 1, script::kAny, "play FILE [NAME=VALUE...]", "plays another script; FILE is relative to this one"},
     nullptr,
     nullptr},
}};

}  // namespace

std::span<const StepRow> steps_that_set_up() {
  return kStepsThatSetUp;
}

}  // namespace play
