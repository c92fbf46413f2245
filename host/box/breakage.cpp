#include "host/box/breakage.h"

#include "host/box/advice.h"
#include "host/box/contents.h"

#include "host/box/record_set.h"
#include "host/box/text_database.h"

namespace box {
namespace {

constexpr std::string_view kKey = "whole ";

Bytes bytes_of(const std::string &text) {
  return {text.begin(), text.end()};
}

std::optional<Bytes> read(const Place &place, const RecordName &record) {
  return Database(place.database(record.db_id)).get(record.name);
}

// No way of breaking leaves a record its size: one of the right size was written by a command since.
bool is_rewritten(const std::string &kept, const std::optional<Bytes> &now) {
  return now && now->size() == kept.size();
}

// What is to be had again when the record is mended.
std::optional<Bytes> whole_record(const std::optional<std::string> &kept, const std::optional<Bytes> &now) {
  return kept && !is_rewritten(*kept, now) ? bytes_of(*kept) : now;
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
  const TextDatabase kept(place);
  std::vector<RecordName> found;
  for (std::uint32_t db_id = 0; db_id < kDatabaseCount; ++db_id) {
    const RecordName record{db_id, name};
    if (read(place, record) || kept.get(whole_key(record))) found.push_back(record);
  }
  if (found.size() == 1) return found.front();
  const std::string box = place.root().string();
  if (found.empty()) {
    throw InventoryError(box + " has no unit and no record " + name + ". " + advice({"units", box}) +
                         " lists the units, " + advice({"show", box, "UNIT"}) + " the records of one.");
  }
  throw InventoryError(box + " has the record " + name + " in several databases: it cannot be broken by its name.");
}

// Under the record database's lock from the first look to the last change: no command writes in between.
BrokenRecord break_record(const Place &place, const RecordName &record, Breakage breakage) {
  TextDatabase kept(place);
  Database database(place.database(record.db_id));
  lock(database, place.database(record.db_id));
  const std::optional<Bytes> whole = whole_record(kept.get(whole_key(record)), database.get(record.name));
  if (!whole) throw InventoryError(place.root().string() + " has no record " + record.name + ".");
  if (whole->empty() && breakage == Breakage::kShort) {
    throw InventoryError(place.root().string() + ": the record " + record.name + " is empty and cannot be shorter.");
  }
  // Kept first: whatever happens then, it can be mended.
  kept.set(whole_key(record), std::string(whole->begin(), whole->end()));
  BrokenRecord broken{record, std::nullopt, whole->size()};
  if (breakage == Breakage::kMissing) {
    database.remove(record.name);
  } else {
    Bytes bytes = *whole;
    bytes.resize(breakage == Breakage::kShort ? whole->size() - 1 : whole->size() + 1);
    database.put(record.name, bytes);
    broken.size = bytes.size();
  }
  save(database, place.database(record.db_id));
  return broken;
}

std::vector<BrokenRecord> broken_records(const Place &place) {
  std::vector<BrokenRecord> broken;
  for (const auto &[key, whole] : TextDatabase(place).all()) {
    const std::optional<RecordName> record = record_of_key(key);
    if (!record) continue;
    const std::optional<Bytes> now = read(place, *record);
    broken.push_back({*record, now ? std::optional(now->size()) : std::nullopt, whole.size()});
  }
  return broken;
}

Mended mend_record(const Place &place, const RecordName &record) {
  TextDatabase kept(place);
  Database database(place.database(record.db_id));
  lock(database, place.database(record.db_id));
  const std::optional<std::string> whole = kept.get(whole_key(record));
  if (!whole) return Mended::kWhole;
  const bool rewritten = is_rewritten(*whole, database.get(record.name));
  if (!rewritten) database.put(record.name, bytes_of(*whole));
  save(database, place.database(record.db_id));
  kept.clear(whole_key(record));
  return rewritten ? Mended::kRewritten : Mended::kRestored;
}

}  // namespace box
