#include "host/spbox/record_targets.h"

#include "host/box/inventory.h"

namespace spbox {
namespace {

box::RecordName record_of(const box::Unit &unit, bool identity) {
  const box::UnitEntry &entry = unit.place.entries.front();
  if (!identity) return {LMAINTE_DB_CURRENT, entry.record};
  if (!entry.fru_record.empty()) return {LMAINTE_DB_FRU, entry.fru_record};
  throw box::BoxError(unit.place.name + " has no identity record.");
}

}  // namespace

std::vector<box::RecordName> records_named(const box::Place &place, const std::vector<std::string> &names,
                                           bool identity) {
  const box::Inventory inventory(place);
  std::vector<box::RecordName> records;
  for (const std::string &name : names) {
    const bool is_unit = name.find('/') != std::string::npos || inventory.has(name);
    if (!is_unit && identity) {
      throw box::BoxError(name + " is a record: --fru is for units. Name the record without it.");
    }
    records.push_back(is_unit ? record_of(inventory.unit(name), identity) : box::find_record(place, name));
  }
  return records;
}

}  // namespace spbox
