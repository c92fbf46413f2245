// A report that CI servers read.
#pragma once

#include <chrono>
#include <span>
#include <string>

#include "host/runner/result.h"

namespace runner {

// XML in the form of JUnit: a test case for each play, whose class is its folder. `begin` is when the first one began.
std::string junit(const std::string &suite, std::span<const Result> results, std::chrono::milliseconds time,
                  std::chrono::system_clock::time_point begin);

}  // namespace runner
