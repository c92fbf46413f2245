#include "host/box/lock_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <thread>

#include "host/base/byte_lock.h"
#include "host/base/pauses.h"
#include "host/box/own_files.h"

namespace box {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

int set_lock(int fd, short type, off_t byte) {
  struct flock lock = base::byte_lock(type, byte);
  return fcntl(fd, F_SETLK, &lock);
}

bool is_taken(int fd, off_t byte) {
  struct flock lock = base::byte_lock(F_RDLCK, byte);
  return fcntl(fd, F_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

// Tries until it succeeds. False when the patience is over.
template <class Attempt>
bool succeeds(Attempt attempt, milliseconds patience, milliseconds longest_pause) {
  base::Pauses pauses(longest_pause);
  std::optional<steady_clock::time_point> end;  // the clock is looked at only where the first attempt fails
  while (!attempt()) {
    if (!end) end = steady_clock::now() + patience;
    if (steady_clock::now() >= *end) return false;
    std::this_thread::sleep_for(pauses.next());
  }
  return true;
}

}  // namespace

LockFile::~LockFile() {
  if (fd_ >= 0) close(fd_);
}

bool LockFile::open(const std::filesystem::path &file) {
  fd_ = ::open(file.c_str(), O_RDWR | O_CREAT | kOwnFile, 0666);
  if (fd_ >= 0 || (errno != EACCES && errno != EROFS && errno != EPERM)) return fd_ >= 0;
  why_only_read_ = errno;
  fd_ = ::open(file.c_str(), O_RDONLY | kOwnFile);
  if (fd_ < 0) errno = why_only_read_;
  return fd_ >= 0;
}

int LockFile::take(off_t byte, Way way, milliseconds patience, milliseconds longest_pause) const {
  if (way == Way::kAlone && why_only_read_ != 0) return why_only_read_;
  int error = 0;
  const auto is_decided = [&] {
    error = set_lock(fd_, way == Way::kAlone ? F_WRLCK : F_RDLCK, byte) == 0 ? 0 : errno;
    return error != EACCES && error != EAGAIN;
  };
  return succeeds(is_decided, patience, longest_pause) ? error : EAGAIN;
}

void LockFile::wait_until_free(off_t byte, milliseconds patience, milliseconds longest_pause) const {
  succeeds([&] { return !is_taken(fd_, byte); }, patience, longest_pause);
}

void LockFile::give_back(off_t byte) const {
  set_lock(fd_, F_UNLCK, byte);
}

}  // namespace box
