#include "procedure/session.h"

#include <sys/statvfs.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <initializer_list>
#include <iterator>

#include "include/lmainte_procedure.h"
#include "procedure/language.h"
#include "procedure/telling.h"
#include "procedure/words.h"

namespace lmainte::procedure {
namespace {

volatile std::sig_atomic_t g_signal = 0;
volatile std::sig_atomic_t g_undisturbed = 0;
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

// That it runs ends the wait.
void go_on(int /*number*/) {}

constexpr int kCaught[] = {SIGINT, SIGQUIT, SIGTERM, SIGHUP, SIGALRM};
struct sigaction g_found[std::size(kCaught) + 1];
bool g_is_catching = false;

// Without SA_RESTART: a read must end. The library waits for its children, which a caller that ignores SIGCHLD has not.
void catch_signals() {
  if (g_is_catching) return;
  g_is_catching = true;
  g_self = getpid();
  struct sigaction action {};
  action.sa_handler = end_waiting;
  for (size_t i = 0; i < std::size(kCaught); ++i) sigaction(kCaught[i], &action, &g_found[i]);
  action.sa_handler = SIG_DFL;
  sigaction(SIGCHLD, &action, &g_found[std::size(kCaught)]);
}

void leave_signals() {
  if (!g_is_catching) return;
  g_is_catching = false;
  alarm(0);
  for (size_t i = 0; i < std::size(kCaught); ++i) sigaction(kCaught[i], &g_found[i], nullptr);
  sigaction(SIGCHLD, &g_found[std::size(kCaught)], nullptr);
}

// A procedure that was killed leaves the terminal without echo, and a killed pager leaves it without lines. Nobody reads the
// questions of a command in either, so neither is how the operator wants to find it.
void put_right(termios &mode) {
  mode.c_lflag |= ECHO | ICANON;
}

}  // namespace

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
  action.sa_handler = go_on;  // without SA_RESTART
  sigaction(SIGCONT, &action, &before_);
}

Continued::~Continued() {
  sigaction(SIGCONT, &before_, nullptr);
}

bool has_room_for_lists() {
  constexpr uint64_t kRoom = 65536;
  struct statvfs tmp {};
  return statvfs("/tmp", &tmp) == 0 && uint64_t{tmp.f_bavail} * tmp.f_frsize >= kRoom;
}

}  // namespace lmainte::procedure

using namespace lmainte::procedure;  // NOLINT(google-build-using-namespace): the session is its face

int32_t lmainte_session_begin() {
  speak_the_operators_language();
  catch_signals();
  if (isatty(STDIN_FILENO) == 0 || tcgetattr(STDOUT_FILENO, &g_terminal.found) != 0) return LMAINTE_FAILED;
  put_right(g_terminal.found);
  tcsetattr(STDOUT_FILENO, TCSADRAIN, &g_terminal.found);
  g_terminal.is_quiet = lmainte_tty_control(LMAINTE_TTY_ECHO, 0) == LMAINTE_OK;
  return g_terminal.is_quiet ? LMAINTE_OK : LMAINTE_FAILED;
}

// The terminal is quiet between questions, also behind a pager that was killed; and its last line is finished.
int32_t lmainte_session_shown(int32_t result) {
  if (g_terminal.is_quiet) {
    termios quiet = g_terminal.found;
    quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    tcsetattr(STDOUT_FILENO, TCSADRAIN, &quiet);
  }
  if (g_signal != 0) putchar('\n');
  if (result == LMAINTE_OK && !has_room_for_lists())
    tell(words("What stands above may be cut short: /tmp has no room. Remove files that nobody needs from it."));
  return result;
}

int32_t lmainte_session_signal() {
  return g_signal;
}

void lmainte_session_end() {
  if (g_terminal.is_quiet) tcsetattr(STDOUT_FILENO, TCSADRAIN, &g_terminal.found);
  g_terminal.is_quiet = false;
  leave_signals();
  fflush(stdout);
  alarm(0);
  if (g_signal == 0) return;
  signal(g_signal, SIG_DFL);
  raise(g_signal);
}
