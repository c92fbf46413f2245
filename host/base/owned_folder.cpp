#include "host/base/owned_folder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>
#include <utility>

#include "host/base/temporary_folder.h"

namespace base {
namespace {

namespace fs = std::filesystem;

// Of a folder of this user that still has its name, and that nobody else has locked.
Descriptor lock_of(const fs::path &folder) {
  Descriptor fd(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  struct stat ours {
  }, named{};
  if (fd.get() < 0 || fstat(fd.get(), &ours) != 0 || ours.st_uid != geteuid()) return {};
  if (flock(fd.get(), LOCK_EX | LOCK_NB) != 0 || lstat(folder.c_str(), &named) != 0) return {};
  return ours.st_dev == named.st_dev && ours.st_ino == named.st_ino ? std::move(fd) : Descriptor();
}

[[noreturn]] void no_folder(std::string_view what_for, const std::string &name, int error) {
  throw std::system_error(error, std::generic_category(),
                          "cannot make a folder for " + std::string(what_for) + ": " + name);
}

}  // namespace

// Until a new folder is locked, another one may take it for one that was left.
OwnedFolder::OwnedFolder(std::string_view prefix, std::string_view what_for) {
  constexpr int kTries = 100;
  for (int i = 1;; ++i) {
    auto pattern = (temporary_folder() / prefix).string() + "XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) no_folder(what_for, pattern, errno);
    path_ = pattern;
    errno = 0;
    lock_ = lock_of(path_);
    if (lock_.get() >= 0) return;
    const int error = errno;
    rmdir(pattern.c_str());
    const bool was_taken = error == 0 || error == EWOULDBLOCK || error == ENOENT;
    if (!was_taken || i == kTries) no_folder(what_for, pattern, error);
  }
}

void OwnedFolder::for_each_of_the_dead(std::string_view prefix, const std::function<void(const fs::path &)> &act) {
  std::error_code error;
  for (const fs::directory_entry &entry : fs::directory_iterator(temporary_folder(), error)) {
    if (!entry.path().filename().string().starts_with(prefix)) continue;
    const Descriptor lock = lock_of(entry.path());
    if (lock.get() >= 0) act(entry.path());
  }
}

}  // namespace base
