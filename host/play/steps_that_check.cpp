// What the script itself judges, how long it waits, and what it says.
#include <algorithm>
#include <array>

#include "host/box/contents.h"
#include "host/box/unit_name.h"
#include "host/clock/hours.h"
#include "host/play/layout.h"
#include "host/play/stage.h"
#include "host/play/step.h"
#include "host/script/values.h"

namespace play {
namespace {

void check_in_order(const Words &words) {
  if (!words.empty() && (words[0] != "but" || words.size() < 2)) {
    throw std::invalid_argument("write it as: in_order but /PSU#3");
  }
}

std::span<const std::string> units_behind_but(const Words &words) {
  return std::span(words).subspan(words.empty() ? 0 : 1);
}

void check_units_on(std::string_view model, const Words &words) {
  box::check_units(model, units_behind_but(words));
}

// A look reads all that there is of the box.
constexpr std::chrono::milliseconds kLongestLook{500};

// What dies with the command dies a moment later.
void in_order(Stage &stage, const Step &step) {
  auto &terminal = stage.op().terminal();
  const auto place = stage.box.place();
  const auto units = units_behind_but(step.words);
  const Words detached(units.begin(), units.end());
  if (!detached.empty()) box::check_units(box::model_name(box::model_of_box(place)), detached);
  Before before = stage.op().before();
  before.processes.merge(stage.operators.processes_of_others());
  for (const auto &technician : stage.technicians.at_work()) before.processes.insert(technician.work.pid());
  const auto deadline = box_time::Clock::now() + stage.patience;
  auto left = leftovers(place, terminal, before, detached);
  for (auto look = kLookAgain; !left.empty() && box_time::Clock::now() < deadline;
       look = std::min(look * 3 / 2, kLongestLook)) {
    terminal.watch(look);
    left = leftovers(place, terminal, before, detached);
  }
  if (left.empty()) return stage.narrator.remarks(stage.operators.by("All is in order."));
  std::string list;
  for (const auto &sentence : left) list += sentence + "\n";
  throw NotInOrder("not all is in order:\n" + indented(list), left);
}

void check_seconds(const Words &words) {
  script::seconds_in(words[0]);
}

void be_patient(Stage &stage, const Step &step) {
  stage.patience = script::seconds_in(step.words[0]);
}

void pause(Stage &stage, const Step &step) {
  stage.op().watch(script::seconds_in(step.words[0]));
}

void say(Stage &stage, const Step &step) {
  stage.narrator.remarks(step.words[0]);
}

constexpr std::array<StepRow, 4> kStepsThatCheck{{
    {{"in_order", 0, script::kAny, "in_order [but UNIT...]",
      "the command left all as it should: no LED, no\nflag, no maintenance mode, no process, file or\n"
      "lock; these units detached, and no others"},
     check_in_order,
     in_order,
     {.uses_box = true, .needs_command = true, .check_on = check_units_on}},
    {{"patience", 1, 1, "patience SECONDS", "the longest time that the next steps wait; 10\nat first"},
     check_seconds,
     be_patient},
    {{"pause", 1, 1, "pause SECONDS", "nobody does anything"}, check_seconds, pause},
    {{"say", 1, 1, "say \"text\"", "prints a line of the script's own"}, nullptr, say},
}};

}  // namespace

std::span<const StepRow> steps_that_check() {
  return kStepsThatCheck;
}

}  // namespace play
