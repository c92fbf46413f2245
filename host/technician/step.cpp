#include "host/technician/step.h"

#include <fcntl.h>

#include <algorithm>

#include "host/base/descriptor.h"
#include "host/base/listed.h"
#include "host/base/number.h"
#include "host/box/hardware.h"
#include "host/box/inventory_kinds.h"
#include "host/box/model.h"
#include "host/box/unit_name.h"
#include "host/script/values.h"
#include "host/technician/changes.h"
#include "host/technician/technician.h"

namespace technician {
namespace {

using Values = std::vector<std::string_view>;

void check_seconds(const Words &words) {
  script::seconds_in(words[0]);
}

void after(Technician &hands, const Step &step) {
  hands.sleep(script::seconds_in(step.words[0]));
}

void check_is_one_of(const Values &values, const Words &words) {
  if (std::find(values.begin(), values.end(), words.back()) != values.end()) return;
  throw std::invalid_argument("\"" + words.back() + "\" never comes; wait for " + base::listed(values, " or "));
}

void check_led(const Words &words) {
  check_is_one_of({"off", "on", "blink"}, words);
}
void check_flag(const Words &words) {
  check_is_one_of({"start", "end"}, words);
}
void check_detached(const Words &words) {
  check_is_one_of({"yes", "no"}, words);
}
void check_mode(const Words &words) {
  check_is_one_of({"lock", "unlock"}, words);
}

void look_up_place(const Technician &hands, Words &words) {
  words[0] = hands.place_with_flag(words[0]);
}
void look_up_light(const Technician &hands, Words &words) {
  words[0] = hands.place_with_led(words[0]);
}
void look_up_units(const Technician &hands, Words &words) {
  for (std::string &unit : words) unit = hands.unit(unit);
}
void look_up_unit(const Technician &hands, Words &words) {
  words[0] = hands.unit(words[0]);
}

void when_led(Technician &hands, const Step &step) {
  hands.wait_for(step, [&] { return box::Hardware(hands.place()).led(step.words[0]) == step.words[1]; });
}

void when_flag(Technician &hands, const Step &step) {
  const bool wanted = step.words[1] == "start";
  hands.wait_for(step, [&] { return box::Hardware(hands.place()).flag(step.words[0]) == wanted; });
}

void when_detached(Technician &hands, const Step &step) {
  const bool wanted = step.words[1] == "yes";
  hands.wait_for(step, [&] { return box::Hardware(hands.place()).detached(step.words[0]) == wanted; });
}

void when_mode(Technician &hands, const Step &step) {
  const bool wanted = step.words[0] == "lock";
  hands.wait_for(step, [&] { return box::Hardware(hands.place()).maintenance_mode() == wanted; });
}

void check_trace(const Words &words) {
  TraceCondition condition(words);
}

void when_trace(Technician &hands, const Step &step) {
  const TraceCondition condition(step.words);
  hands.wait_for(step, [&] { return hands.trace().has_come(condition); });
}

// A file that is not there has no text yet.
void when_text(Technician &hands, const Step &step) {
  hands.wait_for(step, [&] {
    const base::Descriptor file(open(step.words[0].c_str(), O_RDONLY | O_CLOEXEC));
    return file.get() >= 0 &&
           script::text_of(file.get(), step.words[0]).find(script::joined(step.words, 1)) != std::string::npos;
  });
}

void change(Technician &hands, const Step &step) {
  const auto *row = std::find_if(kChanges.begin(), kChanges.end(),
                                 [&](const ChangeRow &known) { return known.verb == step.row->verb; });
  hands.change(row->change, step.words);
}

std::uint32_t times_in(const std::string &word) {
  const auto times = base::number_in<std::uint32_t>(word).value_or(0);
  if (times == 0) throw std::invalid_argument("\"" + word + "\" is not a number of times");
  return times;
}

void check_flicker(const Words &words) {
  times_in(words[1]);
  script::seconds_in(words[2]);
}

void flicker(Technician &hands, const Step &step) {
  const std::uint32_t times = times_in(step.words[1]);
  for (std::uint32_t i = 0; i < times; ++i) {
    if (i > 0) hands.sleep(script::seconds_in(step.words[2]));
    hands.change(hands.is_installed(step.words[0]) ? box::Change::kPull : box::Change::kInsert, {step.words[0]});
  }
}

constexpr StepRow kBeforeChanges[] = {
    {{"after", 1, 1, "after 3", "Wait three seconds"}, check_seconds, nullptr, after},
    {{"when led", 2, 2, "when led /PSU#3 blink", "Wait until the LED is off, on or blinks"},
     check_led,
     look_up_light,
     when_led},
    {{"when flag", 2, 2, "when flag /PSU#3 start",
      "Wait until the maintenance flag is set;\n`end`: until it is cleared"},
     check_flag,
     look_up_place,
     when_flag},
    {{"when detached", 2, 2, "when detached /PSU#3 yes",
      "Wait until the unit is out of operation;\n`no`: until it is in operation"},
     check_detached,
     look_up_place,
     when_detached},
    {{"when mode", 1, 1, "when mode lock", "Wait until maintenance mode is on;\n`unlock`: until it is off"},
     check_mode,
     nullptr,
     when_mode},
    {{"when trace", 1, script::kAny, "when trace FUNCTION [EVENT]",
      "Wait until the library records this event,\nsuch as lmainte_chk_fru_install entry"},
     check_trace,
     nullptr,
     when_trace},
    {{"when text", 2, script::kAny, "when text FILE TEXT", "Wait until the file contains the text"},
     nullptr,
     nullptr,
     when_text},
};
constexpr StepRow kFlicker{{"flicker", 3, 3, "flicker /PSU#3 5 0.5", "Out or in five times, half a second apart"},
                           check_flicker,
                           look_up_unit,
                           flicker};

Step step_of(script::Statement &&statement) {
  Step step{std::move(statement), nullptr};
  try {
    step.row = &script::take_row(step_rows(), step.words);
    if (step.row->check != nullptr) step.row->check(step.words);
    return step;
  } catch (const std::invalid_argument &wrong) {
    throw step.error(wrong.what());
  }
}

std::span<const std::string> units_of(const Step &step) {
  if (step.row->look_up == nullptr) return {};
  return std::span(step.words).first(step.row->look_up == look_up_units ? step.words.size() : 1);
}

}  // namespace

std::span<const StepRow> step_rows() {
  static const std::vector<StepRow> all = [] {
    std::vector<StepRow> rows(std::begin(kBeforeChanges), std::end(kBeforeChanges));
    for (const ChangeRow &row : kChanges) {
      rows.push_back({{row.verb, 1, script::kAny, row.step, row.help}, nullptr, look_up_units, change});
    }
    rows.push_back(kFlicker);
    return rows;
  }();
  return all;
}

std::vector<Step> read_script(std::string text, const std::string &name) {
  script::Reader reader(std::move(text), name, {.has_quotes = true, .has_semicolons = true, .keeps_bad_quotes = true});
  std::vector<Step> steps;
  while (auto statement = reader.next()) steps.push_back(step_of(std::move(*statement)));
  if (steps.empty()) {
    throw script::Error((name.empty() ? "the script" : name) + " has no step. Write one, such as: pull /PSU#3");
  }
  return steps;
}

void check_unit(std::string_view model, const std::string &name) {
  const std::string unit = box::location_of(name);
  const auto places = box::places_of(box::find_model(model)->code);
  const auto is_it = [&](const box::UnitPlace &place) { return place.name == unit; };
  if (std::any_of(places.begin(), places.end(), is_it) || unit.starts_with("/IOX@")) return;
  box::check_units(model, {&unit, 1});
}

void check_units(std::string_view model, const std::vector<Step> &steps) {
  for (const Step &step : steps) {
    try {
      for (const std::string &name : units_of(step)) check_unit(model, name);
    } catch (const std::invalid_argument &wrong) {
      throw step.error(wrong.what());
    }
  }
}

}  // namespace technician
