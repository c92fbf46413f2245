// The path of a file of the box, for callers that may allocate no memory: a signal handler, or a child between fork and execve.
#pragma once

#include <climits>
#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "host/include/lmainte_host.h"

namespace platform {

class PathInBox {
 public:
  // `path` is below the folder of Place::here().
  template <std::size_t Size>
  explicit PathInBox(const char (&path)[Size]) {
    const char *root = std::getenv(LMAINTE_HOST_ROOT);
    const std::size_t length = root == nullptr ? 0 : std::strlen(root);
    is_whole_ = length <= sizeof text_ - 1 - Size;
    if (!is_whole_) return;
    if (length != 0) std::memcpy(text_, root, length);
    text_[length] = '/';
    std::memcpy(text_ + length + 1, path, Size);
  }

  bool is_whole() const { return is_whole_; }  // false: it is longer than a path may be
  const char *text() const { return text_; }

 private:
  char text_[PATH_MAX];
  bool is_whole_;
};

}  // namespace platform
