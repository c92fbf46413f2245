// The report of a sweep as people read it.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "host/runner/result.h"

namespace sweep {

// Replays of one deviation at one kind of point.
struct Tally {
  std::string kind, deviation;
  std::size_t passed = 0, failed = 0, unplayed = 0;

  std::size_t all() const { return passed + failed + unplayed; }
};

// A replay and what it tried.
struct Tried {
  std::string kind, deviation;
  runner::Result result;
};

std::vector<Tally> tallies_of(const std::vector<Tried> &tried);

// A row for each kind of point and deviation: how many were tried, passed, failed, and were not played.
std::string table_of(const std::vector<Tally> &tallies);

}  // namespace sweep
