#include "host/box/record_set.h"

#include "host/box/advice.h"
#include "host/box/contents.h"

namespace box {

void lock(Database &database) {
  if (database.lock()) return;
  throw BoxError(database.name().text() +
                 " is locked by another process. Try again when the command in the box has done its step.");
}

void save(const std::vector<Database *> &databases) {
  try {
    Database::unlock_together(databases);
  } catch (const std::runtime_error &error) {
    throw BoxError(std::string("nothing was changed: ") + error.what());
  }
}

RecordSet::RecordSet(const Place &place, std::uint32_t db_id) : place_(place), database_(place.database(db_id)) {}

const std::optional<Bytes> &RecordSet::read(const std::string &name) {
  const auto known = records_.find(name);
  if (known != records_.end()) return known->second;
  return records_.emplace(name, database_.get(name)).first->second;
}

std::string RecordSet::complaint(const std::string &name, std::size_t size) {
  const std::optional<Bytes> &record = read(name);
  if (!record) return "record " + name + " is missing";
  if (record->size() == size) return "";
  return "record " + name + " is " + std::to_string(record->size()) + " bytes, should be " + std::to_string(size);
}

Bytes &RecordSet::at(const std::string &name, std::size_t size) {
  const std::string why = complaint(name, size);
  if (!why.empty()) {
    const std::string box = place_.root().string();
    throw BoxError(box + ": " + why + ". " + advice({"mend", box}) + " mends what " + advice({"break"}) + " broke.");
  }
  return *records_.find(name)->second;
}

void RecordSet::lock() {
  box::lock(database_);
}

Database &RecordSet::changed() {
  for (const auto &[name, record] : records_) {
    if (record) database_.put(name, *record);
  }
  return database_;
}

}  // namespace box
