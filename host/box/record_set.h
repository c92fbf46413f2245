// The records of one database while they are looked at or changed: each read once, changed in a copy, saved together.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "host/box/database.h"
#include "host/box/place.h"

namespace box {

// Takes a database's lock, or makes what was put under the locks of several durable together and gives them back. Both
// throw BoxError with the reason and the way out; what could not be saved is dropped with the databases.
void lock(Database &database);
void save(const std::vector<Database *> &databases);

class RecordSet {
 public:
  RecordSet(const Place &place, std::uint32_t db_id);

  // Why a record that should have this size cannot be read, such as "record current_psu_info is 3359 bytes, should be
  // 3360"; empty when it can. Throws where the database itself fails.
  std::string complaint(const std::string &name, std::size_t size);

  // The record. Throws BoxError with the complaint and the way out.
  Bytes &at(const std::string &name, std::size_t size);

  // From lock to save no other process reads or writes under a lock. Throws BoxError.
  void lock();

  // The database with all changes put under its lock, to be saved.
  Database &changed();

 private:
  const std::optional<Bytes> &read(const std::string &name);

  Place place_;
  Database database_;
  std::map<std::string, std::optional<Bytes>> records_;
};

}  // namespace box
