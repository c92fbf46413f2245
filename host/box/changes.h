// What is put under the lock of a database and not saved yet, and the room that it will take.
#pragma once

#include <lmdb.h>

#include <cstddef>
#include <map>
#include <optional>
#include <string>

#include "host/box/database.h"

namespace box {

// By key; nothing: the record is removed.
using Changes = std::map<std::string, std::optional<Bytes>, std::less<>>;

// The room that LMDB takes for the changes that are saved together.
class RoomForChanges {
 public:
  explicit RoomForChanges(std::size_t page) : page_(page) {}

  void add(const Changes &changes);
  void add(std::size_t key_size, std::size_t record_size);

  // In pages, and no fewer than it will be, where the records stand in this tree.
  std::size_t pages(const MDB_stat &tree) const;

 private:
  std::size_t page_, count_ = 0, in_tree_ = 0, beside_it_ = 0;
};

}  // namespace box
