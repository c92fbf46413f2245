#include "host/box/inventory.h"

#include <algorithm>
#include <cstring>
#include <map>

#include "host/box/database.h"
#include "host/box/inventory_records.h"
#include "include/lmainte.h"

namespace box {
namespace {

constexpr std::uint32_t kFaultBits = LMAINTE_STATUS_FAULTED | LMAINTE_STATUS_DEGRADED;
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

// The records of one database that were read or changed so far.
class Records {
 public:
  explicit Records(const std::filesystem::path &folder) : folder_(folder), database_(folder) {}

  Bytes &at(const std::string &name, std::size_t size) {
    const auto known = records_.find(name);
    if (known != records_.end()) return known->second;
    std::optional<Bytes> record = database_.get(name);
    if (!record) throw InventoryError(folder_.string() + " holds no record " + name + ". Make the box again.");
    if (record->size() != size) {
      throw InventoryError(folder_.string() + ": the record " + name + " has " + std::to_string(record->size()) +
                           " bytes instead of " + std::to_string(size) + ". Make the box again.");
    }
    return records_.emplace(name, std::move(*record)).first->second;
  }

  bool has(const std::string &name) const { return database_.get(name).has_value(); }
  void put(const std::string &name, Bytes record) { records_[name] = std::move(record); }
  void remove(const std::string &name) { gone_.push_back(name); }

  void lock() {
    if (!database_.lock()) {
      throw InventoryError(folder_.string() + " is locked by another process. Try again when the command in the box " +
                           "has done its step.");
    }
  }

  void save() {
    for (const auto &[name, record] : records_) database_.put(name, record);
    for (const std::string &name : gone_) database_.remove(name);
    if (!database_.unlock())
      throw InventoryError(folder_.string() + ": the changes could not be written. See the disk.");
  }

 private:
  std::filesystem::path folder_;
  Database database_;
  std::map<std::string, Bytes> records_;
  std::vector<std::string> gone_;
};

std::string fru_name(Records &fru, const UnitEntry &entry) {
  if (entry.fru_record.empty() || !fru.has(entry.fru_record)) return "";
  const Bytes &record = fru.at(entry.fru_record, entry.fru.size);
  std::size_t length = 4;
  if (entry.fru.length_at != kNowhere) length = std::min<std::size_t>(record[entry.fru.length_at] & 0x3Fu, 18);
  const auto first = record.begin() + static_cast<std::ptrdiff_t>(entry.fru.name_at);
  const std::string name(first, first + static_cast<std::ptrdiff_t>(length));
  return name.substr(0, name.find('\0'));
}

}  // namespace

std::string_view state_word(std::uint32_t status) {
  if (!(status & LMAINTE_STATUS_INSTALLED)) return "Not installed";
  if (status & LMAINTE_STATUS_FAULTED) return "Faulted";
  return status & LMAINTE_STATUS_DEGRADED ? "Degraded" : "Normal";
}

Inventory::Inventory(const Place &place) : place_(place), model_(model_in(place)) {
  if (!is_box(place)) {
    throw InventoryError(place.root().string() + " is no box. `spbox create " + place.root().string() +
                         " --model MODEL` makes one.");
  }
  if (model_ == LMAINTE_MODEL_NONE) {
    throw InventoryError(place.tmp().string() +
                         " holds no marker file of a model, such as .qe1: the box does not know " +
                         "what server it is. Put the marker file back, or make the box again.");
  }
  places_ = places_of(model_);
}

std::vector<Unit> Inventory::units() const {
  Records current(place_.database(LMAINTE_DB_CURRENT));
  Records fru(place_.database(LMAINTE_DB_FRU));
  std::vector<Unit> units;
  for (const UnitPlace &place : places_) {
    const UnitEntry &entry = place.entries.front();
    const std::uint32_t status = merged_status(entry, current.at(entry.record, entry.size));
    units.push_back({place, status, status & LMAINTE_STATUS_INSTALLED ? fru_name(fru, entry) : ""});
  }
  return units;
}

std::size_t Inventory::find(std::string_view name) const {
  const std::string full = name.starts_with('/') ? std::string(name) : "/" + std::string(name);
  const auto at =
      std::find_if(places_.begin(), places_.end(), [&](const UnitPlace &unit) { return unit.name == full; });
  if (at != places_.end()) return static_cast<std::size_t>(at - places_.begin());
  const std::string box = place_.root().string();
  throw InventoryError(box + " has no unit " + full + " (model " + std::string(model_name(model_)) +
                       "). `spbox units " + box + "` lists them.");
}

std::string Inventory::resolve(std::string_view name) const {
  return places_[find(name)].name;
}

namespace {

// Says why a unit in this state cannot be changed so; empty when it can.
std::string refusal(Change change, const std::string &name, std::uint32_t status, bool carrier_installed) {
  const bool installed = status & LMAINTE_STATUS_INSTALLED;
  if (change == Change::kInsert && installed) return name + " is installed already. Pull it first.";
  if (change == Change::kInsert && !carrier_installed) {
    return name + " has nothing to sit on: " + name.substr(0, name.find('/', 1)) +
           " is not installed. Insert that one.";
  }
  if (change != Change::kInsert && !installed) return name + " is not installed. Insert it first.";
  return "";
}

// The changes to one box, made in copies of its records.
class Edit {
 public:
  Edit(const Place &place, const std::vector<UnitPlace> &places)
      : place_(place),
        places_(places),
        current_(place.database(LMAINTE_DB_CURRENT)),
        fru_(place.database(LMAINTE_DB_FRU)) {
    current_.lock();
    fru_.lock();
  }

  void unit(Change change, std::size_t index) {
    const std::string why = refusal(change, places_[index].name, status(index), carrier_installed(index));
    if (!why.empty()) throw InventoryError(place_.root().string() + ": " + why);
    one(change, index);
    if (change != Change::kPull && change != Change::kInsert) return;
    if (places_[index].carried) return;
    for (std::size_t below = index + 1; below < places_.size() && places_[below].carried; ++below) one(change, below);
  }

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
      if (!entry.fru.leaves_with || entry.fru_record.empty()) continue;
      if (change == Change::kPull) fru_.remove(entry.fru_record);
      if (change == Change::kInsert) fru_.put(entry.fru_record, fru_record_of(entry));
    }
  }

  Place place_;
  const std::vector<UnitPlace> &places_;
  Records current_, fru_;
};

}  // namespace

void Inventory::change(Change change, const std::vector<std::string> &names) const {
  std::vector<std::size_t> indices;
  for (const std::string &name : names) indices.push_back(find(name));
  Edit edit(place_, places_);
  for (const std::size_t index : indices) edit.unit(change, index);
  edit.save();
}

bool is_box(const Place &place) {
  return std::filesystem::is_directory(place.hardware());
}

}  // namespace box
