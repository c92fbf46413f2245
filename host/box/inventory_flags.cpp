// Units under maintenance: the flags in the box's own database, and the marks that follow them in status words.
#include <algorithm>

#include "host/box/hardware.h"
#include "host/box/inventory.h"
#include "host/box/inventory_records.h"
#include "host/box/record_set.h"
#include "host/box/records.h"

namespace box {
namespace {

constexpr std::uint32_t kMarkedBit = 0x8000;  // of a place, whatever is in it: no change of the unit touches it

void mark(Bytes &record, std::size_t status_at, bool marked) {
  const std::uint32_t status = word_at(record, status_at);
  put_word(record, status_at, marked ? status | kMarkedBit : status & ~kMarkedBit);
}

}  // namespace

// Whether a unit is under maintenance the box's own database says, and nothing else in the box is asked: it knows units
// without a record, too. The mark in a status word, the unit's own and that of the system while there is any such unit, is
// what commands see of it.
bool Inventory::set_flag(std::string_view name, bool start) const {
  const std::string whole = location_of(name);
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
  save({&current.changed(), &hardware.database()});
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
