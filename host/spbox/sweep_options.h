// What `spbox sweep` is told: by people, and by the sweep itself for one replay.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "host/play/performance.h"
#include "host/spbox/machine.h"
#include "host/spbox/pool_options.h"
#include "host/spbox/speed.h"
#include "host/spbox/test_report.h"
#include "host/spbox/verb.h"
#include "host/sweep/plan.h"
#include "host/sweep/replay_rules.h"

namespace spbox {

struct SweepOptions {
  play::Files files;
  std::vector<std::string> words;  // NAME=VALUE
  play::Values values;
  sweep::PlanRules plan;
  std::uint32_t depth = 1;  // so many deviations at a time
  std::uint32_t pairs = 0;  // with depth 2; 0: as many as kPairs
  PoolOptions pool;
  SpeedOption speed{"full"};
  MachineOption machine;
  std::uint32_t limit = 0;  // seconds on the wall; 0: none
  bool list = false, every = false;
  TestReports reports;
  std::filesystem::path findings;
  std::filesystem::path pages;  // of the findings; empty: none

  // Of one replay.
  std::filesystem::path good;
  std::string number;            // of the deviation, counted from 0
  std::uint32_t followers = 0;   // so many are drawn from its sequel, which goes into the file
  std::filesystem::path sequel;  // a file
  std::string second;            // the number of the other deviation of a pair, in the sequel of the first one
};

std::vector<Word> words_of_sweep(SweepOptions &options);
void judge_sweep_words(SweepOptions &options);  // throws UsageError

std::filesystem::path this_program();
std::filesystem::path findings_folder(const SweepOptions &options);
std::chrono::milliseconds longest_replay(const SweepOptions &options);  // on the wall

// The folder is for what replays need of the good play.
sweep::ReplayRules replay_rules(const SweepOptions &options, int alarm, const std::filesystem::path &folder);

// Throws where the play cannot be swept.
std::vector<play::Step> swept_steps(const SweepOptions &options);

}  // namespace spbox
