// A folder in memory, so that no disk is measured. It is gone at the end.
#pragma once

#include <filesystem>

namespace bench {

class BoxFolder {
 public:
  BoxFolder();
  ~BoxFolder();
  BoxFolder(const BoxFolder &) = delete;
  BoxFolder &operator=(const BoxFolder &) = delete;

  const std::filesystem::path &path() const { return path_; }

 private:
  std::filesystem::path path_;
};

}  // namespace bench
