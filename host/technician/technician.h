// A technician who works through a script on a box, beside the operator.
#pragma once

#include <chrono>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/box/inventory.h"
#include "host/technician/step.h"
#include "host/technician/trace_watch.h"

namespace technician {

// Time as the technician has it. A test brings its own.
struct Clock {
  std::function<std::chrono::milliseconds()> now;  // since any moment
  std::function<void(std::chrono::milliseconds)> sleep;

  static Clock of(const box::Place &place);  // the box's, where somebody keeps it
};

// A step that cannot be done in this box, or what it waits for has not come.
class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class Technician {
 public:
  // `tell` gets a line for each thing that is done: when, and what.
  Technician(const box::Place &place, Clock clock, std::function<void(const std::string &line)> tell);

  // Works through the steps. Throws Failure before the first one where one names a unit that the server does not have, and
  // later where what a step waits for has not come `limit` after the step before; BoxError where a unit cannot be
  // changed so. Calls `begin` before the first step, when all units are known and the trace is looked at.
  void work(
      const std::vector<Step> &steps, std::chrono::milliseconds limit, const std::function<void()> &begin = [] {});

  // What the steps are made of.
  void sleep(std::chrono::milliseconds time) { clock_.sleep(time); }
  void wait_for(const Step &step, const std::function<bool()> &has_come);
  void change(box::Change change, const Words &units);
  bool is_installed(const std::string &unit) const;
  const box::Place &place() const { return place_; }
  TraceWatch &trace() { return trace_; }

  // The whole location of a unit whose state can be changed, and of a place with what control programs set: a maintenance
  // flag, an LED. Throw box::BoxError where the server has none.
  std::string unit(const std::string &name) const;
  std::string place_with_flag(const std::string &name) const;
  std::string place_with_led(const std::string &name) const;

 private:
  bool is_located(const std::string &location) const;
  box::BoxError unknown(const std::string &location) const;
  void tell_of(const std::string &what) const;

  box::Place place_;
  box::Inventory inventory_;
  Clock clock_;
  std::function<void(const std::string &)> tell_;
  std::chrono::milliseconds start_, limit_{0};
  TraceWatch trace_;
};

}  // namespace technician
