// The lock of a box's folder: who makes the box has it alone, who enters it shares it for a moment. It ends with its process.
#pragma once

#include <chrono>
#include <filesystem>

#include "host/base/descriptor.h"

namespace spbox {

class FolderLock {
 public:
  enum class Way { kAlone, kShared };

  // Waits for another process that has the lock, some seconds at most. Throws where there is no such folder, and
  // BoxError where the lock is not to be had.
  FolderLock(const std::filesystem::path &folder, Way way, std::chrono::milliseconds patience = kPatience);

 private:
  static constexpr std::chrono::seconds kPatience{30};

  base::Descriptor fd_;
};

}  // namespace spbox
