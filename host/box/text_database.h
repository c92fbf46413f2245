// The box's own database: texts under readable keys, such as "blink" under "led /PSU#0".
#pragma once

#include <map>
#include <optional>
#include <string>

#include "host/box/database.h"
#include "host/box/place.h"

namespace box {

// Every function throws where the database fails.
class TextDatabase {
 public:
  explicit TextDatabase(const Place &place);

  std::optional<std::string> get(const std::string &key) const;
  void set(const std::string &key, const std::string &value);
  void clear(const std::string &key);

  // Sets a key and returns what it was, in one step: of several processes that do this at a time, each gets what the one
  // before it has set. An empty value is none.
  std::string exchange(const std::string &key, const std::string &value);

  // From lock to unlock no other process changes any of it, and what is not unlocked is undone with the object. Whoever
  // takes the lock of a configuration database too takes that one first, and saves both together.
  void lock();
  void unlock();
  Database &database() { return database_; }

  std::map<std::string, std::string> all() const;

 private:
  Database database_;
};

}  // namespace box
