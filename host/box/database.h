// One configuration database of a box: an LMDB environment whose lock is exclusive between processes.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/box/place.h"

namespace box {

using Bytes = std::vector<std::uint8_t>;

// Throws std::runtime_error, whose text names the database's folder and the reason, where a comment says "throws".
class Database {
 public:
  // Opens the environment in `folder`, and makes it where `create` is set. Throws.
  explicit Database(const std::filesystem::path &folder, bool create = false);
  ~Database();
  Database(const Database &) = delete;
  Database &operator=(const Database &) = delete;

  // Takes the lock, waiting a few seconds at most for another process that holds it. False when it is still held then, or
  // when this process holds it already. What is put under the lock becomes durable at unlock, together or not at all.
  bool lock(std::chrono::milliseconds patience = std::chrono::seconds(3));

  // False when this user does not hold the lock, or when the changes could not be made durable: then the lock and the
  // changes stay, and the next unlock tries again.
  bool unlock();
  bool locked() const;

  // Reads a record: what is put under this process's lock, or else what was last made durable. Throws.
  std::optional<Bytes> get(std::string_view key) const;

  // Writes or removes a record: under the lock that is held, or under one taken for this call. Throws; then nothing is
  // changed, and what was put before stays.
  void put(std::string_view key, std::span<const std::uint8_t> record);
  void remove(std::string_view key);

  // Calls `visit` with every key and record in key order. Throws.
  void each(const std::function<void(std::string_view, std::span<const std::uint8_t>)> &visit) const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace box
