// What people are told of many plays: a line for each, more for a failure, and how many there were.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "host/runner/result.h"

namespace runner {

// "passed    3.2 s  wrong/led_dark.play" and, where it did not pass, why, with the screen, and where its transcript lies.
std::string told_of(const Result &result);

// How many passed, and a line for each that did not.
std::string told_of_all(std::span<const Result> results, std::chrono::milliseconds time);

// One line of at most `width` columns: how far it is, and what is at work.
struct Progress {
  std::size_t done, all, wrong;
  std::vector<std::string> at_work;
  std::chrono::milliseconds time;
  std::string what = "play";  // one of them
};
std::string told_of(const Progress &progress, std::size_t width);

// "3.2 s", "2 min 5 s"
std::string time_text(std::chrono::milliseconds time);

}  // namespace runner
