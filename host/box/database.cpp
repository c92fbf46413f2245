#include "host/box/database.h"

#include <unistd.h>

#include <utility>

#include "host/box/changes.h"
#include "host/box/environment.h"

namespace box {
namespace {

MDB_val value_of(const void *data, std::size_t size) {
  return {size, const_cast<void *>(data)};  // LMDB only reads through the values that it is given
}

std::span<const std::uint8_t> bytes_of(const MDB_val &value) {
  return {static_cast<const std::uint8_t *>(value.mv_data), value.mv_size};
}

// The changes under the process's own lock, or else a transaction that sees what was last made durable.
class Reading {
 public:
  explicit Reading(const Environment &environment)
      : transaction_(environment.changes ? environment.changes->transaction() : environment.begin(MDB_RDONLY)),
        own_(!environment.changes) {}
  ~Reading() {
    if (own_) mdb_txn_abort(transaction_);
  }
  Reading(const Reading &) = delete;
  Reading &operator=(const Reading &) = delete;

  MDB_txn *transaction() const { return transaction_; }

 private:
  MDB_txn *transaction_;
  bool own_;
};

class Cursor {
 public:
  Cursor(const Environment &environment, MDB_txn *transaction) {
    if (int result = mdb_cursor_open(transaction, environment.records(), &cursor_); result != 0) {
      throw environment.failure("list", result);
    }
  }
  ~Cursor() { mdb_cursor_close(cursor_); }
  Cursor(const Cursor &) = delete;
  Cursor &operator=(const Cursor &) = delete;

  int next(MDB_val *key, MDB_val *record) const { return mdb_cursor_get(cursor_, key, record, MDB_NEXT); }

 private:
  MDB_cursor *cursor_ = nullptr;
};

}  // namespace

struct Database::State {
  std::shared_ptr<Environment> environment;

  // Gives the lock back. What was put under it and is not committed is dropped.
  void release() const {
    environment->changes.reset();
    environment->holder = nullptr;
    environment->admit();
  }

  // Makes one change under the lock that this process holds, or under one taken for it.
  template <typename Change>
  void change(Database &self, const std::string &what, std::string_view key, Change apply) const {
    environment->check_process();
    if (environment->holder != nullptr) return apply(*environment->changes);
    const auto failure = [&](const char *why) {
      return environment->failure((what + " '" + std::string(key) + "'").c_str(), std::string(why));
    };
    if (!self.lock()) throw failure("another process keeps it locked");
    try {
      apply(*environment->changes);
      if (!self.unlock()) throw failure("the change cannot be saved. Is the disk full?");
    } catch (...) {
      release();
      throw;
    }
  }
};

Database::Database(const std::filesystem::path &folder, bool create)
    : state_(new State{Environment::in(folder, create)}) {}

Database::~Database() {
  const Environment &environment = *state_->environment;
  if (environment.holder == this && !environment.foreign()) state_->release();
}

bool Database::lock(std::chrono::milliseconds patience) {
  Environment &environment = *state_->environment;
  if (environment.foreign() || environment.holder != nullptr || !environment.exclude(patience)) return false;
  try {
    environment.changes = std::make_unique<Changes>(environment);
  } catch (const std::runtime_error &) {
    environment.admit();
    return false;
  }
  environment.holder = this;
  return true;
}

bool Database::unlock() {
  if (!locked() || !state_->environment->changes->commit()) return false;
  state_->release();
  return true;
}

bool Database::locked() const {
  return state_->environment->holder == this && !state_->environment->foreign();
}

std::optional<Bytes> Database::get(std::string_view key) const {
  const Environment &environment = *state_->environment;
  environment.check_process();
  Reading reading(environment);
  MDB_val name = value_of(key.data(), key.size());
  MDB_val record{};
  int result = mdb_get(reading.transaction(), environment.records(), &name, &record);
  if (result == MDB_NOTFOUND) return std::nullopt;
  if (result != 0) throw environment.failure(("read '" + std::string(key) + "'").c_str(), result);
  std::span<const std::uint8_t> bytes = bytes_of(record);
  return Bytes(bytes.begin(), bytes.end());
}

void Database::put(std::string_view key, std::span<const std::uint8_t> record) {
  state_->change(*this, "write", key, [&](Changes &changes) { changes.put(key, record); });
}

void Database::remove(std::string_view key) {
  state_->change(*this, "remove", key, [&](Changes &changes) { changes.remove(key); });
}

void Database::each(const std::function<void(std::string_view, std::span<const std::uint8_t>)> &visit) const {
  const Environment &environment = *state_->environment;
  environment.check_process();
  Reading reading(environment);
  Cursor cursor(environment, reading.transaction());
  MDB_val key{};
  MDB_val record{};
  int result = 0;
  while ((result = cursor.next(&key, &record)) == 0) {
    visit({static_cast<const char *>(key.mv_data), key.mv_size}, bytes_of(record));
  }
  if (result != MDB_NOTFOUND) throw environment.failure("list", result);
}

}  // namespace box
