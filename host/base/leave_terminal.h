// What a process does that is not to hold what it was started with: the terminal, or a pipe whose reader waits for its end.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <initializer_list>

namespace base {

// Standard input, output and error are /dev/null from now on, those too that were closed: what is opened later takes none of their places.
inline void leave_terminal() {
  const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
  if (nothing < 0) return;
  for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) dup2(nothing, fd);
  if (nothing > STDERR_FILENO) close(nothing);
}

}  // namespace base
