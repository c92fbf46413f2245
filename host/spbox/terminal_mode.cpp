#include "host/spbox/terminal_mode.h"

#include <unistd.h>

#include <csignal>

namespace spbox {

TerminalMode::TerminalMode() : is_terminal_(tcgetattr(STDIN_FILENO, &found_) == 0) {}

// In the background the terminal would stop spbox for it.
void TerminalMode::put_back() const {
  if (!is_terminal_) return;
  sigset_t stop;
  sigset_t before;
  sigemptyset(&stop);
  sigaddset(&stop, SIGTTOU);
  sigprocmask(SIG_BLOCK, &stop, &before);
  tcsetattr(STDIN_FILENO, TCSADRAIN, &found_);
  sigprocmask(SIG_SETMASK, &before, nullptr);
}

}  // namespace spbox
