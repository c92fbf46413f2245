// A file that is mapped may be cut short by anybody, and the kernel sends SIGBUS to who touches what is gone. A guarded mapping
// then becomes memory of zeros, which belongs to no file: its user goes on, and sees by the zeros that the file is lost.
#pragma once

#include <cstddef>

namespace box {

// From now on guarded mappings are looked after. A SIGBUS for anything else goes to the handler that was there before. Who sets
// another handler later has taken all this into their own hands.
void survive_lost_mappings() noexcept;

// Guards a mapping from now on. Uses no system call: may be called in a signal handler and between fork and execve.
void guard_mapping(void *memory, std::size_t size) noexcept;

}  // namespace box
