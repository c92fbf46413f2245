#include "host/spbox/new_box.h"

#include <string>
#include <system_error>

#include "host/base/told.h"
#include "host/spbox/folder_lock.h"
#include "host/spbox/making.h"
#include "host/spbox/occupancy.h"

#include "host/spbox/run_mark.h"
namespace spbox {
namespace {

namespace fs = std::filesystem;

// A folder is replaced only when it is a box, and nothing in it is removed but what makes it one.
void check_room(const box::Place &place, bool force) {
  const fs::path &folder = place.root();
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

// The folder of a box, made where there is none, and nobody else makes a box there while this lives. Where it was made for the
// box, and none came to be, it goes again.
class Folder {
 public:
  explicit Folder(const fs::path &path) : path_(path), is_new_(made(path)), alone_(path, FolderLock::Way::kAlone) {}
  ~Folder() {
    std::error_code ignored;
    if (is_new_) fs::remove(path_, ignored);  // only an empty one
  }
  Folder(const Folder &) = delete;
  Folder &operator=(const Folder &) = delete;

 private:
  static bool made(const fs::path &path) {
    if (!fs::exists(path) || fs::is_directory(path)) return fs::create_directories(path);
    throw box::InventoryError(path.string() + " is a file. Give a folder that does not exist yet.");
  }

  fs::path path_;
  bool is_new_;
  FolderLock alone_;
};

}  // namespace

void make_box(const box::Place &place, const box::Contents &contents, bool force) {
  const Folder folder(place.root());
  clear_up_making_alone(place);
  check_room(place, force);
  if (!box::is_box(place)) return Making(place).make(contents);
  const EmptyBox kept_empty(place);
  try {
    Making(place).make(contents);
  } catch (const std::exception &error) {
    throw box::InventoryError(place.root().string() + " stays the box that it was: " + base::told(error));
  }
}

}  // namespace spbox
  end_what_killed_runs_left(place);
