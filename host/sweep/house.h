// All that a play needs, and that goes with it: a box, its time, a terminal, technicians.
#pragma once

#include <chrono>
#include <exception>
#include <optional>
#include <sstream>
#include <string>

#include "host/base/told.h"
#include "host/clock/keeper.h"
#include "host/play/stage.h"
#include "host/sweep/replay_rules.h"
#include "host/terminal/terminal.h"

namespace sweep {

// What dies with a command dies a moment later.
inline constexpr std::chrono::milliseconds kDyingTime{2000};

// Nothing, or why it failed.
template <typename Work>
std::optional<std::string> attempt(const Work &work) {
  try {
    work();
    return {};
  } catch (const terminal::Interrupted &) {
    throw;
  } catch (const std::exception &wrong) {
    return base::told(wrong);
  }
}

class House {
 public:
  explicit House(const ReplayRules &rules);

  // Throws as the step does.
  void perform(const play::Step &step);

  play::Stage &stage() { return stage_; }
  box::Place place() const { return box_.place(); }
  box_time::Keeper &keeper() { return keeper_; }

 private:
  std::ostringstream out_;
  box_time::Keeper keeper_;
  play::Transcript transcript_;
  play::Picture picture_;
  play::Narrator narrator_;
  play::Box box_;
  play::Stage stage_;
};

}  // namespace sweep
