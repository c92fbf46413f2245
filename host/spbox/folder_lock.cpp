#include "host/spbox/folder_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <system_error>
#include <thread>

#include "host/box/contents.h"

namespace spbox {
namespace {

using std::chrono::steady_clock;

constexpr std::chrono::milliseconds kBetweenTries{5};

[[noreturn]] void failure(const std::filesystem::path &folder) {
  throw std::filesystem::filesystem_error("lock", folder, std::error_code(errno, std::generic_category()));
}

// Whether the folder behind the descriptor still has this name: who makes the first box may have removed it again.
bool is_current(int fd, const std::filesystem::path &folder) {
  struct stat ours {
  }, named{};
  if (fstat(fd, &ours) != 0 || stat(folder.c_str(), &named) != 0) failure(folder);
  return ours.st_dev == named.st_dev && ours.st_ino == named.st_ino;
}

}  // namespace

FolderLock::FolderLock(const std::filesystem::path &folder, Way way, std::chrono::milliseconds patience) {
  const auto end = steady_clock::now() + patience;
  const int operation = (way == Way::kAlone ? LOCK_EX : LOCK_SH) | LOCK_NB;
  while (true) {
    fd_ = base::Descriptor(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (fd_.get() < 0) failure(folder);
    while (flock(fd_.get(), operation) != 0) {
      if (errno != EWOULDBLOCK && errno != EINTR) failure(folder);
      if (steady_clock::now() >= end) {
        throw box::BoxError("another spbox makes " + folder.string() + ". Try again when it has ended.");
      }
      std::this_thread::sleep_for(kBetweenTries);
    }
    if (is_current(fd_.get(), folder)) return;
  }
}

}  // namespace spbox
