// A technician who works through a script on a box, beside the operator.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "host/spbox/technician_script.h"

namespace spbox {

// Time as the technician has it. A test brings its own.
struct Clock {
  std::function<std::chrono::milliseconds()> now;  // since any moment
  std::function<void(std::chrono::milliseconds)> sleep;

  static Clock real();
};

class Technician {
 public:
  // `tell` gets a line for each thing that is done: when, and what.
  Technician(const box::Place &place, Clock clock, std::function<void(const std::string &line)> tell);

  // Works through the steps. Throws ScriptError before the first one where one names a unit that the server does not have,
  // and later where what a step waits for has not come `limit` after the step before; InventoryError where a unit cannot
  // be changed so.
  // Calls `begin` before the first step, when all units are known and the trace is looked at.
  void work(
      const std::vector<Step> &steps, std::chrono::milliseconds limit, const std::function<void()> &begin = [] {});

 private:
  // The step, its units by their whole locations.
  Step with_known_units(Step step) const;
  std::string known_unit(const Step &step, const std::string &name) const;
  void act(const Step &step, std::chrono::milliseconds limit);
  void wait_for(const Step &step, std::chrono::milliseconds limit);
  void change(box::Change change, const std::vector<std::string> &units);
  void flicker(const Step &step);
  bool holds(const std::vector<std::string> &condition);
  bool was_recorded(const std::vector<std::string> &words);
  void skip_trace();

  box::Place place_;
  box::Inventory inventory_;
  Clock clock_;
  std::function<void(const std::string &)> tell_;
  std::chrono::milliseconds start_;
  std::uint64_t next_entry_ = 0;  // of the trace: older ones a step has looked at, or they were there before
};

}  // namespace spbox
