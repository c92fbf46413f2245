// One configuration database of a box: records by name, and a lock that is exclusive between processes.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/box/place.h"

namespace box {

using Bytes = std::vector<std::uint8_t>;

// How long a command waits for a lock that another process holds.
inline constexpr std::chrono::seconds kLockPatience{3};

// Throws std::runtime_error, whose text names the database and the reason, where a comment says "throws".
class Database {
 public:
  // Opens the database, and makes the files of its folder where `create` is set. Throws.
  explicit Database(DatabaseName name, bool create = false);
  ~Database();
  Database(const Database &) = delete;
  Database &operator=(const Database &) = delete;

  const DatabaseName &name() const;

  // Takes the lock, waiting a few seconds at most for another process that holds it. False when it is still held then, or
  // when this process holds it already. Throws where it cannot be had for another reason. What is put under the lock becomes
  // durable at unlock, together or not at all.
  bool lock(std::chrono::milliseconds patience = kLockPatience);

  // Makes the changes durable and gives the lock back. False when this user does not hold the lock, or when the changes
  // could not be made durable: then the lock and the changes stay, and the next unlock tries again.
  bool unlock();
  bool locked() const;

  // The same for several databases of one box: all changes become durable, or none. Throws; then all locks and changes
  // stay.
  static void unlock_together(const std::vector<Database *> &databases);

  // Reads a record: what is put under this process's lock, or else what was last made durable. Throws.
  std::optional<Bytes> get(std::string_view key) const;

  // Writes or removes a record: under the lock that is held, or under one taken for this call. Throws; then nothing is
  // changed, and what was put before stays.
  void put(std::string_view key, std::span<const std::uint8_t> record);
  void remove(std::string_view key);

  // Calls `visit` with every key and record in key order, as they are at one moment. Throws.
  void each(const std::function<void(std::string_view, std::span<const std::uint8_t>)> &visit) const;

  // The records of all databases in this folder by their numbers, as they are at one moment. Throws.
  using Records = std::map<std::string, Bytes, std::less<>>;
  static std::array<Records, kStoreSize> all_in(const std::filesystem::path &folder);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace box
