// The files behind a box's databases: one LMDB environment for all of them, and a file whose bytes are their locks. A process
// has one of it for each folder, however many users it has there.
#pragma once

#include <lmdb.h>
#include <sys/types.h>

#include <array>
#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "host/box/changes.h"
#include "host/box/data_file.h"
#include "host/box/database.h"
#include "host/box/gate.h"
#include "host/box/lock_file.h"

namespace box {

class Store {
 public:
  // The process's store for `folder`. Closing a second descriptor of the lock file would give the process's locks away.
  // Throws.
  static std::shared_ptr<Store> in(const std::filesystem::path &folder, bool create);
  ~Store();
  Store(const Store &) = delete;
  Store &operator=(const Store &) = delete;

  // A child of fork does not have its parent's locks: it must not use what its parent opened. Throws in such a child.
  void check_process() const;
  bool foreign() const;

  // The exclusion between processes, from one database. False when another process still has it when the patience is over.
  // Throws where it cannot be had for another reason.
  bool exclude(std::uint32_t number, std::chrono::milliseconds patience) const;
  void admit(std::uint32_t number) const;

  // What was last saved. Both throw.
  std::optional<Bytes> get(std::uint32_t number, std::string_view key);
  std::array<Database::Records, kStoreSize> all(std::uint32_t first,
                                                std::uint32_t last);  // of these databases, at one moment

  // Makes the changes of these databases durable, all or none. Throws.
  void save(std::span<const std::uint32_t> numbers);

  // Throws where no store can hold such a record.
  void check_record(std::string_view key, std::size_t size) const;

  struct Slot {
    const void *holder = nullptr;  // the user of this database that has its lock
    Changes changes;               // under the lock
  };
  std::array<Slot, kStoreSize> slots;

 private:
  class Reading;

  Store(const std::filesystem::path &folder, bool create, KnownSave &known);
  void open(bool create);
  void open_with_lmdb();
  void release();
  void check_open(const Gate &gate) const;  // throws
  void make_room(off_t size, std::span<const std::uint32_t> numbers) const;
  std::uint64_t put(MDB_txn *transaction, std::uint32_t number) const;
  void put_all(MDB_txn *transaction, std::span<const std::uint32_t> numbers);

  DataFile file_;
  pid_t process_;
  MDB_env *env_ = nullptr;
  MDB_txn *reader_ = nullptr;  // kept between two readings
  MDB_dbi records_ = 0;
  LockFile locks_;
  unsigned readings_ = 0;
};

}  // namespace box
