// How spbox learns which process the command is, through a socket that goes along into the box's root.
//
// Until the command is inside nobody listens to the signals of its group but spbox. So that none is lost, and none comes
// twice, the command blocks them, tells its process id, and waits: spbox takes note of it, which divides the signals
// that spbox has to pass on from those that wait for the command itself.
#pragma once

#include <sys/types.h>

#include <string>

namespace spbox {

// Waits until there is something to read, or the end. False when this child has ended and left nothing: nothing more comes,
// whoever holds the other end still. A child that keeps this process waiting for ten seconds hangs, and is killed.
bool comes_before_end(int fd, pid_t child);

// Adds a character that has come to the text. False when the other end is closed.
bool read_on(int fd, std::string &text);

// Inside: tells this process's id, and waits until spbox has closed its end. Returns 0, or a number of errno where it
// cannot be told.
int announce_to(int fd);

// Outside: the process id that comes; 0 when the command never got there. `bwrap` is the child that brings it there.
pid_t announced_on(int fd, pid_t bwrap);

}  // namespace spbox
