// The points of the commands in the box, as the platform's functions come to them.
#pragma once

#include <string_view>

#include "host/box/points.h"

namespace platform {

// Counts this point, and says what happens there. It costs nothing but a look at a variable in a box that counts no points; whether it
// does, a process finds out once. May be called in a signal handler and between fork and execve.
box::Turn reach(box::PointKind kind, std::string_view name) noexcept;

// The same of a call for a file; behind one where /tmp has no room, it has none for this process and its children.
box::Way reach_file(std::string_view call) noexcept;

// The points are those of another process, which gets a signal by `deliver`.
void stand_for_points_of(pid_t process, void (*deliver)(int signal)) noexcept;

inline bool is_refused(box::PointKind kind, std::string_view name) noexcept {
  return reach(kind, name).way == box::Way::kRefused;
}

}  // namespace platform
