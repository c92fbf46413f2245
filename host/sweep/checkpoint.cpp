#include "host/sweep/checkpoint.h"

#include "host/base/remove_tree.h"

namespace sweep {
namespace {

namespace fs = std::filesystem;

// The time of a box is that of its keeper: the page of one that is gone tells nobody anything. A socket is of a process.
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

void Checkpoints::keep(std::size_t command, const box::Place &place) const {
  const box::Place copy(kept(command).root().string() + ".part");
  try {
    copy_box(place, copy);
    fs::rename(copy.root(), kept(command).root());
  } catch (const fs::filesystem_error &) {
    base::remove_tree(copy.root());
  }
}

bool Checkpoints::has(std::size_t command) const {
  return fs::is_directory(kept(command).root());
}

void Checkpoints::restore(std::size_t command, const box::Place &place) const {
  copy_box(kept(command), place);
}

}  // namespace sweep
