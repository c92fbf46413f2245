// The system calls that a confined process may make.
#pragma once

namespace box {

// From now on all others are refused, as by a kernel that does not have them. Not on a machine whose calls are not known.
void refuse_calls() noexcept;

}  // namespace box
