#include "host/spbox/signals.h"

#include <unistd.h>

#include <array>
#include <cerrno>

namespace spbox {
namespace {

constexpr std::array<int, 4> kEnding{SIGINT, SIGQUIT, SIGTERM, SIGHUP};
constexpr char kIgnored = 'i', kDefault = 'd';

volatile sig_atomic_t command_pid = 0;
volatile sig_atomic_t early_signals = 0;  // a bit for each that came before the command was there, and waits for it

constexpr int bit_of(int signal) {
  return 1 << signal;
}

// When the terminal goes, only the leader of its session hears of it.
void pass_on(int signal, siginfo_t *info, void * /*context*/) {
  const int error = errno;
  const bool for_all = info->si_code > 0 && !(signal == SIGHUP && getsid(0) == getpid());
  if (command_pid == 0) {
    early_signals = early_signals | bit_of(signal);
  } else if (!for_all) {
    kill(command_pid, signal);
  }
  errno = error;
}

}  // namespace

sigset_t ending_signals() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : kEnding) sigaddset(&signals, signal);
  return signals;
}

void ignore_ending_signals() {
  for (const int signal : kEnding) std::signal(signal, SIG_IGN);
}

std::string ignored_signals() {
  std::string letters;
  for (const int signal : kEnding) {
    struct sigaction old = {};
    sigaction(signal, nullptr, &old);
    letters += old.sa_handler == SIG_IGN ? kIgnored : kDefault;
  }
  return letters;
}

bool restore_signals(const std::string &letters) {
  if (letters.size() != kEnding.size()) return false;
  if (letters.find_first_not_of({kIgnored, kDefault}) != std::string::npos) return false;
  for (std::size_t i = 0; i < kEnding.size(); ++i) {
    if (letters[i] == kDefault) std::signal(kEnding.at(i), SIG_DFL);
  }
  return true;
}

void keep_signals() {
  for (const int signal : kEnding) {
    struct sigaction action = {};
    action.sa_sigaction = pass_on;
    action.sa_flags = SA_SIGINFO | SA_RESTART;
    action.sa_mask = ending_signals();
    sigaction(signal, &action, nullptr);
  }
}

void pass_signals_to(pid_t command) {
  command_pid = command;
  for (const int signal : kEnding) {
    if ((early_signals & bit_of(signal)) != 0) kill(command, signal);
  }
}

void pass_no_signals() {
  command_pid = 0;
}

}  // namespace spbox
