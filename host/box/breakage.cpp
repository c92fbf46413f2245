#include "host/box/breakage.h"

#include <map>
#include <memory>

#include "host/box/advice.h"
#include "host/box/contents.h"
#include "host/box/record_set.h"
#include "host/box/text_database.h"

namespace box {
namespace {

constexpr std::string_view kKey = "whole ";

std::optional<Bytes> read(const Place &place, const RecordName &record) {
  return Database(place.database(record.db_id)).get(record.name);
}

// No way of breaking leaves a record its size: one of the right size was written by a command since.
bool is_rewritten(const Bytes &kept, const std::optional<Bytes> &now) {
  return now && now->size() == kept.size();
}

// What is to be had again when the record is mended.
std::optional<Bytes> whole_record(const std::optional<Bytes> &kept, const std::optional<Bytes> &now) {
  return kept && !is_rewritten(*kept, now) ? kept : now;
}

// The databases of these records and the box's own, locked from the first look to the last change: no command writes in
// between.
class Locked {
 public:
  Locked(const Place &place, const std::vector<RecordName> &records) : place_(place) {
    for (const RecordName &record : records) databases_[record.db_id] = nullptr;
    databases_[kOwnDatabase] = nullptr;
    for (auto &[number, database] : databases_) {
      database = std::make_unique<Database>(place.database(number));
      lock(*database);
    }
  }

  BrokenRecord break_one(const RecordName &record, Breakage breakage) {
    Database &database = *databases_.at(record.db_id);
    const std::optional<Bytes> whole = whole_record(kept(record), database.get(record.name));
    if (!whole) throw BoxError(place_.root().string() + " has no record " + record.name + ".");
    if (whole->empty() && breakage == Breakage::kShort) {
      throw BoxError(place_.root().string() + ": the record " + record.name + " is empty and cannot be shorter.");
    }
    own().put(whole_key(record), *whole);
    if (breakage == Breakage::kMissing) {
      database.remove(record.name);
      return {record, std::nullopt, whole->size()};
    }
    Bytes bytes = *whole;
    bytes.resize(breakage == Breakage::kShort ? whole->size() - 1 : whole->size() + 1);
    database.put(record.name, bytes);
    return {record, bytes.size(), whole->size()};
  }

  Mended mend_one(const RecordName &record) {
    Database &database = *databases_.at(record.db_id);
    const std::optional<Bytes> whole = kept(record);
    if (!whole) return Mended::kWhole;
    const bool rewritten = is_rewritten(*whole, database.get(record.name));
    if (!rewritten) database.put(record.name, *whole);
    own().remove(whole_key(record));
    return rewritten ? Mended::kRewritten : Mended::kRestored;
  }

  void save() {
    std::vector<Database *> all;
    for (auto &[number, database] : databases_) all.push_back(database.get());
    box::save(all);
  }

 private:
  Database &own() { return *databases_.at(kOwnDatabase); }
  std::optional<Bytes> kept(const RecordName &record) { return own().get(whole_key(record)); }

  const Place &place_;
  std::map<std::uint32_t, std::unique_ptr<Database>> databases_;  // in the order in which everybody locks them
};

std::vector<RecordName> records_named(const Place &place, const std::string &name) {
  const TextDatabase kept(place);
  std::vector<RecordName> found;
  for (std::uint32_t db_id = 0; db_id < kDatabaseCount; ++db_id) {
    const RecordName record{db_id, name};
    if (read(place, record) || kept.get(whole_key(record))) found.push_back(record);
  }
  return found;
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

bool has_record(const Place &place, const std::string &name) {
  return !records_named(place, name).empty();
}

RecordName find_record(const Place &place, const std::string &name) {
  const std::vector<RecordName> found = records_named(place, name);
  if (found.size() == 1) return found.front();
  const std::string box = place.root().string();
  if (found.empty()) {
    throw BoxError(box + " has no unit and no record " + name + ". " + advice({"units", box}) + " lists the units, " +
                   advice({"show", box, "UNIT"}) + " the records of one.");
  }
  throw BoxError(box + " has the record " + name + " in several databases: it cannot be broken by its name.");
}

std::vector<BrokenRecord> break_records(const Place &place, const std::vector<RecordName> &records, Breakage breakage) {
  Locked databases(place, records);
  std::vector<BrokenRecord> broken;
  for (const RecordName &record : records) broken.push_back(databases.break_one(record, breakage));
  databases.save();
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

std::vector<Mended> mend_records(const Place &place, const std::vector<RecordName> &records) {
  Locked databases(place, records);
  std::vector<Mended> mended;
  for (const RecordName &record : records) mended.push_back(databases.mend_one(record));
  databases.save();
  return mended;
}

}  // namespace box
