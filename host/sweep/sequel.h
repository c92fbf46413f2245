// What a command came to behind a deviation: there, a second one can meet it.
#pragma once

#include <cstddef>

#include "host/box/points.h"
#include "host/sweep/deviation.h"
#include "host/sweep/good.h"

namespace sweep {

class Sequel {
 public:
  // The deviation is that of a step, and so many points have been reached.
  void begin_behind(std::size_t points) { points_before_ = points; }

  // The step was played as the good play has it, behind the deviation.
  void note_step(std::size_t step);

  // As what a good play came to: with the points behind the deviation alone, in their order, and with these steps.
  Good found(const Good &good, const Deviation &deviation, const box::Points &points) const;

 private:
  std::size_t points_before_ = 0;
  std::size_t first_step_ = 1, last_step_ = 0;  // none
};

}  // namespace sweep
