// The LMDB environment behind a database: one in a process for each folder, however many users it has there.
#pragma once

#include <lmdb.h>
#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>

#include "host/box/changes.h"

namespace box {

class Environment {
 public:
  // The process's environment for `folder`. LMDB forbids a second one in a process, and a second descriptor of the lock
  // file would give the process's lock away when it is closed. Throws.
  static std::shared_ptr<Environment> in(const std::filesystem::path &folder, bool create);
  ~Environment();
  Environment(const Environment &) = delete;
  Environment &operator=(const Environment &) = delete;

  // A child of fork shares the parent's memory map and lock table slots: it must not touch them. Throws in such a child.
  void check_process() const;
  bool foreign() const;

  // The exclusion between processes. False when another process still has it when the patience is over.
  bool exclude(std::chrono::milliseconds patience) const;
  void admit() const;

  // Begins a transaction, for writing or for reading. Throws.
  MDB_txn *begin(unsigned flags) const;
  MDB_dbi records() const { return records_; }

  // "database /box/mgb/db/2: cannot WHAT: REASON. WAY OUT"
  std::runtime_error failure(const char *what, const std::string &reason) const;
  std::runtime_error failure(const char *what, int lmdb_result) const;

  const void *holder = nullptr;      // the user of this environment that has the lock
  std::unique_ptr<Changes> changes;  // under the lock

 private:
  Environment(std::filesystem::path folder, bool create);
  void open(bool create);
  void open_holder_file();
  void release();

  std::filesystem::path folder_;
  pid_t process_;
  MDB_env *env_ = nullptr;
  MDB_dbi records_ = 0;
  int holder_file_ = -1;
};

}  // namespace box
