#include "host/play/own_folder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <exception>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "host/base/remove_tree.h"
#include "host/base/temporary_folder.h"
#include "host/play/leftovers.h"

namespace play {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kPattern = "spbox-play.XXXXXX", kPrefix = "spbox-play.";

// Of a folder of this user that still has its name, and that nobody else has locked.
base::Descriptor lock_of(const fs::path &folder) {
  base::Descriptor fd(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  struct stat ours {
  }, named{};
  if (fd.get() < 0 || fstat(fd.get(), &ours) != 0 || ours.st_uid != geteuid()) return {};
  if (flock(fd.get(), LOCK_EX | LOCK_NB) != 0 || lstat(folder.c_str(), &named) != 0) return {};
  return ours.st_dev == named.st_dev && ours.st_ino == named.st_ino ? std::move(fd) : base::Descriptor();
}

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

[[noreturn]] void no_folder(const std::string &name, int error) {
  throw std::system_error(error, std::generic_category(), "cannot make a folder for the box: " + name);
}

}  // namespace

void OwnFolder::remove_what_the_dead_left() {
  std::error_code error;
  for (const fs::directory_entry &entry : fs::directory_iterator(base::temporary_folder(), error)) {
    if (!entry.path().filename().string().starts_with(kPrefix)) continue;
    const base::Descriptor lock = lock_of(entry.path());
    if (lock.get() >= 0) remove_folder(entry.path());
  }
}

// Until a new folder is locked, another play may take it for one that was left.
OwnFolder::OwnFolder() {
  constexpr int kTries = 100;
  remove_what_the_dead_left();
  for (int i = 1;; ++i) {
    auto pattern = (base::temporary_folder() / kPattern).string();
    if (mkdtemp(pattern.data()) == nullptr) no_folder(pattern, errno);
    path_ = pattern;
    errno = 0;
    lock_ = lock_of(path_);
    if (lock_.get() >= 0) return;
    const int error = errno;
    rmdir(pattern.c_str());
    const bool was_taken = error == 0 || error == EWOULDBLOCK || error == ENOENT;
    if (!was_taken || i == kTries) no_folder(pattern, error);
  }
}

OwnFolder::~OwnFolder() {
  remove_folder(path_);
}

}  // namespace play
