// What the steps of a play act on: a box, an operator, technicians, and somebody who tells what happens.
#pragma once

#include <chrono>
#include <deque>
#include <map>
#include <string>

#include "host/play/account.h"
#include "host/play/box.h"
#include "host/play/narrator.h"
#include "host/play/operators.h"
#include "host/play/technicians.h"

namespace play {

struct Stage {
  Stage(Box &the_box, Narrator &the_narrator, int alarm) : box(the_box), narrator(the_narrator), operators(alarm) {}

  Box &box;
  Narrator &narrator;
  Technicians technicians;
  Operators operators;
  Operator &op() { return operators.now(); }
  std::chrono::milliseconds patience{10'000};  // of every wait
  std::string said;                            // by the last spbox step
  AccountWriter account;
  bool draws_server = false;       // beside each screen of the picture
  Chronicle *chronicle = nullptr;  // null: nobody wants one

  // A step takes a value, and says so; later steps get it into their words.
  void take(const Step &step, const std::string &value);
  const Step &with_taken(const Step &step);  // Throws std::invalid_argument where the words make no sense then.

 private:
  std::map<int, std::string> taken_;
  std::deque<Step> filled_;  // They stay: technicians know their steps.
};

// Waits until all technicians have done their work, and tells what they said. Throws StepError.
void wait_for_technicians(Stage &stage);

}  // namespace play
