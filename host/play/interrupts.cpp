#include "host/play/interrupts.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>

namespace play {
namespace {

volatile sig_atomic_t g_first = 0;
volatile sig_atomic_t g_bell = -1;

void ring(int signal) {
  const int saved = errno;
  if (g_first == 0) {
    g_first = signal;
    const char byte = 0;
    if (write(g_bell, &byte, 1) < 0) g_first = 0;
  }
  errno = saved;
}

}  // namespace

Interrupts::Interrupts() : bell_(O_NONBLOCK) {
  g_first = 0;
  g_bell = bell_.in.get();
  for (std::size_t i = 0; i < kSignals.size(); ++i) {
    struct sigaction action = {};
    action.sa_handler = ring;
    action.sa_flags = SA_RESTART;
    sigaction(kSignals[i], nullptr, &before_[i]);
    if (before_[i].sa_handler != SIG_IGN) sigaction(kSignals[i], &action, nullptr);
  }
}

Interrupts::~Interrupts() {
  for (std::size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals[i], &before_[i], nullptr);
}

int Interrupts::signal() const {
  return g_first;
}

int Interrupts::die() const {
  constexpr int kBySignal = 128;
  std::fflush(stdout);
  std::signal(signal(), SIG_DFL);
  std::raise(signal());
  return kBySignal + signal();
}

}  // namespace play
