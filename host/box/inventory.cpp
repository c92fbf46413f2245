#include "host/box/inventory.h"

#include <algorithm>

#include "host/box/advice.h"
#include "host/box/inventory_records.h"
#include "host/box/model.h"
#include "host/box/record_set.h"

namespace box {
namespace {

// Reads units out of the databases.
class Reading {
 public:
  explicit Reading(const Place &place) : current_(place, LMAINTE_DB_CURRENT), fru_(place, LMAINTE_DB_FRU) {}

  Unit unit(const UnitPlace &place) {
    const UnitEntry &entry = place.entries.front();
    Unit unit{place, 0, current_.complaint(entry.record, entry.size), "", ""};
    if (!unit.unreadable.empty()) return unit;
    unit.status = status_in(entry, current_.at(entry.record, entry.size));
    if (!unit.installed() || entry.fru_record.empty()) return unit;
    unit.fru_unreadable = fru_.complaint(entry.fru_record, entry.fru.size);
    if (!unit.fru_unreadable.empty()) return unit;
    unit.fru_name = fru_name_in(entry.fru, fru_.at(entry.fru_record, entry.fru.size)).value_or("");
    return unit;
  }

 private:
  RecordSet current_, fru_;
};

}  // namespace

bool Unit::installed() const {
  return unreadable.empty() && (status & LMAINTE_STATUS_INSTALLED) != 0;
}
bool Unit::faulted() const {
  return installed() && (status & LMAINTE_STATUS_FAULTED) != 0;
}
bool Unit::degraded() const {
  return installed() && (status & LMAINTE_STATUS_DEGRADED) != 0;
}

std::string_view state_word(const Unit &unit) {
  if (!unit.unreadable.empty()) return "Unreadable";
  if (!unit.installed()) return "Not installed";
  if (unit.faulted()) return "Faulted";
  return unit.degraded() ? "Degraded" : "Normal";
}

Inventory::Inventory(const Place &place) : place_(place), model_(model_of_box(place)), places_(places_of(model_)) {}

std::vector<Unit> Inventory::units() const {
  Reading reading(place_);
  std::vector<Unit> units;
  for (const UnitPlace &place : places_) units.push_back(reading.unit(place));
  return units;
}

std::vector<Unit> Inventory::units(const std::vector<std::string> &names) const {
  Reading reading(place_);
  std::vector<Unit> units;
  for (const std::string &name : names) units.push_back(reading.unit(places_[find(name)]));
  return units;
}

Unit Inventory::unit(std::string_view name) const {
  return Reading(place_).unit(places_[find(name)]);
}

std::vector<UnitPlace>::const_iterator Inventory::place_named(std::string_view name) const {
  return std::find_if(places_.begin(), places_.end(),
                      [location = location_of(name)](const UnitPlace &unit) { return unit.name == location; });
}

bool Inventory::has(std::string_view name) const {
  return place_named(name) != places_.end();
}

std::size_t Inventory::find(std::string_view name) const {
  const auto at = place_named(name);
  if (at != places_.end()) return static_cast<std::size_t>(at - places_.begin());
  const std::string box = place_.root().string();
  throw BoxError(box + " has no unit " + location_of(name) + " (model " + std::string(model_name(model_)) + "). " +
                 advice({"units", box}) + " lists them.");
}

std::vector<std::string> Inventory::with_carried(const std::vector<std::string> &names) const {
  std::vector<std::string> all;
  for (const std::string &name : names) {
    const std::size_t index = find(name);
    all.push_back(places_[index].name);
    if (places_[index].carried) continue;
    for (std::size_t i = index + 1; i < places_.size() && places_[i].carried; ++i) all.push_back(places_[i].name);
  }
  return all;
}

}  // namespace box
