#include "procedure/session.h"

#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <initializer_list>

#include "include/lmainte_procedure.h"
#include "procedure/language.h"

namespace procedure {
namespace {

volatile std::sig_atomic_t g_signal = 0;
volatile std::sig_atomic_t g_undisturbed = 0;
volatile std::sig_atomic_t g_continued = 0;
pid_t g_self = 0;

struct Terminal {
  termios found;
  bool is_quiet;
} g_terminal;

void end_waiting(int number) {
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

void note_continuing(int /*number*/) {
  g_continued = 1;
}

// Without SA_RESTART: a read must end.
void catch_signals() {
  g_self = getpid();
  struct sigaction action {};
  action.sa_handler = end_waiting;
  for (const int number : {SIGINT, SIGQUIT, SIGTERM, SIGHUP, SIGALRM}) sigaction(number, &action, nullptr);
}

// A procedure that was killed leaves the terminal without echo, and a killed pager leaves it without lines. Nobody reads the
// questions of a command in either, so neither is how the operator wants to find it.
void put_right(termios &mode) {
  mode.c_lflag |= ECHO | ICANON;
}

}  // namespace

bool begin_session() {
  catch_signals();
  if (isatty(STDIN_FILENO) == 0 || tcgetattr(STDOUT_FILENO, &g_terminal.found) != 0) return false;
  put_right(g_terminal.found);
  tcsetattr(STDOUT_FILENO, TCSADRAIN, &g_terminal.found);
  g_terminal.is_quiet = lmainte_tty_control(LMAINTE_TTY_ECHO, 0) == LMAINTE_OK;
  return g_terminal.is_quiet;
}

void end_session() {
  if (g_terminal.is_quiet) tcsetattr(STDOUT_FILENO, TCSADRAIN, &g_terminal.found);
  g_terminal.is_quiet = false;
}

int signal_that_came() {
  return g_signal;
}

void die_of_signal() {
  alarm(0);
  if (g_signal == 0) return;
  signal(g_signal, SIG_DFL);
  raise(g_signal);
}

int32_t after_pager(int32_t result) {
  if (g_terminal.is_quiet) {
    termios quiet = g_terminal.found;
    quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    tcsetattr(STDOUT_FILENO, TCSADRAIN, &quiet);
  }
  if (g_signal != 0) putchar('\n');
  return result;
}

Undisturbed::Undisturbed() {
  g_undisturbed = g_undisturbed + 1;
  alarm(0);
  sigset_t signals;
  sigemptyset(&signals);
  for (const int number : {SIGINT, SIGQUIT, SIGHUP}) sigaddset(&signals, number);
  sigprocmask(SIG_BLOCK, &signals, &before_);
}

Undisturbed::~Undisturbed() {
  sigprocmask(SIG_SETMASK, &before_, nullptr);
  g_undisturbed = g_undisturbed - 1;
  if (g_signal != 0 && g_undisturbed == 0) alarm(1);
}

Continued::Continued() {
  struct sigaction action {};
  action.sa_handler = note_continuing;  // without SA_RESTART
  sigaction(SIGCONT, &action, &before_);
}

Continued::~Continued() {
  sigaction(SIGCONT, &before_, nullptr);
}

bool Continued::happened() {
  const bool result = g_continued != 0;
  g_continued = 0;
  return result;
}

}  // namespace procedure

int32_t lmainte_session_begin() {
  procedure::speak_the_operators_language();
  return procedure::begin_session() ? LMAINTE_OK : LMAINTE_FAILED;
}

int32_t lmainte_session_shown(int32_t result) {
  return procedure::after_pager(result);
}

int32_t lmainte_session_signal() {
  return procedure::signal_that_came();
}

void lmainte_session_end() {
  procedure::end_session();
  fflush(stdout);
  procedure::die_of_signal();
}
