// The technicians of a play, who work beside the operator.
#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <string>

#include "host/play/step.h"
#include "host/terminal/background_program.h"

namespace play {

struct SentTechnician {
  const Step *step;  // that asked for the work
  terminal::BackgroundProgram work;
};

class Technicians {
 public:
  // A technician comes, who is a program that tells when it is ready. Throws where nobody is in time, or gives up.
  void add(const Step &step, terminal::BackgroundProgram work, std::chrono::milliseconds patience);

  // Waits for each of them, in the order in which they came; `tell` is called when one is done. Throws StepError.
  void wait(std::chrono::milliseconds patience, const std::function<void(const SentTechnician &)> &tell);

  const std::deque<SentTechnician> &at_work() const { return at_work_; }

 private:
  std::deque<SentTechnician> at_work_;
};

}  // namespace play
