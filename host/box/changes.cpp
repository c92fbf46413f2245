#include "host/box/changes.h"

#include <stdexcept>
#include <utility>

#include "host/box/environment.h"

namespace box {

Changes::Changes(const Environment &environment) : environment_(environment), transaction_(environment.begin(0)) {}

// A child of fork leaves the transaction alone: it is the parent's.
Changes::~Changes() {
  if (!environment_.foreign()) drop();
}

void Changes::drop() {
  if (transaction_ != nullptr) mdb_txn_abort(std::exchange(transaction_, nullptr));
}

MDB_txn *Changes::transaction() {
  if (transaction_ != nullptr) return transaction_;
  transaction_ = environment_.begin(0);
  for (const auto &[key, record] : made_) {
    if (const int result = apply(key, record); result != 0) {
      drop();
      throw environment_.failure(("write '" + key + "'").c_str(), result);
    }
  }
  return transaction_;
}

int Changes::apply(const std::string &key, const std::optional<Bytes> &record) const {
  // LMDB only reads through the values that it is given.
  MDB_val name{key.size(), const_cast<char *>(key.data())};
  if (record) {
    MDB_val value{record->size(), const_cast<std::uint8_t *>(record->data())};
    return mdb_put(transaction_, environment_.records(), &name, &value, 0);
  }
  const int result = mdb_del(transaction_, environment_.records(), &name, nullptr);
  return result == MDB_NOTFOUND ? 0 : result;
}

void Changes::make(const char *what, std::string_view key, std::optional<Bytes> record) {
  const std::string name(key);
  transaction();
  if (const int result = apply(name, record); result != 0) {
    drop();
    throw environment_.failure((what + (" '" + name + "'")).c_str(), result);
  }
  made_[name] = std::move(record);
}

void Changes::put(std::string_view key, std::span<const std::uint8_t> record) {
  make("write", key, Bytes(record.begin(), record.end()));
}

void Changes::remove(std::string_view key) {
  make("remove", key, std::nullopt);
}

bool Changes::commit() {
  try {
    transaction();
  } catch (const std::runtime_error &) {
    return false;
  }
  if (mdb_txn_commit(std::exchange(transaction_, nullptr)) != 0) return false;
  made_.clear();
  return true;
}

}  // namespace box
