// What a play is played on.
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
  stage.box.make(step.words[0], stage.patience);
  stage.narrator.remarks("A box of model " + step.words[0] + ".");
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
  stage.op.take_terminal(size_in(step.words));
}

constexpr std::array<StepRow, 3> kStepsThatSetUp{{
    {{"box", 1, 1, "box MODEL", "a new, healthy box of this model"}, check_model, make_box, {.makes_box = true}},
    {{"terminal", 2, 2, "terminal ROWS COLUMNS", "for the next commands; 24 80 at first"},
     check_size,
     take_terminal,
     {.takes_terminal = true}},
    {{"play", 1, script::kAny, "play FILE [NAME=VALUE...]", "plays another script; FILE is relative to this one"},
     nullptr,
     nullptr},
}};

}  // namespace

std::span<const StepRow> steps_that_set_up() {
  return kStepsThatSetUp;
}

}  // namespace play
