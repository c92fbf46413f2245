// What a technician does to units: all changes of one call are made in copies of the records, and saved together.
#include <algorithm>

#include "host/box/inventory.h"
#include "host/box/inventory_records.h"
#include "host/box/model.h"
#include "host/box/partitions.h"
#include "host/box/record_set.h"

namespace box {
namespace {

constexpr std::uint32_t kFaultBits = LMAINTE_STATUS_FAULTED | LMAINTE_STATUS_DEGRADED;
constexpr std::uint8_t kFaultFlags = LMAINTE_FLAG_FAULTED | LMAINTE_FLAG_DEGRADED;

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
    if (!why.empty()) throw BoxError(place_.root().string() + ": " + why);
    one(change, index);
    if (change != Change::kPull && change != Change::kInsert) return;
    if (places_[index].carried) return;
    if (change == Change::kPull) stop_board_of(places_[index].name);
    for (std::size_t below = index + 1; below < places_.size() && places_[below].carried; ++below) one(change, below);
  }

  Unit changed(std::size_t index) { return {places_[index], status(index), "", "", ""}; }

  // A command reads a unit's state first and its name then, and perhaps lets both databases be changed in between. The
  // identity record is there at any time, so all that such a command can meet is a name that is empty.
  void save() { box::save({&fru_.changed(), &current_.changed()}); }

 private:
  std::uint32_t status(std::size_t index) {
    const UnitEntry &entry = places_[index].entries.front();
    return status_in(entry, current_.at(entry.record, entry.size));
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
  void stop_board_of(std::string_view unit) {
    if (const auto board = board_of(unit); board && is_high_end(model_)) stop_board(current_, *board);
  }

  Place place_;
  std::uint32_t model_;
  const std::vector<UnitPlace> &places_;
  RecordSet current_, fru_;
};

}  // namespace

// The answer is ready before the change is saved: what fails after that would be taken for a failure of the change.
std::vector<Unit> Inventory::change(Change change, const std::vector<std::string> &names) const {
  std::vector<std::size_t> indices;
  for (const std::string &name : names) {
    indices.push_back(find(name));
    if (std::count(indices.begin(), indices.end(), indices.back()) > 1) {
      throw BoxError(location_of(name) + " is given twice.");
    }
  }
  Edit edit(place_, model_, places_);
  for (const std::size_t index : indices) edit.unit(change, index);
  std::vector<Unit> changed;
  for (const std::size_t index : indices) changed.push_back(edit.changed(index));
  edit.save();
  return changed;
}

}  // namespace box
