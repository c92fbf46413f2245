// All failures of a line, one after the other.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

#include "failures/verbs.h"

namespace failures {

struct Options {
  std::filesystem::path folder;  // empty, for boxes
  std::size_t runs = 0;          // of each line, spread over all of its failures; 0: all of them
  std::string at;                // only failures whose names begin so, and what they print is shown
};

struct Count {
  std::size_t points = 0, runs = 0, findings = 0;
};

// What does not hold is told on standard output. Throws.
Count sweep(const Line &line, const Options &options);

}  // namespace failures
