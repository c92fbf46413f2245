#include "host/spbox/new_box.h"

#include <initializer_list>
#include <string>
#include <system_error>
#include <vector>

#include "host/spbox/occupancy.h"

namespace spbox {
namespace {

namespace fs = std::filesystem;

// A folder is replaced only when it is a box, and nothing in it is removed but what makes it one.
void check_room(const box::Place &place, bool force) {
  const fs::path &folder = place.root();
  if (!fs::exists(folder)) return;
  if (!fs::is_directory(folder)) {
    throw box::InventoryError(folder.string() + " is a file. Give a folder that does not exist yet.");
  }
  if (fs::is_empty(folder)) return;
  if (!box::is_box(place)) {
    throw box::InventoryError(folder.string() + " is a folder with other things in it. Give one that does not exist " +
                              "yet, or an empty one.");
  }
  if (!force) {
    throw box::InventoryError(folder.string() +
                              " is a box already. --force makes it anew, and all that it holds is lost.");
  }
}

void make_first(const box::Place &place, const box::Contents &contents) {
  const bool existed = fs::exists(place.root());
  try {
    box::create_box(place, contents);
  } catch (const std::exception &) {
    std::error_code ignored;  // what was wrong is said already
    fs::remove_all(place.root() / "mgb", ignored);
    fs::remove_all(place.tmp(), ignored);
    if (!existed) fs::remove(place.root(), ignored);
    throw;
  }
}

// A folder in the box's own, so that its parts can be renamed into it, and nothing once this is gone. What was left by
// a process that was killed goes first.
class Workshop {
 public:
  explicit Workshop(const box::Place &place) : folder_(place.root() / ".made-anew") { fs::remove_all(folder_); }
  ~Workshop() {
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
  }
  Workshop(const Workshop &) = delete;
  Workshop &operator=(const Workshop &) = delete;

  fs::path operator/(const char *name) const { return folder_ / name; }

 private:
  fs::path folder_;
};

// Renames one after the other; where one cannot be, the ones before get their old names again.
class Renames {
 public:
  struct Row {
    fs::path from, to;
  };

  explicit Renames(std::initializer_list<Row> rows) {
    for (const Row &row : rows) {
      std::error_code error;
      fs::rename(row.from, row.to, error);
      if (error) {
        undo();
        throw fs::filesystem_error("rename", row.from, row.to, error);
      }
      done_.push_back(row);
    }
  }

 private:
  void undo() {
    for (; !done_.empty(); done_.pop_back()) {
      std::error_code ignored;
      fs::rename(done_.back().to, done_.back().from, ignored);
    }
  }

  std::vector<Row> done_;
};

// The new box is whole before the old one goes. Commands wait for the folder mgb: it goes first and comes last.
void make_anew(const box::Place &place, const box::Contents &contents) {
  const EmptyBox kept_empty(place);
  const Workshop workshop(place);
  const box::Place made(workshop / "new");
  const fs::path old = workshop / "old", mgb = place.root() / "mgb";
  try {
    box::create_box(made, contents);
    fs::create_directories(old);
    fs::create_directories(place.tmp());  // which a user may have removed
    Renames({{mgb, old / "mgb"}, {place.tmp(), old / "tmp"}, {made.tmp(), place.tmp()}, {made.root() / "mgb", mgb}});
  } catch (const std::exception &error) {
    throw box::InventoryError(place.root().string() + " stays the box that it was: " + error.what());
  }
}

}  // namespace

void make_box(const box::Place &place, const box::Contents &contents, bool force) {
  check_room(place, force);
  if (box::is_box(place)) return make_anew(place, contents);
  make_first(place, contents);
}

}  // namespace spbox
