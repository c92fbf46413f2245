// The id of this process, without a call of the system.
#pragma once

#include <sys/types.h>

namespace base {

// A child of fork has an id of its own. A child of vfork works in its parent's memory and gets its parent's: it may do no more
// than execve or _exit. Not for signal handlers.
pid_t process_id() noexcept;

}  // namespace base
