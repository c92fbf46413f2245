// The replays of a sweep: which there are, each in a process of its own, some side by side, and what became of each.
#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "host/runner/pool.h"
#include "host/spbox/progress_line.h"
#include "host/spbox/sweep_findings.h"
#include "host/spbox/sweep_options.h"
#include "host/sweep/fold.h"
#include "host/sweep/outcome.h"
#include "host/sweep/table.h"

namespace spbox {

class SweepRun {
 public:
  // The folder is for what the replays need of the good play.
  SweepRun(const SweepOptions &options, std::vector<play::Step> steps, sweep::Good good, std::filesystem::path folder,
           int alarm);

  // With --list, pairs are drawn and none is played.
  void run();

  bool is_over() const;  // the limit is
  bool is_interrupted() const { return is_interrupted_; }
  bool has_named() const;  // --only names a deviation. A shard may have none of those that it names.

  // ---- what there was
  const sweep::Good &good() const { return good_; }
  std::size_t deviations() const { return all_.size(); }
  std::size_t classes() const { return fold_.classes(); }
  std::size_t pairs() const { return pairs_; }         // that were drawn
  std::size_t wanted_pairs() const { return quota_; }  // of this share

  // ---- what became of it
  std::vector<std::string> names() const;  // of the replays: "program ctlled 2: exit 206 and log 1: refused"
  const std::vector<sweep::Tried> &tried() const { return tried_; }
  const SweepFindings &findings() const { return findings_; }
  std::chrono::milliseconds time() const { return time_; }
  double processor() const { return processor_; }  // seconds, of all replays

 private:
  // The second deviation is one of the sequel of the first.
  struct Case {
    std::size_t number;  // of the first deviation
    std::optional<std::size_t> second = {};
    std::vector<sweep::Deviation> deviations = {};  // both
    std::vector<std::size_t> followers = {};        // that its replay drew
  };
  struct Failed {
    std::size_t number;  // of the case
    sweep::Outcome outcome;
  };

  std::filesystem::path good_file() const { return folder_ / "good"; }
  std::filesystem::path sequel_file(std::size_t number) const { return folder_ / ("sequel " + std::to_string(number)); }
  void add_options(std::vector<std::string> &words) const;
  std::vector<std::string> command(const Case &one, std::size_t followers) const;
  static std::string name_of(const Case &one);
  std::string name_in_report(const Case &one) const;

  void add_case(Case one);
  void run_pairs(const std::vector<std::size_t> &firsts);
  std::vector<Case> pairs_behind(std::span<const Case> firsts) const;
  void play_from(std::size_t first_case, std::size_t followers);
  void ends(std::size_t number, const runner::JobEnding &ending);
  void keep(const sweep::Fault &fault, const sweep::Outcome &outcome, const Case &one);
  void keep_findings();
  void keep_of_pair(const Failed &pair, const sweep::Outcome &second);
  std::map<std::string, sweep::Outcome> play_seconds_alone() const;
  void play_findings();

  const SweepOptions &options_;
  std::filesystem::path folder_;
  std::vector<play::Step> steps_;
  sweep::Good good_;
  int alarm_;
  std::vector<sweep::Deviation> all_;
  sweep::Fold fold_;
  std::vector<Case> cases_;          // in the order in which they are played
  std::vector<sweep::Tried> tried_;  // of each case
  std::vector<Failed> failed_;
  SweepFindings findings_;
  ProgressOfPlays progress_;
  std::optional<std::chrono::steady_clock::time_point> last_begin_;
  std::chrono::milliseconds time_{0};
  double processor_ = 0;
  std::size_t quota_ = 0, pairs_ = 0;
  bool is_interrupted_ = false;
};

}  // namespace spbox
