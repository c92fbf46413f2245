// A file that may not grow any more is an error like any other.
#pragma once

#include <csignal>

namespace box {

// From now on such a write fails with EFBIG and does not end the process. A handler, and not SIG_IGN, which programs that
// this one starts would have, too.
inline void survive_full_files() {
  struct sigaction now = {};
  if (sigaction(SIGXFSZ, nullptr, &now) == 0 && now.sa_handler == SIG_DFL) std::signal(SIGXFSZ, [](int) {});
}

}  // namespace box
