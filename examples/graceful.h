// A graceful end: a signal ends the wait for the operator, the command goes back the way it came, and the terminal is left
// as it was found. Copy it with the command.
#pragma once

#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <initializer_list>

#include "lmainte.h"

namespace graceful {

inline volatile std::sig_atomic_t g_signal = 0;
inline volatile std::sig_atomic_t g_undisturbed = 0;
inline pid_t g_self = 0;

// The signal that asks the command to end, or 0.
inline int signal() {
  return g_signal;
}

inline void end_waiting(int number) {
  const int saved = errno;
  if (getpid() != g_self) _exit(LMAINTE_NOT_RUN);  // a child that had no time yet to become the program that it runs
  if (number != SIGALRM) g_signal = number;
  const pid_t pager = g_show_file_pid;
  if (pager > 0 && waitpid(pager, nullptr, WNOHANG) == 0) {
    kill(pager, SIGTERM);  // It puts the terminal back itself.
    waitpid(pager, nullptr, 0);
  }
  if (g_undisturbed == 0) alarm(1);  // and once more, in case the wait was only about to begin
  errno = saved;
}

inline void catch_signals() {
  g_self = getpid();
  struct sigaction action {};
  action.sa_handler = end_waiting;  // without SA_RESTART: a read must end
  for (const int number : {SIGINT, SIGQUIT, SIGTERM, SIGHUP, SIGALRM}) sigaction(number, &action, nullptr);
}

// At the very end: dies of the signal that came, if one did, so that a shell sees what happened.
inline void die_of_signal() {
  alarm(0);
  if (g_signal == 0) return;
  std::signal(g_signal, SIG_DFL);
  raise(g_signal);
}

// Ctrl-C and a lost terminal reach the control programs, too. While one runs, these signals wait; and the library, which
// gives a program its time by sleeping, is not woken again and again. SIGTERM does not wait: a program inherits what is
// blocked, and one that never hears it could not be asked to end. It cuts short the one second, or five, in which it comes.
class Undisturbed {
 public:
  Undisturbed() {
    g_undisturbed = g_undisturbed + 1;
    alarm(0);
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : {SIGINT, SIGQUIT, SIGHUP}) sigaddset(&signals, number);
    sigprocmask(SIG_BLOCK, &signals, &before_);
  }
  ~Undisturbed() {
    sigprocmask(SIG_SETMASK, &before_, nullptr);
    g_undisturbed = g_undisturbed - 1;
    if (g_signal != 0 && g_undisturbed == 0) alarm(1);
  }
  Undisturbed(const Undisturbed &) = delete;
  Undisturbed &operator=(const Undisturbed &) = delete;

 private:
  sigset_t before_{};
};

// While it lives, Ctrl-Z and fg end the wait for the operator's answer: the question has to be asked again, as the shell has
// written over it.
class Continued {
 public:
  Continued() {
    struct sigaction action {};
    action.sa_handler = [](int) {};  // without SA_RESTART
    sigaction(SIGCONT, &action, &before_);
  }
  ~Continued() { sigaction(SIGCONT, &before_, nullptr); }
  Continued(const Continued &) = delete;
  Continued &operator=(const Continued &) = delete;

 private:
  struct sigaction before_ {};
};

// Between questions the operator's typing is not shown. The library sees to the echo at its questions; to put back the
// terminal's mode as a whole is the command's part. One dialogue at a time.
class Dialogue {
 public:
  Dialogue() {
    begun_ = isatty(STDIN_FILENO) != 0 && tcgetattr(STDOUT_FILENO, &before_) == 0 &&
             lmainte_tty_control(LMAINTE_TTY_ECHO, 0) == LMAINTE_OK;
  }
  ~Dialogue() {
    if (begun_) tcsetattr(STDOUT_FILENO, TCSADRAIN, &before_);
    begun_ = false;
  }
  Dialogue(const Dialogue &) = delete;
  Dialogue &operator=(const Dialogue &) = delete;

  // False where standard input or output is no terminal.
  static bool begun() { return begun_; }

  // A pager that is killed leaves the terminal in a mode of its own, in which no line can be corrected.
  static void go_on() {
    termios quiet = before_;
    quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    if (begun_) tcsetattr(STDOUT_FILENO, TCSADRAIN, &quiet);
  }

 private:
  static inline termios before_{};
  static inline bool begun_ = false;
};

// Wraps what the library shows: after_pager(lmainte_show_psu_list(...)).
inline int32_t after_pager(int32_t result) {
  Dialogue::go_on();
  if (signal() != 0) std::putchar('\n');  // The pager's last line stands unfinished.
  return result;
}

}  // namespace graceful
