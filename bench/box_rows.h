// The rows of the box.
#pragma once

#include <filesystem>
#include <vector>

#include "bench/rows.h"

namespace bench {

// A folder in memory, so that no disk is measured. It is gone at the end.
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

std::vector<Row> box_rows(const BoxFolder &folder);

// Locks that processes take in turn: real time, because they wait for each other.
void print_locks(const BoxFolder &folder);

}  // namespace bench
