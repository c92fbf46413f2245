// The changes under a database's lock: a transaction, and what it takes to make them once more.
#pragma once

#include <lmdb.h>

#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "host/box/database.h"

namespace box {

class Environment;

// LMDB ends a transaction that it cannot save, and spoils one in which a change failed. The changes are kept here as well,
// so that neither loses what was put before: the next use begins a transaction anew and makes them again.
class Changes {
 public:
  explicit Changes(const Environment &environment);  // throws where LMDB begins no transaction
  ~Changes();
  Changes(const Changes &) = delete;
  Changes &operator=(const Changes &) = delete;

  MDB_txn *transaction();  // with all changes until now. Throws.

  // A change that throws is none; those before it stay.
  void put(std::string_view key, std::span<const std::uint8_t> record);
  void remove(std::string_view key);

  // Makes the changes durable, all or none. False when that failed: they are still to be committed.
  bool commit();

 private:
  int apply(const std::string &key, const std::optional<Bytes> &record) const;
  void make(const char *what, std::string_view key, std::optional<Bytes> record);
  void drop();

  const Environment &environment_;
  MDB_txn *transaction_;
  std::map<std::string, std::optional<Bytes>> made_;  // by key; nothing: removed
};

}  // namespace box
