// The platform of one process that runs on another machine, emulated here: a process of its own, which does what the other one asks
// for. So each has its sessions, and the kernel takes its locks back when it ends.
#pragma once

#include <sys/types.h>

#include "host/base/descriptor.h"

namespace remote {

// How a stand-in ends: its process is gone, or has sent what is no message of it.
enum class Ending { kIsGone, kMakesNoSense };

// Does what comes through the socket, until the process at its other end is gone. What it makes is that process's: the records of calls,
// the signals of deviations. May end this process.
Ending stand_in_for(base::Descriptor socket, pid_t process);

inline constexpr int kMadeNoSense = 3;  // the exit status of a stand-in that left its process

}  // namespace remote
