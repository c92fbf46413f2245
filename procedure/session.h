// The session: a signal ends the wait for the operator, the command goes back the way it came, and the terminal is left as it
// was found. One at a time.
#pragma once

#include <csignal>
#include <cstdint>

namespace procedure {

// Catches the signals that end a command, and switches the terminal's echo off: between questions the operator's typing is
// not shown. False where standard input or output is no terminal.
bool begin_session();

// The terminal's mode is as it was found.
void end_session();

// The signal that asks the command to end, or 0.
int signal_that_came();

// At the very end: dies of the signal that came, if one did, so that a shell sees what happened.
void die_of_signal();

// Wraps what the library shows: a pager that is killed leaves the terminal in a mode of its own, in which no line can be
// corrected, and its last line unfinished.
int32_t after_pager(int32_t result);

// Ctrl-C and a lost terminal reach the control programs, too. While one runs, these signals wait; and the library, which
// gives a program its time by sleeping, is not woken again and again. SIGTERM does not wait: a program inherits what is
// blocked, and one that never hears it could not be asked to end. It cuts short the one second, or five, in which it comes.
class Undisturbed {
 public:
  Undisturbed();
  ~Undisturbed();
  Undisturbed(const Undisturbed &) = delete;
  Undisturbed &operator=(const Undisturbed &) = delete;

 private:
  sigset_t before_{};
};

// While it lives, Ctrl-Z and fg end the wait for the operator's answer: the question has to be asked again, as the shell has
// written over it.
class Continued {
 public:
  Continued();
  ~Continued();
  Continued(const Continued &) = delete;
  Continued &operator=(const Continued &) = delete;

 private:
  struct sigaction before_ {};
};

}  // namespace procedure
