// Child processes that do not exist: a test says what each will do, and it happens on the double's clock.
#pragma once

#include <climits>
#include <csignal>

namespace doubles {

struct Program {
  static constexpr int kNever = INT_MAX;

  int seconds = 0;                // after which it ends by itself
  int status = 0;                 // its wait status then
  int seconds_after_sigterm = 0;  // after which it ends when asked to
  int status_after_sigterm = SIGTERM;
};

inline Program exits(int code, int after = 0) {
  return {after, code << 8, 0, SIGTERM};
}
inline Program dies_of(int signal) {
  return {0, signal, 0, signal};
}
inline Program hangs() {
  return {Program::kNever, 0, 0, SIGTERM};
}
inline Program hangs_until_sigterm_and_exits(int code, int after = 0) {
  return {Program::kNever, 0, after, code << 8};
}
inline Program ignores_sigterm() {
  return {Program::kNever, 0, Program::kNever, 0};
}

}  // namespace doubles
