#include "host/spbox/making.h"

#include <fcntl.h>

#include <array>
#include <cerrno>
#include <new>
#include <string>
#include <system_error>

#include "host/base/descriptor.h"
#include "host/base/remove_tree.h"
#include "host/base/told.h"
#include "host/box/own_files.h"
#include "host/spbox/folder_lock.h"
#include "host/spbox/standard_output.h"

namespace spbox {
namespace {

namespace fs = std::filesystem;

constexpr const char *kMakingFolder = ".making";
constexpr const char *kMark = "made_by_spbox";  // in that folder, first to come and last to go

// The parts of a box. The last one makes a folder a box.
constexpr std::array<const char *, 2> kParts{"tmp", "mgb"};

bool is_there(const fs::path &path) {
  return fs::exists(fs::symlink_status(path));
}

// Descriptors with which what was made can be removed again, and the old box with it, also where no others are left.
class SpareDescriptors {
 public:
  SpareDescriptors() {
    for (base::Descriptor &spare : spares_) {
      spare = base::Descriptor(open("/", O_PATH | O_CLOEXEC));
      if (spare.get() < 0) throw std::system_error(errno, std::generic_category(), "a box cannot be made");
    }
  }
  void give_back() {
    for (base::Descriptor &spare : spares_) spare.reset();
  }

 private:
  std::array<base::Descriptor, 8> spares_;  // one for each folder on the way down
};

// The new box is made in a folder that nobody has to know.
std::string with_name(std::string text, const std::string &made_in, const std::string &name) {
  for (auto at = text.find(made_in); at != std::string::npos; at = text.find(made_in, at + name.size())) {
    text.replace(at, made_in.size(), name);
  }
  return text;
}

}  // namespace

Making::Making(const box::Place &place)
    : root_(place.root()),
      folder_(root_ / kMakingFolder),
      fresh_(folder_ / "new"),
      whole_(folder_ / "whole"),
      old_(folder_ / "old") {}

// An empty folder is what a maker left that died before it made its mark, or behind it.
bool Making::is_any_left(const box::Place &place) {
  std::error_code error;
  const fs::path folder = place.root() / kMakingFolder;
  const fs::file_status status = fs::symlink_status(folder, error);
  if (!fs::exists(status)) return false;
  return fs::exists(fs::symlink_status(folder / kMark, error)) ||
         (fs::is_directory(status) && fs::is_empty(folder, error));
}

bool Making::is_unfinished(const box::Place &place) {
  return is_any_left(place) && is_there(Making(place).whole_);
}

void Making::make(const box::Contents &contents) const {
  SpareDescriptors spare;
  try {
    begin();
    box::create_box(box::Place(fresh_), contents);
    spare.give_back();
    fs::create_directories(old_);
    fs::rename(fresh_, whole_);
    finish();
  } catch (const std::bad_alloc &) {
    spare.give_back();
    undo();
    throw;
  } catch (const std::exception &error) {
    spare.give_back();
    const std::string name = (root_ / "").parent_path(), why = with_name(base::told(error), fresh_, name);
    if (undo()) throw box::BoxError(why);
    throw HalfMade(name + " is not made yet: " + why + (why.ends_with('.') ? "" : ".") +
                   " The next spbox makes it to the end, or takes all of it back.");
  }
}

// A folder by this name may be somebody else's. The mark tells.
void Making::begin() const {
  fs::create_directory(folder_);
  const fs::path mark = folder_ / kMark;
  const base::Descriptor file(open(mark.c_str(), O_WRONLY | O_CREAT | box::kOwnFile, 0666));
  if (file.get() < 0) throw std::system_error(errno, std::generic_category(), mark.string());
}

// What was made goes before the mark, and what is somebody else's stays.
void Making::discard() const {
  for (const fs::path &path : {fresh_, whole_, old_}) base::remove_tree(path);
  fs::remove(folder_ / kMark);
  std::error_code not_empty;
  fs::remove(folder_, not_empty);
}

// What cannot be removed makes the box no worse. The next spbox tries again, and takes it for what a maker left that died.
void Making::discard_if_possible() const {
  constexpr int kTries = 3;
  for (int i = 0; i < kTries; ++i) {
    try {
      return discard();
    } catch (const std::exception &) {
      continue;
    }
  }
}

// Each part of the new box that still waits takes its place. What stands there is the old one's. Then the empty folder of the
// new one goes to the old parts: who comes next and finds them still there has nothing to finish, and nothing to tell.
void Making::finish() const {
  fs::create_directories(old_);
  for (const char *part : kParts) {
    if (!is_there(whole_ / part)) continue;
    if (is_there(root_ / part)) {
      base::remove_tree(old_ / part);
      fs::rename(root_ / part, old_ / part);
    }
    fs::rename(whole_ / part, root_ / part);
  }
  fs::rename(whole_, old_ / "whole");
  discard_if_possible();
}

// The old parts that were put aside come back. Only then the new box is no longer the one that counts: where one does not come
// back, the next spbox has all parts of the new one.
bool Making::undo() const {
  try {
    if (is_there(whole_)) {
      for (const char *part : kParts) {
        if (!is_there(whole_ / part)) fs::rename(root_ / part, whole_ / part);
        if (is_there(old_ / part)) fs::rename(old_ / part, root_ / part);
      }
      fs::rename(whole_, fresh_);
    }
  } catch (const std::exception &) {
    return false;
  }
  discard_if_possible();
  return true;
}

// No making leaves a link. A link leads to files that do not belong to the box.
void Making::refuse_links() const {
  for (const fs::path &path : {folder_, fresh_, whole_, old_}) {
    if (!fs::is_symlink(fs::symlink_status(path))) continue;
    throw box::BoxError(path.string() + " is a link, which may lead out of the box. Remove it.");
  }
}

Making::Left Making::clear_up() const {
  refuse_links();
  if (is_there(whole_)) {
    finish();
    return Left::kFinished;
  }
  if (is_there(fresh_)) {
    discard();
    return Left::kUndone;
  }
  discard_if_possible();
  return Left::kNothing;
}

void clear_up_making_alone(const box::Place &place) {
  if (!Making::is_any_left(place)) return;
  const Making::Left left = Making(place).clear_up();
  if (left == Making::Left::kNothing) return;
  const char *now = box::is_box(place) ? "the box that it was" : "no box";
  if (left == Making::Left::kFinished) now = "the new box now";
  complain(place.root().string() + " was being made when spbox died. It is " + now + ".");
}

void clear_up_making(const box::Place &place) {
  if (!Making::is_any_left(place)) return;
  const FolderLock alone(place.root(), FolderLock::Way::kAlone);
  clear_up_making_alone(place);
}

}  // namespace spbox
