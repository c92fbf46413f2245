// What technicians do beside the operator, and on their own.
#include <algorithm>
#include <array>
#include <sstream>

#include "host/play/layout.h"
#include "host/play/stage.h"
#include "host/play/step.h"
#include "host/script/values.h"
#include "host/technician/changes.h"
#include "host/technician/step.h"

namespace play {
namespace {

void check_hands(const Words &words) {
  technician::read_script(words[0], "");
}

void check_hands_on(std::string_view model, const Words &words) {
  technician::check_units(model, technician::read_script(words[0], ""));
}

void send_technician(Stage &stage, const Step &step) {
  const auto &steps = step.words[0];
  stage.narrator.remarks("A technician works beside the operator: " + steps);
  stage.technicians.add(step, stage.box.spbox({"technician", "--ready-fd", "3", "--do", steps}), stage.patience);
}

void wait_for_hands(Stage &stage, const Step & /*step*/) {
  wait_for_technicians(stage);
}

// A verb that changes units is a step of a technician, too.
void check_changes_on(std::string_view model, const Words &words) {
  const auto &rows = technician::kChanges;
  const bool is_change = std::any_of(rows.begin(), rows.end(), [&](const auto &row) { return row.verb == words[0]; });
  for (std::size_t i = 1; is_change && i < words.size(); ++i) {
    if (!words[i].starts_with('-')) technician::check_unit(model, words[i]);
  }
}

void run_spbox(Stage &stage, const Step &step) {
  auto done = stage.box.spbox(step.words);
  const auto status = done.wait(stage.patience);
  stage.said = stage.box.without_folder(done.output());
  stage.narrator.happens("The technician: spbox " + script::joined(step.words), stage.said);
  if (!status) {
    throw std::runtime_error("it was not done in " + script::seconds_text(stage.patience) + ", and is ended.");
  }
  if (*status != 0) {
    throw std::runtime_error("it ended with " + text(terminal::Ending{false, *status}) + ":\n" + indented(stage.said));
  }
}

// says [not] [like] "text"
struct Saying {
  bool wanted;
  Sought sought;
};

Saying saying_in(Words words) {
  const bool is_negated = words.size() > 1 && words[0] == "not";
  if (is_negated) words.erase(words.begin());
  if (words.size() > 2 || (words.size() == 2 && words[0] != "like"))
    throw std::invalid_argument(R"(write it as: says [not] [like] "text")");
  return {!is_negated, Sought(words)};
}

void check_says(const Words &words) {
  saying_in(words);
}

// A text may have several lines; a regular expression is for one.
std::optional<script::Match> match_in(const std::string &said, const Sought &sought, bool is_pattern) {
  if (!is_pattern) return sought.find(said);
  std::istringstream lines(said);
  for (std::string line; std::getline(lines, line);) {
    if (auto match = sought.find(line)) return match;
  }
  return {};
}

void says(Stage &stage, const Step &step) {
  const auto saying = saying_in(step.words);
  const bool is_pattern = step.words.size() == (saying.wanted ? 2U : 3U);
  if (match_in(stage.said, saying.sought, is_pattern).has_value() == saying.wanted) return;
  throw std::runtime_error(std::string("spbox said ") + (saying.wanted ? "something else" : "it") + ":\n" +
                           indented(stage.said));
}

void check_taken_said(const Words &words) {
  const Sought sought({"like", words[1]});
}

void take_said(Stage &stage, const Step &step) {
  const auto match = match_in(stage.said, Sought({"like", step.words[1]}), true);
  if (!match) throw std::runtime_error("spbox said something else:\n" + indented(stage.said));
  stage.take(step, match->value);
}

constexpr std::array<StepRow, 5> kStepsOfTheTechnician{{
    {{"hands", 1, 1, "hands \"steps\"", "a technician works beside the operator from now\non; see `spbox technician`"},
     check_hands,
     send_technician,
     {.uses_box = true, .check_on = check_hands_on}},
    {{"handsdone", 0, 0, "handsdone", "waits until the technicians have done their\nwork, as the end of the play does"},
     nullptr,
     wait_for_hands},
    {{"spbox", 1, script::kAny, "spbox VERB ...", "works on the box, as in `spbox pull /PSU#3`"},
     nullptr,
     run_spbox,
     {.uses_box = true, .names_verb = true, .check_on = check_changes_on}},
    {{"says", 1, 3, "says [not] [like] \"text\"", "the last `spbox` step printed the text, or did\nnot"},
     check_says,
     says,
     {.needs_said = true}},
    {{"takesaid", 2, 2, "takesaid NAME \"REGEX\"", "as `take`, of what the last `spbox` step printed"},
     check_taken_said,
     take_said,
     {.needs_said = true, .takes_value = true}},
}};

}  // namespace

std::span<const StepRow> steps_of_the_technician() {
  return kStepsOfTheTechnician;
}

}  // namespace play
