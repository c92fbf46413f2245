#include "host/spbox/new_box.h"

#include <optional>
#include <system_error>

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

void remove_half_made(const box::Place &place, bool folder_is_ours) {
  std::error_code ignored;  // what was wrong is said already
  fs::remove_all(place.root() / "mgb", ignored);
  fs::remove_all(place.tmp(), ignored);
  if (folder_is_ours) fs::remove(place.root(), ignored);
}

}  // namespace

void make_box(const box::Place &place, const box::Contents &contents, bool force) {
  check_room(place, force);
  const bool existed = fs::exists(place.root());
  std::optional<EmptyBox> kept_empty;
  if (box::is_box(place)) {
    kept_empty.emplace(place);
    box::remove_box(place);
  }
  try {
    box::create_box(place, contents);
  } catch (const std::exception &) {
    remove_half_made(place, !existed);
    throw;
  }
}

}  // namespace spbox
