// A file descriptor that is closed by its owner, and errno stays as it was.
#pragma once

#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <string_view>
#include <utility>

namespace base {

class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int fd) : fd_(fd) {}  // below 0: none
  ~Descriptor() { reset(); }
  Descriptor(Descriptor &&other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  Descriptor &operator=(Descriptor &&other) noexcept {
    std::swap(fd_, other.fd_);
    return *this;
  }
  Descriptor(const Descriptor &) = delete;
  Descriptor &operator=(const Descriptor &) = delete;

  int get() const { return fd_; }
  int release() { return std::exchange(fd_, -1); }  // who gets it closes it
  void reset() {
    const int kept_errno = errno;
    if (fd_ >= 0) close(std::exchange(fd_, -1));
    errno = kept_errno;
  }

 private:
  int fd_ = -1;
};

// Writes all of it, however little is taken at a time. Returns 0, or a number of errno.
inline int write_all(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(fd, bytes.data(), bytes.size());
    if (written < 0 && errno != EINTR) return errno;
    if (written > 0) bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return 0;
}

}  // namespace base
