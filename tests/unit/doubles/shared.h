// Memory that a test shares with the children of the library.
#pragma once

#include <atomic>
#include <cstdint>

#include "tests/unit/doubles/machine.h"

namespace doubles {

struct Shared {
  static constexpr uint32_t kMostRecords = 8192;
  static constexpr uint32_t kMostCalls = 65536;  // an indicator that runs for hours
  static constexpr uint32_t kCallSize = 128;

  std::atomic<uint32_t> records;
  TraceRecord trace[kMostRecords];
  std::atomic<uint32_t> calls;
  char child_calls[kMostCalls][kCallSize];
  char failed_in_child[kCallSize];
  Executed executed;
  bool left_by_exit;
  uint32_t blocks_left;
};

Shared &shared();

}  // namespace doubles
