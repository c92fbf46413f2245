#include "host/play/own_folder.h"

#include <unistd.h>

#include <csignal>
#include <exception>
#include <string_view>

#include "host/base/remove_tree.h"
#include "host/box/place.h"
#include "host/play/leftovers.h"

namespace play {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kPrefix = "spbox-play.";

// What has left the command's session is still in the box, and the daemon ends a moment after `spbox run` was killed.
void end_all_in(const fs::path &folder) {
  constexpr int kTries = 100;
  constexpr useconds_t kBetweenTries = 10'000;
  for (int i = 0; i < kTries; ++i) {
    const auto left = processes_of(box::Place(folder / "box"));
    if (left.empty()) return;
    for (const pid_t process : left) kill(process, SIGKILL);
    usleep(kBetweenTries);
  }
}

// What cannot be removed stays.
void remove_folder(const fs::path &folder) {
  try {
    end_all_in(folder);
  } catch (const std::exception &) {  // perhaps it has no processes: the list of them cannot be read
  }
  try {
    base::remove_tree(folder);
  } catch (const std::exception &) {
    rmdir(folder.c_str());  // for which no descriptor has to be left
  }
}

// What the dead have left goes first: there may be no room for more.
base::OwnedFolder new_folder() {
  OwnFolder::remove_what_the_dead_left();
  return {kPrefix, "the box"};
}

}  // namespace

void OwnFolder::remove_what_the_dead_left() {
  base::OwnedFolder::for_each_of_the_dead(kPrefix, remove_folder);
}

OwnFolder::OwnFolder() : folder_(new_folder()) {}

OwnFolder::~OwnFolder() {
  remove_folder(path());
}

}  // namespace play
