#include "host/sweep/checkpoint.h"

#include <cstdint>
#include <fstream>
#include <system_error>

#include "host/base/remove_tree.h"

namespace sweep {
namespace {

namespace fs = std::filesystem;

constexpr const char *kBox = "box", *kAhead = "ahead";

[[noreturn]] void throw_no_room(const fs::path &path) {
  throw fs::filesystem_error("cannot write", path, std::make_error_code(std::errc::no_space_on_device));
}

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
    fs::create_directory(copy);
    copy_box(found.place, box::Place(copy / kBox));
    if (!(std::ofstream(copy / kAhead) << found.ahead.count() << std::flush)) throw_no_room(copy);
    fs::rename(copy, kept(command));
  } catch (const fs::filesystem_error &) {
    base::remove_tree(copy);
  }
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
