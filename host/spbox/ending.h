// Ends a process, and never another one that has got its number meanwhile.
#pragma once

#include <sys/types.h>

#include <functional>

namespace spbox {

// `is_it` looks once more whether this is the process that is meant. Waits a moment for its end.
void end_process(pid_t process, const std::function<bool()> &is_it);

}  // namespace spbox
