#include "host/spbox/new_box.h"

#include <string>
#include <system_error>
#include <vector>

#include "host/base/told.h"
#include "host/spbox/folder_lock.h"
#include "host/spbox/making.h"
#include "host/spbox/occupancy.h"
#include "host/spbox/run_mark.h"
#include "host/spbox/steady_box.h"

namespace spbox {
namespace {

namespace fs = std::filesystem;

// A folder is replaced only when it is a box, and nothing in it is removed but what makes it one.
void check_room(const box::Place &place, bool force) {
  const fs::path &folder = place.root();
  if (fs::is_empty(folder)) return;
  if (!box::is_box(place)) {
    throw box::BoxError(folder.string() + " is a folder with other things in it. Give one that does not exist " +
                        "yet, or an empty one.");
  }
  if (!force) {
    throw box::BoxError(folder.string() + " is a box already. --force makes it anew, and all that it holds is lost.");
  }
}

// Those that had to be made, from the outermost one on. They go again as long as they are empty.
class NewFolders {
 public:
  explicit NewFolders(const fs::path &path) : NewFolders() {
    if (fs::exists(path) && !fs::is_directory(path)) {
      throw box::BoxError(path.string() + " is a file. Give a folder that does not exist yet.");
    }
    std::vector<fs::path> missing;
    for (fs::path at = (path / "").parent_path(); !at.empty() && !fs::exists(at); at = at.parent_path()) {
      missing.push_back(at);
    }
    for (; !missing.empty(); missing.pop_back()) {
      if (fs::create_directory(missing.back())) made_.push_back(missing.back());
    }
  }
  ~NewFolders() { remove(); }
  NewFolders(const NewFolders &) = delete;
  NewFolders &operator=(const NewFolders &) = delete;

  void remove() {
    std::error_code ignored;
    for (; !made_.empty(); made_.pop_back()) fs::remove(made_.back(), ignored);
  }

 private:
  NewFolders() = default;  // behind it, what was made goes again where the rest fails

  std::vector<fs::path> made_;
};

// The folder of a box, made where there is none, and nobody else makes a box there while this lives. Where it was made for the
// box, and none came to be, it goes again.
class Folder {
 public:
  explicit Folder(const fs::path &path) : folders_(path), alone_(path, FolderLock::Way::kAlone) {}
  ~Folder() { folders_.remove(); }  // before somebody else has the lock
  Folder(const Folder &) = delete;
  Folder &operator=(const Folder &) = delete;

 private:
  NewFolders folders_;
  FolderLock alone_;
};

}  // namespace

void make_box(const box::Place &place, const box::Contents &contents, bool force) {
  const Folder folder(place.root());
  clear_up_making_alone(place);
  check_room(place, force);
  if (!box::is_box(place)) return Making(place).make(contents);
  const EmptyBox kept_empty(place);
  end_what_killed_runs_left(place);
  wait_for_verbs(place);
  try {
    Making(place).make(contents);
  } catch (const HalfMade &) {
    throw;
  } catch (const std::exception &error) {
    throw box::BoxError(place.root().string() + " stays the box that it was: " + base::told(error));
  }
}

}  // namespace spbox
