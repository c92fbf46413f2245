// The signals that end a play: they come as a descriptor to wait for, so that the play can clean up.
#pragma once

#include <array>
#include <csignal>

#include "host/base/pipe.h"

namespace play {

// One at a time in a process. While it lives, SIGHUP, SIGINT, SIGQUIT, SIGTERM and SIGPIPE end nothing; what the
// process ignored at the start stays ignored.
class Interrupts {
 public:
  Interrupts();  // Throws std::system_error.
  ~Interrupts();
  Interrupts(const Interrupts &) = delete;
  Interrupts &operator=(const Interrupts &) = delete;

  int alarm() const { return bell_.out.get(); }  // Becomes readable with the first signal, and stays so.
  int signal() const;                            // The one that came first; 0 when none came.

  // Ends the process by the signal that came, when all is cleaned up. Where that cannot be, the exit status that tells of it.
  int die() const;

 private:
  static constexpr std::array<int, 5> kSignals{SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGPIPE};

  std::array<struct sigaction, kSignals.size()> before_{};
  base::Pipe bell_;
};

}  // namespace play
