#include "host/box/database.h"

#include <unistd.h>

#include <utility>

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
      : transaction_(environment.writing != nullptr ? environment.writing : environment.begin(MDB_RDONLY)),
        own_(transaction_ != environment.writing) {}
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

  // Ends the changes and the lock. LMDB frees the changes whatever the result.
  bool finish(bool keep) const {
    int result = 0;
    if (MDB_txn *changes = std::exchange(environment->writing, nullptr); changes != nullptr) {
      if (keep) {
        result = mdb_txn_commit(changes);
      } else {
        mdb_txn_abort(changes);
      }
    }
    if (result != 0) return false;
    environment->holder = nullptr;
    environment->admit();
    return true;
  }

  // Makes one change under the lock that this process holds, or under one taken for it.
  template <typename Change>
  void change(Database &self, const char *what, Change apply) const {
    environment->check_process();
    const bool own_lock = environment->holder == nullptr;
    if (own_lock && !self.lock()) {
      throw environment->failure(what, std::string("another process keeps it locked"));
    }
    int result = 0;
    try {
      if (environment->writing == nullptr) environment->writing = environment->begin(0);
      result = apply(environment->writing, environment->records());
    } catch (...) {
      if (own_lock) finish(false);
      throw;
    }
    if (own_lock && result != 0) finish(false);
    if (result != 0) throw environment->failure(what, result);
    if (own_lock && !self.unlock()) {
      finish(false);
      throw environment->failure(what, std::string("the change cannot be saved. Is the disk full?"));
    }
  }
};

Database::Database(const std::filesystem::path &folder, bool create)
    : state_(new State{Environment::in(folder, create)}) {}

Database::~Database() {
  const Environment &environment = *state_->environment;
  if (environment.holder == this && !environment.foreign()) state_->finish(false);
}

bool Database::lock(std::chrono::milliseconds patience) {
  Environment &environment = *state_->environment;
  if (environment.foreign() || environment.holder != nullptr || !environment.exclude(patience)) return false;
  try {
    environment.writing = environment.begin(0);
  } catch (const std::runtime_error &) {
    environment.admit();
    return false;
  }
  environment.holder = this;
  return true;
}

bool Database::unlock() {
  return locked() && state_->finish(true);
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
  MDB_val name = value_of(key.data(), key.size());
  MDB_val value = value_of(record.data(), record.size());
  state_->change(*this, ("write '" + std::string(key) + "'").c_str(),
                 [&](MDB_txn *changes, MDB_dbi records) { return mdb_put(changes, records, &name, &value, 0); });
}

void Database::remove(std::string_view key) {
  MDB_val name = value_of(key.data(), key.size());
  state_->change(*this, ("remove '" + std::string(key) + "'").c_str(), [&](MDB_txn *changes, MDB_dbi records) {
    int result = mdb_del(changes, records, &name, nullptr);
    return result == MDB_NOTFOUND ? 0 : result;
  });
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
