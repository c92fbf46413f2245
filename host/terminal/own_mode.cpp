#include "host/terminal/own_mode.h"

#include <unistd.h>

#include <csignal>

namespace terminal {

OwnMode::OwnMode() : is_terminal_(tcgetattr(STDIN_FILENO, &found_) == 0) {}

void OwnMode::put_back() const {
  set(found_);
}

void OwnMode::make_raw() const {
  termios raw = found_;
  cfmakeraw(&raw);
  set(raw);
}

// In the background the terminal would stop this process for it.
void OwnMode::set(const termios &attributes) const {
  if (!is_terminal_) return;
  sigset_t stop;
  sigset_t before;
  sigemptyset(&stop);
  sigaddset(&stop, SIGTTOU);
  sigprocmask(SIG_BLOCK, &stop, &before);
  tcsetattr(STDIN_FILENO, TCSADRAIN, &attributes);
  sigprocmask(SIG_SETMASK, &before, nullptr);
}

}  // namespace terminal
