#include "host/sweep/checkpoint.h"

#include <cstdint>
#include <fstream>
#include <stdexcept>

#include "host/base/remove_tree.h"
#include "host/box/points.h"

namespace sweep {
namespace {

namespace fs = std::filesystem;

constexpr const char *kBox = "box", *kAhead = "ahead";

// The page of the box's time is its keeper's, which is another one at the replay. A socket is of a process.
void copy_box(const box::Place &from, const box::Place &to) {
  fs::create_directory(to.root(), from.root());
  for (const fs::directory_entry &entry : fs::recursive_directory_iterator(from.root())) {
    const fs::path copy = to.root() / entry.path().lexically_relative(from.root());
    if (entry.is_symlink()) {
      fs::copy_symlink(entry.path(), copy);
    } else if (entry.is_directory()) {
      fs::create_directory(copy, entry.path());
    } else if (entry.is_regular_file() && entry.path() != from.clock()) {
      fs::copy_file(entry.path(), copy);
    }
  }
}

}  // namespace

void Checkpoints::keep(std::size_t command, const Found &found) const {
  const fs::path copy = kept(command).string() + ".part";
  try {
    const box::Place box(copy / kBox);
    fs::create_directory(copy);
    copy_box(found.place, box);
    box::forget_order(box);  // a replay that needs it keeps its own
    if (std::ofstream(copy / kAhead) << found.ahead.count() << std::flush) return fs::rename(copy, kept(command));
  } catch (const std::runtime_error &) {  // there is no room
  }
  base::remove_tree(copy);
}

bool Checkpoints::has(std::size_t command) const {
  return fs::is_directory(kept(command));
}

std::chrono::nanoseconds Checkpoints::restore(std::size_t command, const box::Place &place) const {
  copy_box(box::Place(kept(command) / kBox), place);
  std::int64_t ahead = 0;
  std::ifstream(kept(command) / kAhead) >> ahead;
  return std::chrono::nanoseconds(ahead);
}

}  // namespace sweep
