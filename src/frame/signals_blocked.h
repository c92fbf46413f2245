// Signals that wait for the length of a block: what must not be seen half done is done before a handler can run.
#pragma once

#include <csignal>

namespace lmainte {

class SignalsBlocked {
 public:
  // Blocks one signal, or all of them.
  explicit SignalsBlocked(int signal) {
    sigset_t one;
    sigemptyset(&one);
    sigaddset(&one, signal);
    block(one);
  }
  SignalsBlocked() {
    sigset_t all;
    sigfillset(&all);
    block(all);
  }
  SignalsBlocked(const SignalsBlocked &) = delete;
  SignalsBlocked &operator=(const SignalsBlocked &) = delete;
  ~SignalsBlocked() { restore(); }

  // Gives the caller its mask back before the block ends, in a child that leaves it another way.
  void restore() {
    if (blocked_) sigprocmask(SIG_SETMASK, &before_, nullptr);
    blocked_ = false;
  }

 private:
  void block(const sigset_t &signals) { blocked_ = sigprocmask(SIG_BLOCK, &signals, &before_) == 0; }

  sigset_t before_ = {};
  bool blocked_ = false;
};

}  // namespace lmainte
