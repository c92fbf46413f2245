// A play as a sweep sees it: its steps, and what it came to.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "host/sweep/deviation.h"

inline std::vector<play::Step> steps_of(const std::vector<sweep::Words> &lines) {
  std::vector<play::Step> steps;
  for (const sweep::Words &words : lines) {
    steps.push_back(sweep::step_of(words));
    steps.back().place = "walks/swap.play:" + std::to_string(steps.size());
  }
  return steps;
}

// replace_unit psu, with two starts of the LED's program, a reading, two records of the trace and two of a database's call.
inline const std::vector<sweep::Words> kPlay{{"box", "qa"},
                                             {"start", "replace_unit", "psu"},
                                             {"wait", "Which"},
                                             {"type", "1\n"},
                                             {"spbox", "pull", "/PSU#0"},
                                             {"spbox", "insert", "/PSU#0"},
                                             {"type", "1\n"},
                                             {"exit", "0"}};
inline sweep::Good good_play() {
  sweep::Good good;
  good.commands.push_back(
      {1, terminal::Ending{false, 0}, {}, {"unit replaced  power supply  /PSU#0"}, {"Which one?", "Done."}});
  good.points = {{box::PointKind::kProgram, "ctlled", 1, 2, 0}, {box::PointKind::kRead, "current_psu_info", 1, 1, 0},
                 {box::PointKind::kTrace, "110C0320", 1, 2, 0}, {box::PointKind::kTrace, "110CB021", 1, 2, 0},
                 {box::PointKind::kLog, "", 1, 1, 0},           {box::PointKind::kFile, "make", 1, 2, 0},
                 {box::PointKind::kFile, "read", 1, 1, 0},      {box::PointKind::kPager, "", 1, 1, 0}};
  return good;
}

inline std::vector<std::string> names_of(const std::vector<sweep::Deviation> &deviations) {
  std::vector<std::string> names;
  for (const auto &deviation : deviations) names.push_back(sweep::name_of(deviation));
  return names;
}
