// A recording as what the two rings of a box hold, for those who tell of them.
#pragma once

#include <cstddef>
#include <vector>

#include "host/box/call_ring.h"
#include "host/box/trace_ring.h"
#include "host/recording/recording.h"

namespace recording {

struct AsRings {
  std::vector<box::TraceEntry> records;
  std::vector<box::CallEntry> calls;
  std::vector<std::size_t> record_of_call;  // which of the recording's each of them is
};

AsRings as_rings(const Recording &recording);
}  // namespace recording
