// Plays the steps of a script on a stage.
#pragma once

#include <stdexcept>
#include <vector>

#include "host/play/account.h"
#include "host/play/stage.h"

namespace play {

// A step that failed: where, the step, what was awaited, the screen that stood there instead.
class Failure : public std::runtime_error {
 public:
  explicit Failure(Account account) : std::runtime_error(account.text), account_(std::move(account)) {}
  const Account &account() const { return account_; }

 private:
  Account account_;
};

// Plays all steps and waits for the technicians. Throws Failure at the first step that fails, and terminal::Interrupted
// when the stage's alarm rings. The stage's account tells of it, too.
void play_steps(Stage &stage, const std::vector<Step> &steps);

}  // namespace play
