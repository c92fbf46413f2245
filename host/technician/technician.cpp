#include "host/technician/technician.h"

#include <cstdio>
#include <memory>

#include "host/box/advice.h"
#include "host/box/hardware.h"
#include "host/box/unit_name.h"
#include "host/clock/guest.h"
#include "host/script/values.h"
#include "host/technician/changes.h"

namespace technician {
namespace {

using std::chrono::milliseconds;

// Often enough for a person's hands, and seldom enough to leave the processor to others.
constexpr milliseconds kLookAgain{100};

Failure failure(const Step &step, const std::string &reason) {
  return Failure(step.error(reason).what());
}

}  // namespace

Clock Clock::of(const box::Place &place) {
  const auto guest = std::make_shared<box_time::Guest>(place.clock());
  return {[guest] { return std::chrono::duration_cast<milliseconds>(guest->now()); },
          [guest](milliseconds time) { guest->sleep(time); }};
}

Technician::Technician(const box::Place &place, Clock clock, std::function<void(const std::string &line)> tell)
    : place_(place),
      inventory_(place),
      clock_(std::move(clock)),
      tell_(std::move(tell)),
      start_(clock_.now()),
      trace_(place) {}

void Technician::work(const std::vector<Step> &steps, milliseconds limit, const std::function<void()> &begin) {
  limit_ = limit;
  std::vector<Step> known = steps;
  for (Step &step : known) {
    try {
      if (step.row->look_up != nullptr) step.row->look_up(*this, step.words);
    } catch (const box::BoxError &wrong) {
      throw failure(step, wrong.what());
    }
  }
  begin();
  for (const Step &step : known) step.row->perform(*this, step);
}

void Technician::tell_of(const std::string &what) const {
  char time[32];
  std::snprintf(time, sizeof time, "%7.1f s", static_cast<double>((clock_.now() - start_).count()) / 1000);
  tell_(time + ("  " + what));
}

void Technician::wait_for(const Step &step, const std::function<bool()> &has_come) {
  const milliseconds deadline = clock_.now() + limit_;
  while (!has_come()) {
    if (clock_.now() >= deadline) {
      const std::string box = place_.root().string();
      throw failure(step, "it has not come in " + script::seconds_text(limit_) + ". See " +
                              box::advice({"units", box}) + " and " + box::advice({"trace", box}) +
                              ", or give a higher --limit.");
    }
    clock_.sleep(kLookAgain);
  }
  const std::string condition(step.row->verb.substr(step.row->verb.find(' ') + 1));
  tell_of(condition + " " + script::joined(step.words));
}

void Technician::change(box::Change change, const Words &units) {
  inventory_.change(change, units);
  tell_of(std::string(row_of(change).verb) + " " + script::joined(units));
}

bool Technician::is_installed(const std::string &unit) const {
  return inventory_.unit(unit).installed();
}

// Only units with a record can be changed.
std::string Technician::unit(const std::string &name) const {
  auto location = box::location_of(name);
  if (inventory_.has(location)) return location;
  throw unknown(location);
}

// What control programs set they set for every location, recorded or not, but never for a single fan of a tray.
std::string Technician::place_with_flag(const std::string &name) const {
  auto location = box::location_of(name);
  if (is_located(location)) return location;
  throw unknown(location);
}

// I/O expansion units have LEDs, too.
std::string Technician::place_with_led(const std::string &name) const {
  auto location = box::location_of(name);
  if (is_located(location) || box::Hardware(place_).has_expansion(location)) return location;
  throw unknown(location);
}

bool Technician::is_located(const std::string &location) const {
  return box::unit_id(inventory_.model(), location).has_value();
}

box::BoxError Technician::unknown(const std::string &location) const {
  const std::string box = place_.root().string();
  const std::string lists = box::advice({"units", box}) + " lists them.";
  if (is_located(location)) return box::BoxError(location + " has no record. Name a unit that has one. " + lists);
  if (inventory_.has(location)) {
    return box::BoxError(location + " has no LED and no flag of its own. Name a unit that has. " + lists);
  }
  return box::BoxError(box + " has no unit " + location + " (model " +
                       std::string(box::model_name(inventory_.model())) + "). " + lists);
}

}  // namespace technician
