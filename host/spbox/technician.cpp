#include "host/spbox/technician.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <thread>

#include "host/box/hardware.h"
#include "host/box/trace_ring.h"
#include "host/box/unit_name.h"
#include "host/spbox/changes.h"
#include "host/trace_book/trace_book.h"

namespace spbox {
namespace {

using std::chrono::milliseconds;

// Often enough for a person's hands, and seldom enough to leave the processor to others.
constexpr milliseconds kLookAgain{100};

std::string verb_of(box::Change change) {
  for (const ChangeRow &row : kChanges) {
    if (row.change == change) return std::string(row.verb);
  }
  return "";
}

// Of the conditions, those that name a unit.
bool is_of_unit(std::string_view condition) {
  return condition == "led" || condition == "flag" || condition == "detached";
}

std::string seconds_text(milliseconds time) {
  char text[32];
  std::snprintf(text, sizeof text, "%7.1f s", static_cast<double>(time.count()) / 1000);
  return text;
}

// A file that is not there has no text yet.
bool has_text(const std::string &file, const std::string &text) {
  std::ifstream in(file);
  const std::string whole{std::istreambuf_iterator<char>(in), {}};
  return whole.find(text) != std::string::npos;
}

}  // namespace

Clock Clock::real() {
  return {[] { return std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now().time_since_epoch()); },
          [](milliseconds time) { std::this_thread::sleep_for(time); }};
}

Technician::Technician(const box::Place &place, Clock clock, std::function<void(const std::string &line)> tell)
    : place_(place), inventory_(place), clock_(std::move(clock)), tell_(std::move(tell)), start_(clock_.now()) {
  skip_trace();
}

void Technician::skip_trace() {
  const auto entries = box::TraceRing::read(place_.trace());
  if (!entries.empty()) next_entry_ = entries.back().number + 1;
}

void Technician::work(const std::vector<Step> &steps, milliseconds limit, const std::function<void()> &begin) {
  std::vector<Step> known;
  for (const Step &step : steps) known.push_back(with_known_units(step));
  begin();
  for (const Step &step : known) act(step, limit);
}

Step Technician::with_known_units(Step step) const {
  if (step.kind == Step::Kind::kChange || step.kind == Step::Kind::kFlicker) {
    for (std::string &unit : step.words) unit = known_unit(step, unit);
  } else if (step.kind == Step::Kind::kWhen && is_of_unit(step.words[0])) {
    step.words[1] = known_unit(step, step.words[1]);
  }
  return step;
}

// Only units with a record can be changed. What is waited for is what control programs set: for every location, recorded
// or not, and the LED also in I/O expansion units, but never for a single fan of a tray.
std::string Technician::known_unit(const Step &step, const std::string &name) const {
  std::string whole = (name.starts_with('/') ? "" : "/") + name;
  const bool located = box::unit_id(inventory_.model(), whole).has_value();
  const bool known = step.kind != Step::Kind::kWhen
                         ? inventory_.has(whole)
                         : located || (step.words[0] == "led" && box::Hardware(place_).has_expansion(whole));
  if (known) return whole;
  const std::string box = place_.root().string();
  const std::string model(box::model_name(inventory_.model()));
  const std::string lists = "`spbox units " + box::quoted(box) + "` lists them.";
  const bool listed = located || inventory_.has(whole);
  const std::string why =
      !listed ? box + " has no unit " + whole + " (model " + model + "). "
              : whole + " has no " + (located ? "record" : "LED and no flag of its own") + ". Name one that has. ";
  throw error_of(step, why + lists);
}

void Technician::act(const Step &step, milliseconds limit) {
  switch (step.kind) {
    case Step::Kind::kAfter:
      return clock_.sleep(step.time);
    case Step::Kind::kWhen:
      return wait_for(step, limit);
    case Step::Kind::kChange:
      return change(step.change, step.words);
    case Step::Kind::kFlicker:
      return flicker(step);
  }
}

void Technician::wait_for(const Step &step, milliseconds limit) {
  const milliseconds deadline = clock_.now() + limit;
  while (!holds(step.words)) {
    if (clock_.now() >= deadline) {
      throw error_of(step, "it has not come in " + std::to_string(limit.count() / 1000) +
                               " s. See `spbox units` and `spbox trace`, or give more --limit.");
    }
    clock_.sleep(kLookAgain);
  }
  tell_(seconds_text(clock_.now() - start_) + "  " + joined(step.words));
}

void Technician::change(box::Change change, const std::vector<std::string> &units) {
  inventory_.change(change, units);
  tell_(seconds_text(clock_.now() - start_) + "  " + verb_of(change) + " " + joined(units));
}

void Technician::flicker(const Step &step) {
  for (std::uint32_t i = 0; i < step.times; ++i) {
    if (i > 0) clock_.sleep(step.time);
    const bool installed = inventory_.unit(step.words[0]).installed();
    change(installed ? box::Change::kPull : box::Change::kInsert, step.words);
  }
}

// What was recorded while the technician did something else counts, too, if it came after what he has found.
bool Technician::was_recorded(const std::vector<std::string> &words) {
  const std::string wanted = joined(words, 1);  // a function, and perhaps what happened in it
  const auto entries = box::TraceRing::read(place_.trace());
  if (entries.empty()) return false;
  const auto found = std::find_if(entries.begin(), entries.end(), [&](const box::TraceEntry &entry) {
    if (entry.number < next_entry_) return false;
    const trace_book::TraceLine line = trace_book::words_of(entry);
    return wanted == line.function || wanted == line.function + " " + line.event;
  });
  const bool was = found != entries.end();
  next_entry_ = (was ? *found : entries.back()).number + 1;
  return was;
}

bool Technician::holds(const std::vector<std::string> &condition) {
  if (condition[0] == "trace") return was_recorded(condition);
  if (condition[0] == "text") return has_text(condition[1], joined(condition, 2));
  const box::Hardware hardware(place_);
  if (condition[0] == "mode") return hardware.maintenance_mode() == (condition[1] == "lock");
  if (condition[0] == "led") return hardware.led(condition[1]) == condition[2];
  if (condition[0] == "flag") return hardware.flag(condition[1]) == (condition[2] == "start");
  return hardware.detached(condition[1]) == (condition[2] == "yes");
}

}  // namespace spbox
