#include "host/box/inventory.h"

#include <algorithm>

#include "host/box/advice.h"
#include "host/box/hardware.h"
#include "host/box/inventory_records.h"
#include "host/box/model.h"
#include "host/box/partitions.h"
#include "host/box/record_set.h"
#include "host/box/records.h"

namespace box {
namespace {

constexpr std::uint32_t kFaultBits = LMAINTE_STATUS_FAULTED | LMAINTE_STATUS_DEGRADED;
constexpr std::uint32_t kMarkedBit = 0x8000;  // of a place, whatever is in it: no change of the unit touches it
constexpr std::uint8_t kFaultFlags = LMAINTE_FLAG_FAULTED | LMAINTE_FLAG_DEGRADED;

std::uint32_t merged_status(const UnitEntry &entry, const Bytes &record) {
  const std::uint32_t status = word_at(record, entry.status_at);
  const std::uint8_t flags = entry.flag_at == kNowhere ? std::uint8_t{0} : record.at(entry.flag_at);
  if (flags & LMAINTE_FLAG_FAULTED) return status | LMAINTE_STATUS_FAULTED;
  if (flags & LMAINTE_FLAG_DEGRADED) return status | LMAINTE_STATUS_DEGRADED;
  return status;
}

// Sets the fault bits where the kind keeps them: in its flag byte, else in the status word.
void set_fault(const UnitEntry &entry, Bytes &record, std::uint32_t bit, std::uint8_t flag) {
  put_word(record, entry.status_at, word_at(record, entry.status_at) & ~kFaultBits);
  if (entry.flag_at == kNowhere) {
    put_word(record, entry.status_at, word_at(record, entry.status_at) | bit);
  } else {
    std::uint8_t &flags = record.at(entry.flag_at);
    flags = static_cast<std::uint8_t>((flags & ~kFaultFlags) | flag);
  }
}

void apply(Change change, const UnitEntry &entry, Bytes &record) {
  const std::uint32_t status = word_at(record, entry.status_at);
  switch (change) {
    case Change::kPull:
      put_word(record, entry.status_at, status & ~LMAINTE_STATUS_INSTALLED);
      return set_fault(entry, record, 0, 0);
    case Change::kInsert:
      put_word(record, entry.status_at, status | LMAINTE_STATUS_INSTALLED);
      return set_fault(entry, record, 0, 0);
    case Change::kFault:
      return set_fault(entry, record, LMAINTE_STATUS_FAULTED, LMAINTE_FLAG_FAULTED);
    case Change::kDegrade:
      return set_fault(entry, record, LMAINTE_STATUS_DEGRADED, LMAINTE_FLAG_DEGRADED);
    case Change::kRepair:
      return set_fault(entry, record, 0, 0);
  }
}

// Reads units out of the databases.
class Reading {
 public:
  explicit Reading(const Place &place) : current_(place, LMAINTE_DB_CURRENT), fru_(place, LMAINTE_DB_FRU) {}

  Unit unit(const UnitPlace &place) {
    const UnitEntry &entry = place.entries.front();
    Unit unit{place, 0, current_.complaint(entry.record, entry.size), "", ""};
    if (!unit.unreadable.empty()) return unit;
    unit.status = merged_status(entry, current_.at(entry.record, entry.size));
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
  if (name.starts_with('/')) name.remove_prefix(1);
  return std::find_if(places_.begin(), places_.end(),
                      [&](const UnitPlace &unit) { return std::string_view(unit.name).substr(1) == name; });
}

bool Inventory::has(std::string_view name) const {
  return place_named(name) != places_.end();
}

std::size_t Inventory::find(std::string_view name) const {
  const auto at = place_named(name);
  if (at != places_.end()) return static_cast<std::size_t>(at - places_.begin());
  const std::string box = place_.root().string();
  throw InventoryError(box + " has no unit " + (name.starts_with('/') ? "" : "/") + std::string(name) + " (model " +
                       std::string(model_name(model_)) + "). " + advice({"units", box}) + " lists them.");
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

namespace {

// Says why a unit in this state cannot be changed so; empty when it can.
std::string refusal(Change change, const UnitPlace &unit, std::uint32_t status, bool carrier_installed) {
  const bool installed = status & LMAINTE_STATUS_INSTALLED;
  if (change == Change::kInsert && installed) return unit.name + " is installed already. Pull it first.";
  if (change == Change::kInsert && !carrier_installed) {
    return unit.name + " has nothing to sit on: " + unit.carrier() + " is not installed. Insert that one.";
  }
  if (change != Change::kInsert && !installed) return unit.name + " is not installed. Insert it first.";
  return "";
}

// The changes to one box, made in copies of its records.
class Edit {
 public:
  Edit(const Place &place, std::uint32_t model, const std::vector<UnitPlace> &places)
      : place_(place),
        model_(model),
        places_(places),
        current_(place, LMAINTE_DB_CURRENT),
        fru_(place, LMAINTE_DB_FRU) {
    current_.lock();
    fru_.lock();
  }

  void unit(Change change, std::size_t index) {
    const std::string why = refusal(change, places_[index], status(index), carrier_installed(index));
    if (!why.empty()) throw InventoryError(place_.root().string() + ": " + why);
    one(change, index);
    if (change != Change::kPull && change != Change::kInsert) return;
    if (places_[index].carried) return;
    if (change == Change::kPull) stop_board(places_[index].name);
    for (std::size_t below = index + 1; below < places_.size() && places_[below].carried; ++below) one(change, below);
  }

  // A command reads a unit's state first and its name then, and perhaps lets both databases be changed in between. The
  // identity record is there at any time, so all that such a command can meet is a name that is empty.
  void save() {
    fru_.save();
    current_.save();
  }

 private:
  std::uint32_t status(std::size_t index) {
    const UnitEntry &entry = places_[index].entries.front();
    return merged_status(entry, current_.at(entry.record, entry.size));
  }

  bool carrier_installed(std::size_t index) {
    if (!places_[index].carried) return true;
    while (places_[index].carried) --index;
    return status(index) & LMAINTE_STATUS_INSTALLED;
  }

  void one(Change change, std::size_t index) {
    for (const UnitEntry &entry : places_[index].entries) {
      apply(change, entry, current_.at(entry.record, entry.size));
      if (entry.fru_record.empty() || (change != Change::kPull && change != Change::kInsert)) continue;
      Bytes &fru = fru_.at(entry.fru_record, entry.fru.size);
      fru = change == Change::kPull ? Bytes(entry.fru.size) : fru_record_of(entry);
    }
  }

  // No domain runs on a board without one of its two units.
  void stop_board(std::string_view unit) {
    const auto board = board_of(unit);
    if (!board || !is_high_end(model_)) return;
    for (std::uint32_t part = *board * kMostParts; part < (*board + 1) * kMostParts; ++part) {
      const std::string record = kCurrentXsb.of(part);
      if (current_.complaint(record, kCurrentXsb.size).empty()) current_.at(record, kCurrentXsb.size)[kXsbActive] = 0;
    }
  }

  Place place_;
  std::uint32_t model_;
  const std::vector<UnitPlace> &places_;
  RecordSet current_, fru_;
};

}  // namespace

void Inventory::change(Change change, const std::vector<std::string> &names) const {
  std::vector<std::size_t> indices;
  for (const std::string &name : names) indices.push_back(find(name));
  Edit edit(place_, model_, places_);
  for (const std::size_t index : indices) edit.unit(change, index);
  edit.save();
}

namespace {

void mark(Bytes &record, std::size_t status_at, bool marked) {
  const std::uint32_t status = word_at(record, status_at);
  put_word(record, status_at, marked ? status | kMarkedBit : status & ~kMarkedBit);
}

}  // namespace

// Whether a unit is under maintenance the box's own database says, and nothing else in the box is asked: it knows units
// without a record, too. The mark in a status word, the unit's own and that of the system while there is any such unit, is
// what commands see of it. It comes first, so that whoever dies in between can be followed by one who does it again.
bool Inventory::set_flag(std::string_view name, bool start) const {
  const std::string whole = (name.starts_with('/') ? "" : "/") + std::string(name);
  RecordSet current(place_, LMAINTE_DB_CURRENT);
  Hardware hardware(place_);
  current.lock();
  hardware.lock();
  const bool before = hardware.flag(whole);
  if (before == start) return before;
  hardware.set_flag(whole, start);
  if (const auto unit = place_named(whole); unit != places_.end()) {
    for (const UnitEntry &entry : unit->entries) mark(current.at(entry.record, entry.size), entry.status_at, start);
  }
  const std::string system(kCurrentSystem.name);
  mark(current.at(system, kCurrentSystem.size), kSystemStatus, hardware.any_flag());
  current.save();
  hardware.unlock();
  return before;
}

void flag_marked_units(Contents &contents) {
  const auto &current = contents.records.at(LMAINTE_DB_CURRENT);
  for (const UnitPlace &place : places_of(contents.model)) {
    const bool marked = std::any_of(place.entries.begin(), place.entries.end(), [&](const UnitEntry &entry) {
      const auto record = current.find(entry.record);
      return record != current.end() && record->second.size() >= entry.status_at + sizeof(std::uint32_t) &&
             (word_at(record->second, entry.status_at) & kMarkedBit) != 0;
    });
    if (marked) set_flag(contents.hardware, place.name);
  }
}

}  // namespace box
