#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <string>
#include <string_view>

#include "host/platform/calls.h"
#include "host/platform/exported.h"
#include "host/platform/files_in_tmp.h"
#include "host/platform/points.h"
#include "include/lmainte_record.h"

namespace {

constexpr mode_t kPermissions = 07777;

// The number of bytes, or -1 for a size that read and write would take for a huge one.
int32_t checked(int32_t size) {
  if (size >= 0) return size;
  errno = EINVAL;
  return -1;
}

// Where a call for a file fails on purpose.
bool is_refused(const char *call) {
  if (platform::reach_file(call) != box::Way::kRefused) return false;
  errno = EIO;
  return true;
}

bool is_in_tmp(int fd) {
  const std::string link = "/proc/self/fd/" + std::to_string(fd);
  std::array<char, 8> target{};
  const ssize_t size = readlink(link.c_str(), target.data(), target.size());
  return size > 0 && std::string_view(target.data(), static_cast<std::size_t>(size)).starts_with("/tmp/");
}

int32_t open_locked(const char *path, int32_t flags, uint32_t mode) {
  if (is_refused("open")) return -1;
  if (path == nullptr) {
    errno = EFAULT;
    return -1;
  }
  const int fd = platform_opens(path, flags | O_CLOEXEC, mode & kPermissions);
  if (fd < 0) return -1;
  // This lock, unlike a record lock, can be had on a descriptor for reading, and it keeps out a second lcmn_lopen in the same
  // process too. A signal ends the wait, so that an operator can leave a command that waits for another.
  if (flock(fd, LOCK_EX) == 0) return fd;
  const int reason = errno;
  close(fd);
  errno = reason;
  return -1;
}

int32_t read_some(int32_t fd, void *buffer, int32_t size) {
  if (checked(size) < 0 || is_refused("read")) return -1;
  return static_cast<int32_t>(read(fd, buffer, static_cast<std::size_t>(size)));
}

int32_t write_some(int32_t fd, const void *buffer, int32_t size) {
  if (checked(size) < 0 || is_refused("write")) return -1;
  if (!platform_has_room() && is_in_tmp(fd)) {
    errno = ENOSPC;
    return -1;
  }
  return static_cast<int32_t>(write(fd, buffer, static_cast<std::size_t>(size)));
}

int32_t close_locked(int32_t fd) {
  // The lock would outlive close in a child of fork that still has the descriptor.
  const int unlocked = flock(fd, LOCK_UN);
  const int reason = errno;
  const int closed = close(fd);
  if (closed == 0 && unlocked != 0) errno = reason;
  if (is_refused("close")) return -1;  // as close does: the descriptor is gone all the same
  return unlocked == 0 && closed == 0 ? 0 : -1;
}

}  // namespace

int32_t lcmn_lopen(const char *path, int32_t flags, uint32_t mode) {
  const uint64_t began = lmainte_record_begin();
  platform::KeptCall call(box::CallKind::kFileOpen, path == nullptr ? "" : path);
  const int32_t fd = open_locked(path, flags, mode);
  call.set_first(static_cast<uint32_t>(fd));
  return lmainte_record_file_open(began, path, flags, call.ends_with(fd));
}

int32_t lcmn_read(int32_t fd, void *buffer, int32_t size) {
  const uint64_t began = lmainte_record_begin();
  platform::KeptCall call(box::CallKind::kFileRead, {}, static_cast<uint32_t>(fd), static_cast<uint32_t>(size));
  return lmainte_record_file_read(began, fd, buffer, size, call.ends_with(read_some(fd, buffer, size)));
}

int32_t lcmn_write(int32_t fd, const void *buffer, int32_t size) {
  const uint64_t began = lmainte_record_begin();
  platform::KeptCall call(box::CallKind::kFileWrite, {}, static_cast<uint32_t>(fd), static_cast<uint32_t>(size));
  return lmainte_record_file_write(began, fd, buffer, size, call.ends_with(write_some(fd, buffer, size)));
}

int32_t lcmn_close(int32_t fd) {
  const uint64_t began = lmainte_record_begin();
  platform::KeptCall call(box::CallKind::kFileClose, {}, static_cast<uint32_t>(fd));
  return lmainte_record_file_close(began, fd, call.ends_with(close_locked(fd)));
}
