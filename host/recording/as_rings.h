// A recording as what the two rings of a box hold, for those who tell of them.
#pragma once

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

// Whether a program of this line is a control program, and no pager or shell.
bool is_control_program(std::string_view line);

}  // namespace recording
