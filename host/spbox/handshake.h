// How spbox learns which process the command is, through a socket that goes along into the box's root.
//
// Until the command is inside nobody listens to the signals of its group but spbox. So that none is lost, and none comes
// twice, the command blocks them, tells its process id, and waits: spbox takes note of it, which divides the signals
// that spbox has to pass on from those that wait for the command itself.
#pragma once

#include <sys/types.h>

namespace spbox {

// Inside: tells this process's id, and waits until spbox has closed its end.
void announce_to(int fd);

// Outside: the process id that comes; 0 when the command never got there.
pid_t announced_on(int fd);

}  // namespace spbox
