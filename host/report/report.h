// A play, or a recording, as one page that needs nothing else: a time line and, at each step, the screen with its colours, the server,
// what was done, and the trace and the log up to there.
#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "host/terminal/screen.h"

namespace report {

// Of one operator.
struct Screen {
  std::string caption;
  std::vector<terminal::PaintedRow> rows;

  bool operator==(const Screen &) const = default;
};

// Something that was done or said, and what was printed at it.
struct Deed {
  std::string sentence, output;
};

// Steps that look alike have one in common; null is nothing to be seen.
using Screens = std::shared_ptr<const std::vector<Screen>>;
using Picture = std::shared_ptr<const std::vector<std::string>>;

struct Step {
  std::string place, text;  // "walk.play:4", and the step as it is written
  std::chrono::milliseconds time{0};
  std::vector<Deed> deeds;
  Screens screens;
  Picture server;
  std::size_t trace = 0, log = 0;  // so many lines of the play's were there behind the step
};

struct TraceLine {
  std::string text;
  bool is_error = false;
};

struct Play {
  std::string what = "play";               // it is called so: "The play walk"
  std::string done = "Played to its end";  // where no step failed
  std::string name;
  std::size_t steps_left_out = 0;  // before the first of `steps`
  std::vector<Step> steps;
  std::string reason;  // why the last step failed; empty: it did not
  std::size_t trace_left_out =
      0;  // lines before the first of `trace`, which the box does not remember, or the page does not
  std::vector<TraceLine> trace;
  std::vector<std::string> log;
};

// A page has room for so many steps; who makes the play leaves out older ones.
inline constexpr std::size_t kMostSteps = 10'000;

// What is older than so many lines of the trace is left out, and said to be.
inline constexpr std::size_t kMostTrace = 10'000;

// Any bytes may stand in all of it: they are shown. What is the same as at the step before stands once.
std::string page_of(const Play &play);

}  // namespace report
