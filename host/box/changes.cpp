#include "host/box/changes.h"

#include <algorithm>

namespace box {

// A small record stands in a page of the tree, in less than half of it; a large one in pages of its own.
void RoomForChanges::add(std::size_t key_size, std::size_t record_size) {
  constexpr std::size_t kOfANode = 32;
  const bool is_small = key_size + record_size + kOfANode <= page_ / 2;
  ++count_;
  in_tree_ += key_size + kOfANode + (is_small ? record_size : 0);
  beside_it_ += is_small ? 0 : record_size / page_ + 1;
}

void RoomForChanges::add(const Changes &changes) {
  for (const auto &[key, record] : changes) add(key.size(), record ? record->size() : 0);
}

// LMDB copies a page of the tree before the first change of it. It may split a page behind its last record, and leaves pages at
// least a quarter full otherwise. One change touches the pages on the way from the root, and may split each.
std::size_t RoomForChanges::pages(const MDB_stat &tree) const {
  constexpr std::size_t kOfAChange = 8;
  const std::size_t copied_and_split = 2 * (tree.ms_branch_pages + tree.ms_leaf_pages);
  return beside_it_ + std::min(kOfAChange * count_, copied_and_split + 4 * in_tree_ / page_ + kOfAChange);
}

}  // namespace box
