#include "host/box/breakage.h"

#include "host/box/contents.h"
#include "host/box/programs.h"

namespace box {
namespace {

constexpr std::string_view kKey = "whole ";

Bytes bytes_of(const std::string &text) {
  return {text.begin(), text.end()};
}

std::optional<Bytes> read(const Place &place, const RecordName &record) {
  return Database(place.database(record.db_id)).get(record.name);
}

}  // namespace

std::string whole_key(const RecordName &record) {
  return std::string(kKey) + std::to_string(record.db_id) + " " + record.name;
}

std::optional<RecordName> record_of_key(const std::string &key) {
  const std::size_t space = key.find(' ', kKey.size());
  if (!key.starts_with(kKey) || space != kKey.size() + 1) return std::nullopt;
  const auto db_id = static_cast<std::uint32_t>(key[kKey.size()] - '0');
  if (db_id >= kDatabaseCount) return std::nullopt;
  return RecordName{db_id, key.substr(space + 1)};
}

RecordName find_record(const Place &place, const std::string &name) {
  const Hardware hardware(place);
  std::vector<RecordName> found;
  for (std::uint32_t db_id = 0; db_id < kDatabaseCount; ++db_id) {
    const RecordName record{db_id, name};
    if (read(place, record) || hardware.get(whole_key(record))) found.push_back(record);
  }
  if (found.size() == 1) return found.front();
  const std::string box = place.root().string();
  if (found.empty()) {
    throw InventoryError(box + " has no unit and no record " + name + ". `spbox units " + quoted(box) +
                         "` lists the units, `spbox show " + quoted(box) + " UNIT` the records of one.");
  }
  throw InventoryError(box + " has the record " + name + " in several databases: it cannot be broken by its name.");
}

BrokenRecord break_record(const Place &place, const RecordName &record, Breakage breakage) {
  Hardware hardware(place);
  Database database(place.database(record.db_id));
  const std::optional<std::string> kept = hardware.get(whole_key(record));
  const std::optional<Bytes> now = database.get(record.name);
  if (!kept && !now) throw InventoryError(place.root().string() + " has no record " + record.name + ".");
  const Bytes whole = kept ? bytes_of(*kept) : *now;
  if (whole.empty() && breakage == Breakage::kShort) {
    throw InventoryError(place.root().string() + ": the record " + record.name + " is empty and cannot be shorter.");
  }
  // Kept first: whatever happens then, it can be mended.
  hardware.set(whole_key(record), std::string(whole.begin(), whole.end()));
  if (breakage == Breakage::kMissing) {
    database.remove(record.name);
    return {record, std::nullopt, whole.size()};
  }
  Bytes broken = whole;
  broken.resize(breakage == Breakage::kShort ? whole.size() - 1 : whole.size() + 1);
  database.put(record.name, broken);
  return {record, broken.size(), whole.size()};
}

std::vector<BrokenRecord> broken_records(const Place &place) {
  std::vector<BrokenRecord> broken;
  for (const auto &[key, whole] : Hardware(place).all()) {
    const std::optional<RecordName> record = record_of_key(key);
    if (!record) continue;
    const std::optional<Bytes> now = read(place, *record);
    broken.push_back({*record, now ? std::optional(now->size()) : std::nullopt, whole.size()});
  }
  return broken;
}

Mended mend_record(const Place &place, const RecordName &record) {
  Hardware hardware(place);
  const std::optional<std::string> whole = hardware.get(whole_key(record));
  if (!whole) return Mended::kWhole;
  Database database(place.database(record.db_id));
  const std::optional<Bytes> now = database.get(record.name);
  const bool rewritten = now && now->size() == whole->size();
  if (!rewritten) database.put(record.name, bytes_of(*whole));
  hardware.clear(whole_key(record));
  return rewritten ? Mended::kRewritten : Mended::kRestored;
}

}  // namespace box
