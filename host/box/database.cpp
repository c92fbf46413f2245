#include "host/box/database.h"

#include <algorithm>
#include <utility>

#include "host/box/store.h"

namespace box {

struct Database::State {
  DatabaseName name;
  std::shared_ptr<Store> store;

  Store::Slot &slot() const { return store->slots.at(name.number); }
  std::runtime_error failure(const std::string &what, const std::string &why) const {
    return std::runtime_error(name.text() + ": cannot " + what + ": " + why);
  }

  // Gives the lock back. What was put under it and is not saved is dropped.
  void release() const {
    slot().changes.clear();
    slot().holder = nullptr;
    store->admit(name.number);
  }

  // Makes one change under the lock that this process holds, or under one taken for it.
  void change(Database &self, const std::string &what, std::string_view key, std::optional<Bytes> record) const {
    store->check_process();
    store->check_record(key, record ? record->size() : 0);
    if (slot().holder != nullptr) {
      slot().changes.insert_or_assign(std::string(key), std::move(record));
      return;
    }
    if (!self.lock()) throw failure(what + " '" + std::string(key) + "'", "another process keeps it locked");
    try {
      slot().changes.insert_or_assign(std::string(key), std::move(record));
      unlock_together({&self});
    } catch (...) {
      release();
      throw;
    }
  }
};

Database::Database(DatabaseName name, bool create) : state_(new State{std::move(name), nullptr}) {
  state_->store = Store::in(state_->name.folder, create);
}

Database::~Database() {
  if (state_->slot().holder == this && !state_->store->foreign()) state_->release();
}

const DatabaseName &Database::name() const {
  return state_->name;
}

bool Database::lock(std::chrono::milliseconds patience) {
  state_->store->check_process();
  if (state_->slot().holder != nullptr) return false;
  if (!state_->store->exclude(state_->name.number, patience)) return false;
  state_->slot().holder = this;
  return true;
}

bool Database::unlock() {
  if (!locked()) return false;
  try {
    unlock_together({this});
    return true;
  } catch (const std::runtime_error &) {
    return false;
  }
}

bool Database::locked() const {
  return state_->slot().holder == this && !state_->store->foreign();
}

void Database::unlock_together(const std::vector<Database *> &databases) {
  std::vector<std::uint32_t> numbers;
  for (const Database *database : databases) {
    if (!database->locked()) throw database->state_->failure("save the changes", "it is not locked");
    numbers.push_back(database->state_->name.number);
  }
  if (numbers.empty()) return;
  databases.front()->state_->store->save(numbers);
  std::vector<Database *> descending = databases;  // as everybody gives locks back
  std::ranges::sort(descending, std::greater(), [](const Database *database) { return database->name().number; });
  for (const Database *database : descending) database->state_->release();
}

std::optional<Bytes> Database::get(std::string_view key) const {
  state_->store->check_process();
  const Changes &changes = state_->slot().changes;
  if (const auto changed = changes.find(key); changed != changes.end()) return changed->second;
  return state_->store->get(state_->name.number, key);
}

void Database::put(std::string_view key, std::span<const std::uint8_t> record) {
  state_->change(*this, "write", key, Bytes(record.begin(), record.end()));
}

void Database::remove(std::string_view key) {
  state_->change(*this, "remove", key, std::nullopt);
}

void Database::each(const std::function<void(std::string_view, std::span<const std::uint8_t>)> &visit) const {
  state_->store->check_process();
  const std::uint32_t number = state_->name.number;
  Records records = std::move(state_->store->all(number, number).at(number));
  for (const auto &[key, record] : state_->slot().changes) {
    if (record) {
      records.insert_or_assign(key, *record);
    } else {
      records.erase(key);
    }
  }
  for (const auto &[key, record] : records) visit(key, record);
}

std::array<Database::Records, kStoreSize> Database::all_in(const std::filesystem::path &folder) {
  return Store::in(folder, false)->all(0, kOwnDatabase);
}

}  // namespace box
