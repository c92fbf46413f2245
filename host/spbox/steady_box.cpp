#include "host/spbox/steady_box.h"

#include <sys/stat.h>

#include <chrono>
#include <exception>
#include <system_error>
#include <thread>

#include "host/box/contents.h"
#include "host/spbox/making.h"

namespace spbox {
namespace {

std::filesystem::path parts_of(const box::Place &place) {
  return place.root() / "mgb";
}

}  // namespace

Identity identity_of(const box::Place &place) {
  struct stat status {};
  if (stat(parts_of(place).c_str(), &status) != 0) return std::nullopt;
  return std::pair{status.st_dev, status.st_ino};
}

SteadyBox::SteadyBox(const box::Place &place) : place_(place) {
  try {
    while (!shared_) {
      clear_up_making(place);
      const FolderLock kept(place.root(), FolderLock::Way::kShared);  // from here on nobody begins to make it
      if (!Making::is_unfinished(place)) shared_.emplace(parts_of(place), FolderLock::Way::kShared);
    }
  } catch (const std::system_error &) {  // no box, or one that this user may only look into: the verb tells of it
    shared_.reset();
  }
  found_ = identity_of(place);
}

bool SteadyBox::is_another() const {
  return found_ && identity_of(place_) != found_;
}

void wait_for_verbs(const box::Place &place) {
  constexpr std::chrono::seconds kMoment{1};
  try {
    const FolderLock alone(parts_of(place), FolderLock::Way::kAlone, kMoment);
  } catch (const std::exception &) {
    return;
  }
}

// A maker needs a moment between taking the old parts away and putting the new ones there.
std::string look_at_one_box(const box::Place &place, const std::function<std::string()> &look) {
  constexpr int kMostLooks = 5;
  constexpr std::chrono::milliseconds kMoment{5};
  for (int i = 1;; ++i) {
    const Identity before = identity_of(place);
    std::string trouble = look();
    const Identity after = identity_of(place);
    const bool is_same = before && before == after;
    if (trouble.empty() || is_same || i == kMostLooks) return trouble;
    if (!after) std::this_thread::sleep_for(kMoment);
  }
}

}  // namespace spbox
