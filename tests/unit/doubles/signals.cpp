// Handlers and masks of signals: they are written down, and then really set.

#include <cerrno>
#include <csignal>
#include <string>

#include "tests/unit/doubles/machine.h"
#include "tests/unit/doubles/system_calls.h"

using doubles::machine;

namespace {

std::string members(const sigset_t &set) {
  sigset_t all;
  sigfillset(&all);
  std::string text;
  bool are_all = true;
  for (int signal = 1; signal < 65; ++signal) {
    const bool is_member = sigismember(&set, signal) == 1;
    if (is_member) text += " " + std::to_string(signal);
    are_all = are_all && is_member == (sigismember(&all, signal) == 1);
  }
  return are_all ? " all" : text;
}

std::string described(int signal, const struct sigaction &action) {
  std::string text = "sigaction " + std::to_string(signal);
  if (action.sa_flags != 0) text += " flags " + std::to_string(action.sa_flags);
  const auto masked = members(action.sa_mask);
  return masked.empty() ? text : text + " mask" + masked;
}

std::string operation(int how) {
  switch (how) {
    case SIG_BLOCK:
      return "block";
    case SIG_UNBLOCK:
      return "unblock";
    case SIG_SETMASK:
      return "set";
    default:
      return std::to_string(how);
  }
}

}  // namespace

// Only the linker knows these names, so no header declares them.
#pragma GCC diagnostic ignored "-Wmissing-declarations"

extern "C" {

int __wrap_sigaction(int signal, const struct sigaction *action, struct sigaction *before) {
  if (!machine().active || action == nullptr) return __real_sigaction(signal, action, before);
  std::string call = described(signal, *action);
  if (before != nullptr) call += " asking";
  if (const auto *failure = machine().enter(call)) {
    errno = failure->error;
    return failure->result;
  }
  return __real_sigaction(signal, action, before);
}

int __wrap_sigprocmask(int how, const sigset_t *set, sigset_t *before) {
  if (!machine().active || set == nullptr) return __real_sigprocmask(how, set, before);
  std::string call = "sigprocmask " + operation(how) + members(*set);
  if (before != nullptr) call += " asking";
  if (const auto *failure = machine().enter(call)) {
    errno = failure->error;
    return failure->result;
  }
  return __real_sigprocmask(how, set, before);
}

}  // extern "C"
