// Plays the steps of a script on a stage.
#pragma once

#include <stdexcept>
#include <vector>

#include "host/play/stage.h"

namespace play {

// A step that failed: where, the step, what was awaited, the screen that stood there instead.
class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Plays all steps and waits for the technicians. Throws Failure at the first step that fails, and terminal::Interrupted
// when the stage's alarm rings.
void play_steps(Stage &stage, const std::vector<Step> &steps);

}  // namespace play
