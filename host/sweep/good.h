// What a good play came to: how each of its commands ended, what each left, said and logged, and to which points it came.
#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "host/box/points.h"
#include "host/terminal/session.h"

namespace sweep {

// One command of a play, from its start to its end.
struct CommandEnd {
  std::size_t start = 0;                   // the number of the step that started it
  std::optional<terminal::Ending> ending;  // none: it did not end in time
  std::vector<std::string> left;           // a sentence for each leftover
  std::vector<std::string> logged;         // entries of the log: "unit replaced  fan tray  /FAN_A#0"
  std::vector<std::string> shown;          // lines of the screen
};

// Points of one kind and name to which one command came.
struct PointRange {
  box::PointKind kind{};
  std::string name;
  std::uint32_t first = 1, last = 0;
  std::size_t command = 0;
};

// A point, as a command came to it.
struct Reached {
  box::PointKind kind{};
  std::string name;
  std::size_t command = 0;
};

// Also what a command came to behind a deviation: the points behind it, and the steps.
struct Good {
  std::uint64_t script = 0;  // of its steps: those of another play have another number
  std::vector<CommandEnd> commands;
  std::vector<PointRange> points;
  std::vector<Reached> order;  // one after the other

  // The steps that were played: from the first one to the last one; none where the last one is before the first one.
  std::size_t first_step = 0, last_step = std::numeric_limits<std::size_t>::max();
};

// As a file, from which another process reads it, without the order. Throws script::Error.
std::string text_of(const Good &good);
Good good_in(const std::string &text);

}  // namespace sweep
