// The system calls that no program in a box may make.
#pragma once

#include "host/base/descriptor.h"

namespace spbox {

// A file with the filter, as bwrap's --seccomp takes it: nobody types into the operator's terminal, and nobody uses the keys
// of the user's session. All else is left to the command. Throws.
base::Descriptor call_filter();

}  // namespace spbox
