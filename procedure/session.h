// The session of lmainte_session_begin: how it takes signals, for as long as one of these lives, and the room for what it shows.
#pragma once

#include <csignal>

namespace lmainte::procedure {

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

// The library shows what it could write: a list that /tmp had no room for is cut short, and nobody knows.
bool has_room_for_lists();

}  // namespace lmainte::procedure
