#include "host/spbox/steady_box.h"

#include <sys/stat.h>

#include <chrono>
#include <exception>
#include <system_error>

#include "host/box/contents.h"
#include "host/spbox/making.h"

namespace spbox {
namespace {

std::filesystem::path parts_of(const box::Place &place) {
  return place.root() / "mgb";
}

}  // namespace

SteadyBox::SteadyBox(const box::Place &place) : parts_(parts_of(place)) {
  try {
    while (!shared_) {
      clear_up_making(place);
      const FolderLock kept(place.root(), FolderLock::Way::kShared);  // from here on nobody begins to make it
      if (!Making::is_unfinished(place)) shared_.emplace(parts_, FolderLock::Way::kShared);
    }
  } catch (const std::system_error &) {  // no box, or one that this user may only look into: the verb tells of it
    shared_.reset();
  }
  found_ = identity();
}

std::optional<SteadyBox::Identity> SteadyBox::identity() const {
  struct stat status {};
  if (stat(parts_.c_str(), &status) != 0) return std::nullopt;
  return Identity{status.st_dev, status.st_ino};
}

bool SteadyBox::is_another() const {
  return found_ && identity() != found_;
}

void wait_for_verbs(const box::Place &place) {
  constexpr std::chrono::seconds kMoment{1};
  try {
    const FolderLock alone(parts_of(place), FolderLock::Way::kAlone, kMoment);
  } catch (const std::exception &) {
    return;
  }
}

}  // namespace spbox
