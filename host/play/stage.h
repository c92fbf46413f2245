// What the steps of a play act on: a box, an operator, technicians, and somebody who tells what happens.
#pragma once

#include <chrono>
#include <string>

#include "host/play/account.h"
#include "host/play/box.h"
#include "host/play/narrator.h"
#include "host/play/operator.h"
#include "host/play/technicians.h"

namespace play {

struct Stage {
  Stage(Box &the_box, Narrator &the_narrator, int alarm) : box(the_box), narrator(the_narrator), op(alarm) {}

  Box &box;
  Narrator &narrator;
  Technicians technicians;
  Operator op;
  std::chrono::milliseconds patience{10'000};  // of every wait
  std::string said;                            // by the last spbox step
  AccountWriter account;
};

// Waits until all technicians have done their work, and tells what they said. Throws StepError.
void wait_for_technicians(Stage &stage);

}  // namespace play
