// Plays a good play again and again, each time with something otherwise, and judges what the command makes of it.
#include <sys/resource.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <set>

#include "host/base/descriptor.h"
#include "host/base/shown.h"
#include "host/play/interrupts.h"
#include "host/play/own_folder.h"
#include "host/play/performance.h"
#include "host/runner/judge.h"
#include "host/runner/telling.h"
#include "host/spbox/log_book.h"
#include "host/spbox/machine.h"
#include "host/spbox/play_verbs.h"
#include "host/spbox/pool_options.h"
#include "host/spbox/progress_line.h"
#include "host/spbox/speed.h"
#include "host/spbox/standard_output.h"
#include "host/spbox/sweep_findings.h"
#include "host/spbox/test_report.h"
#include "host/spbox/verbs.h"
#include "host/spbox/whole_file.h"
#include "host/sweep/outcome.h"
#include "host/sweep/plan.h"
#include "host/sweep/replay.h"
#include "host/sweep/table.h"
#include "host/terminal/terminal.h"

namespace spbox {
namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;
using SweepClock = std::chrono::steady_clock;

constexpr int kReportFd = 3;
constexpr milliseconds kLongestWork{120'000};       // of a replay, on the wall
constexpr milliseconds kLongestSilence{3'600'000};  // of a command, in the box's time

struct SweepOptions {
  play::Files files;
  std::vector<std::string> words;  // NAME=VALUE
  play::Values values;
  sweep::PlanRules plan;
  PoolOptions pool;
  SpeedOption speed{"full"};
  MachineOption machine;
  std::uint32_t limit = 0;  // seconds on the wall; 0: none
  std::uint32_t pairs = 0;  // 0: as many as the plan has
  bool list = false, every = false;
  TestReports reports;
  fs::path findings;
  fs::path pages;  // of the findings; empty: none

  // Of one replay.
  fs::path good;
  std::string numbers;
};

fs::path this_program() {
  return fs::read_symlink("/proc/self/exe");
}

milliseconds longest_replay(const SweepOptions &options) {
  const box_time::Speed speed = *options.speed.speed();
  return speed.is_full() ? kLongestWork : kLongestWork + kLongestSilence / speed.times;
}

fs::path findings_folder(const SweepOptions &options) {
  if (!options.findings.empty()) return options.findings;
  return options.files.script.stem().string() + ".findings";
}

sweep::ReplayRules rules_for(const SweepOptions &options, int alarm, const fs::path &folder) {
  return {.spbox = this_program().string(),
          .limit = kLongestSilence,
          .alarm = alarm,
          .speed = *options.speed.speed(),
          .log = [](const box::Place &place) { return log_of(place, sentence_of); },
          .options = options.machine.words(),
          .checkpoints = sweep::Checkpoints(folder),
          .findings = findings_folder(options)};
}

std::vector<play::Step> steps_of(const SweepOptions &options) {
  auto steps = play::prepare(options.files, options.values, verbs_that_work_on_box());
  for (const play::Step &step : steps) {
    if (step.row->traits.turns_to_operator) throw step.error("a sweep follows one operator");
    const bool is_of_points = step.row->traits.names_verb && (step.words[0] == "points" || step.words[0] == "deviate");
    if (is_of_points) throw step.error("the points of a play that is swept are the sweep's");
  }
  return steps;
}

// ---- one replay, for the process that counts

int replay_one(const SweepOptions &options, int alarm) {
  const auto steps = steps_of(options);
  const auto good = sweep::good_in(script::text_of_file(options.good));
  const auto all = sweep::all_deviations(steps, good);
  std::vector<sweep::Deviation> met;
  for (const std::size_t number : sweep::case_in(options.numbers, all.size())) met.push_back(all[number]);
  const sweep::Course course = sweep::replay(steps, good, met, rules_for(options, alarm, options.good.parent_path()));
  std::vector<sweep::Fault> faults;
  if (course.happened) faults = sweep::faults_of(course, good);
  if (!course.left_early.empty()) {
    faults.push_back(
        {"the play went another way before anything was otherwise: " + course.left_early, {course.failed_line}});
  }
  base::write_all(kReportFd, sweep::text_of(course, faults));
  return faults.empty() ? 0 : kFailure;
}

// ---- all of them

double seconds_of_processor() {
  rusage usage{};
  getrusage(RUSAGE_CHILDREN, &usage);
  const auto seconds = [](const timeval &time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

class Sweep {
 public:
  // The folder is for what the replays need of the good play.
  Sweep(const SweepOptions &options, std::vector<play::Step> steps, sweep::Good good, fs::path folder, int alarm)
      : options_(options),
        folder_(std::move(folder)),
        steps_(std::move(steps)),
        good_(std::move(good)),
        alarm_(alarm),
        all_(sweep::all_deviations(steps_, good_)),
        fold_(good_, options.plan.seed),
        cases_(sweep::plan(all_, options.every ? nullptr : &fold_, options.plan)),
        findings_(options.files.script, findings_folder(options), options.pages),
        progress_(cases_.size(), "replay") {
    write_whole_file(good_file(), sweep::text_of(good_));
    for (const sweep::Case &one : cases_) {
      jobs_.push_back({sweep::name_of(one, all_), command(one)});
      const sweep::Deviation &first = all_[one.front()];
      const bool is_pair = one.size() > 1;
      tried_.push_back({is_pair ? "pair" : sweep::kind_of(first), is_pair ? "" : std::string(first.row->word), {}});
      tried_.back().result.name = name_in_report(one);
    }
  }

  void run() {
    runner::PoolRules rules{options_.pool.width(), longest_replay(options_), alarm_};
    if (options_.limit > 0) last_begin_ = SweepClock::now() + std::chrono::seconds(options_.limit);
    rules.last_begin = last_begin_;
    run_side_by_side(jobs_, rules,
                     {.begins = [&](std::size_t job) { progress_.begins(jobs_[job].name); },
                      .ends = [&](std::size_t job, const runner::JobEnding &ending) { ends(job, ending); },
                      .second_passes = [&] { progress_.show(); }});
    progress_.clear();
    processor_ = seconds_of_processor();
    time_ = progress_.time();
    keep_pairs();
    play_findings();
    play::OwnFolder::remove_what_the_dead_left();
  }

  bool is_over() const { return last_begin_ && SweepClock::now() > *last_begin_; }

  // Whether --only names a deviation. A shard may have none of those that it names.
  bool has_named() const {
    return std::ranges::any_of(all_, [this](const auto &deviation) { return is_named(deviation, options_.plan); });
  }

  // Whether two of these are at different points, so that they can make a pair.
  bool has_pairs() const {
    std::set<std::string> places;
    for (const sweep::Deviation &deviation : all_) {
      if (is_named(deviation, options_.plan)) places.insert(where(deviation));
    }
    return places.size() > 1;
  }

  void tell_of_few_pairs() const {
    const bool is_whole = options_.plan.depth > 1 && options_.plan.shard.shares == 1;
    if (is_whole && cases_.size() < options_.plan.draws) {
      print_line("Only " + std::to_string(cases_.size()) + " different pairs were drawn: there are few.");
    }
  }

  void list() const {
    for (const runner::Job &job : jobs_) print_line(job.name);
  }

  int report(std::chrono::system_clock::time_point date) const {
    const auto results = results_of();
    print_line("");
    print(sweep::table_of(sweep::tallies_of(tried_)));
    findings_.tell();
    print_line("");
    print_line(summary(results));
    const bool are_written = write_reports(options_.reports, "spbox sweep", results, time_, date, json(results));
    const bool is_good = std::ranges::none_of(results, runner::is_wrong, &runner::Result::verdict);
    return is_good && are_written ? 0 : kFailure;
  }

 private:
  fs::path good_file() const { return folder_ / "good"; }

  void add_options(std::vector<std::string> &words) const {
    std::ranges::copy(options_.speed.words(), std::back_inserter(words));
    std::ranges::copy(options_.machine.words(), std::back_inserter(words));
  }

  std::vector<std::string> command(const sweep::Case &one) const {
    std::vector<std::string> words{this_program(), "sweep", "--good", good_file(), "--numbers", sweep::text_of(one)};
    words.insert(words.end(), {"--findings", findings_folder(options_)});
    add_options(words);
    words.insert(words.end(), {"--", options_.files.script});
    words.insert(words.end(), options_.words.begin(), options_.words.end());
    return words;
  }

  // Readers of JUnit group by what stands before the last slash.
  std::string name_in_report(const sweep::Case &one) const {
    const std::string stem = options_.files.script.stem().string();
    if (one.size() > 1) return stem + "/pairs/" + sweep::name_of(one, all_);
    return stem + "/" + std::string(all_[one.front()].row->word) + "/" + sweep::name_of(one, all_);
  }

  std::string sorts_of(const sweep::Case &one) const {
    std::string text;
    for (const std::size_t number : one) text += (text.empty() ? "" : " and ") + sort_of(all_[number]);
    return text;
  }

  // What a replay told; nothing where it broke off.
  static sweep::Outcome outcome_of(const runner::JobEnding &ending) {
    try {
      return sweep::outcome_in(ending.told);
    } catch (const script::Error &) {
      return {};
    }
  }

  void ends(std::size_t job, const runner::JobEnding &ending) {
    progress_.ends(jobs_[job].name);
    runner::Result &result = tried_[job].result;
    const std::string name = result.name;
    const sweep::Outcome outcome = outcome_of(ending);
    result = runner::judge(ending, longest_replay(options_));
    result.name = name;
    result.account = {};
    if (result.verdict == runner::Verdict::kHung) {
      result.reason = "the replay was not done in " + runner::time_text(longest_replay(options_)) + ", and was ended\n";
    }
    if (result.verdict == runner::Verdict::kPassed && !outcome.is_told) {
      result.verdict = runner::Verdict::kDied;
      result.reason = "the replay did not tell what became of it\n";
    }
    if (result.verdict == runner::Verdict::kUnplayed && is_over())
      result.reason = "the limit was over before it began\n";
    const bool is_played = outcome.is_told && !ending.hung && !ending.interrupted;
    if (is_played && !outcome.happened) {
      result.verdict = runner::Verdict::kUnplayed;
      result.reason = "the command did not come there\n";
    }
    if (is_played && !outcome.faults.empty()) {
      result.verdict = runner::Verdict::kFailed;
      result.reason.clear();
      for (const sweep::Fault &fault : outcome.faults) {
        result.reason += fault.what + "\n";
        if (cases_[job].size() == 1) keep(fault, outcome, cases_[job]);
      }
      if (cases_[job].size() > 1) failed_pairs_.push_back({job, outcome});
    }
    progress_.counts(is_wrong(result.verdict));
    if (!is_wrong(result.verdict)) return progress_.show();
    progress_.clear();
    print(row_of(result.verdict).word + ("  " + jobs_[job].name) + "\n    " + runner::headline_of(result) + "\n");
    std::fflush(stdout);
  }

  void keep(const sweep::Fault &fault, const sweep::Outcome &outcome, const sweep::Case &one) {
    findings_.keep(fault, outcome, sweep::name_of(one, all_), sorts_of(one));
  }

  // What one of the two brings about alone is shown with this one.
  void keep_pairs() {
    std::map<std::size_t, sweep::Outcome> alone;
    for (const FailedPair &pair : failed_pairs_) {
      for (const std::size_t number : cases_[pair.job]) alone[number];
    }
    std::vector<std::size_t> numbers;
    std::vector<runner::Job> jobs;
    for (const auto &[number, outcome] : alone) {
      numbers.push_back(number);
      jobs.push_back({name_of(all_[number]), command({number})});
    }
    run_side_by_side(
        jobs, {options_.pool.width(), longest_replay(options_), alarm_},
        {.begins = [](std::size_t) {},
         .ends = [&](std::size_t job, const runner::JobEnding &ending) { alone[numbers[job]] = outcome_of(ending); },
         .second_passes = [] {}});
    for (const FailedPair &pair : failed_pairs_) {
      for (const sweep::Fault &fault : pair.outcome.faults) keep_of_pair(fault, pair, alone);
    }
  }

  struct FailedPair {
    std::size_t job;
    sweep::Outcome outcome;
  };

  void keep_of_pair(const sweep::Fault &fault, const FailedPair &pair,
                    const std::map<std::size_t, sweep::Outcome> &alone) {
    for (const std::size_t number : cases_[pair.job]) {
      const sweep::Outcome &outcome = alone.at(number);
      const auto same = std::ranges::find(outcome.faults, fault.what, &sweep::Fault::what);
      if (same != outcome.faults.end()) return keep(*same, outcome, {number});
    }
    keep(fault, pair.outcome, cases_[pair.job]);
  }

  // Shows each finding once more.
  void play_findings() {
    std::vector<std::string> options;
    add_options(options);
    findings_.play_again(options, {options_.pool.width(), longest_replay(options_), alarm_});
  }

  // ---- reports

  std::vector<runner::Result> results_of() const {
    std::vector<runner::Result> results;
    for (const sweep::Tried &one : tried_) results.push_back(one.result);
    return results;
  }

  std::size_t points() const {
    std::size_t number = 0;
    for (const sweep::PointRange &range : good_.points) number += range.last - range.first + 1;
    return number;
  }

  std::string summary(std::span<const runner::Result> results) const {
    const auto wrong = std::ranges::count_if(results, runner::is_wrong, &runner::Result::verdict);
    const std::size_t played = results.size() - count(results, runner::Verdict::kUnplayed);
    std::array<char, 96> cost{};
    std::snprintf(cost.data(), cost.size(), ", %.0f s of CPU, %.0f ms each", processor_,
                  processor_ * 1000 / static_cast<double>(std::max<std::size_t>(played, 1)));
    return base::shown(options_.files.script.string()) + ": " + std::to_string(points()) + " points of " +
           std::to_string(fold_.classes()) + " kinds, " + std::to_string(all_.size()) + " deviations, " +
           std::to_string(played) + (played == results.size() ? "" : " of " + std::to_string(results.size())) +
           " replays in " + runner::time_text(time_) + cost.data() + ": " +
           std::to_string(count(results, runner::Verdict::kPassed)) + " passed, " + std::to_string(wrong) +
           " failed, " + std::to_string(count(results, runner::Verdict::kUnplayed)) + " unplayed.";
  }

  Json json(std::span<const runner::Result> results) const {
    Json::List replays, table;
    for (const runner::Result &result : results) replays.push_back(json_of_result(result));
    for (const sweep::Tally &tally : sweep::tallies_of(tried_)) {
      table.push_back(Json::Object{{"point", tally.kind},
                                   {"deviation", tally.deviation},
                                   {"passed", tally.passed},
                                   {"wrong", tally.failed},
                                   {"unplayed", tally.unplayed}});
    }
    return Json::Object{
        {"play", options_.files.script.string()},
        {"seed", options_.plan.seed},
        {"depth", options_.plan.depth},
        {"shard", std::to_string(options_.plan.shard.number) + "/" + std::to_string(options_.plan.shard.shares)},
        {"points", points()},
        {"kinds_of_points", fold_.classes()},
        {"deviations", all_.size()},
        {"passed", count(results, runner::Verdict::kPassed)},
        {"wrong", std::ranges::count_if(results, runner::is_wrong, &runner::Result::verdict)},
        {"unplayed", count(results, runner::Verdict::kUnplayed)},
        {"milliseconds", time_.count()},
        {"table", table},
        {"findings", findings_.json()},
        {"replays", replays}};
  }

  const SweepOptions &options_;
  fs::path folder_;
  std::vector<play::Step> steps_;
  sweep::Good good_;
  int alarm_;
  std::vector<sweep::Deviation> all_;
  sweep::Fold fold_;
  std::vector<sweep::Case> cases_;
  std::vector<FailedPair> failed_pairs_;
  SweepFindings findings_;
  std::optional<SweepClock::time_point> last_begin_;
  milliseconds time_{0};
  double processor_ = 0;
  std::vector<runner::Job> jobs_;
  std::vector<sweep::Tried> tried_;
  ProgressOfPlays progress_;
};

int sweep_all(const SweepOptions &options, int alarm) {
  const auto date = std::chrono::system_clock::now();
  auto steps = steps_of(options);
  const play::OwnFolder folder;
  auto good = sweep::play_well(steps, rules_for(options, alarm, folder.path()));
  Sweep sweep(options, std::move(steps), std::move(good), folder.path(), alarm);
  if (!sweep.has_named()) {
    const std::string script = options.files.script.string();
    const std::string &only = options.plan.only;
    if (only.empty()) throw UsageError(script + " comes to no point at which anything could be otherwise.");
    throw UsageError("no deviation of " + script + " has \"" + base::shown(only) +
                     "\" in its name. --list prints the names.");
  }
  if (options.plan.depth > 1 && !sweep.has_pairs()) {
    throw UsageError("a pair is of two deviations at different points, and no two of " + options.files.script.string() +
                     " have \"" + base::shown(options.plan.only) + "\" in their names. --list prints the names.");
  }
  sweep.tell_of_few_pairs();
  if (options.list) {
    sweep.list();
    return 0;
  }
  sweep.run();
  return sweep.report(date);
}

int sweep_play(const SweepOptions &options) {
  check_reports(options.reports);
  options.machine.check_is_installed();
  make_report_folder("--report", options.pages);
  const fs::path findings = findings_folder(options);
  if (fs::exists(findings)) make_report_folder("--findings", findings);  // another one is made for the first finding
  const play::Interrupts interrupts;
  int status = kFailure;
  try {
    status = options.good.empty() ? sweep_all(options, interrupts.alarm()) : replay_one(options, interrupts.alarm());
  } catch (const terminal::Interrupted &) {
  }
  return interrupts.signal() == 0 ? status : interrupts.die();
}

void judge_sweep_words(SweepOptions &options) {
  try {
    for (const auto &word : options.words) play::add_value(word, options.values);
  } catch (const std::invalid_argument &wrong) {
    throw UsageError(wrong.what() + std::string("."));
  }
  if (options.files.script == "-") throw UsageError("a sweep reads its play for each replay: it has to be a file.");
  options.pool.check();
  options.speed.check();
  options.plan.shard = options.pool.shard();
  if (options.pairs > 0 && options.plan.depth == 1) throw UsageError("--pairs goes with --depth 2.");
  if (options.pairs > 0) options.plan.draws = options.pairs;
  if (options.good.empty() != options.numbers.empty()) throw UsageError("--good and --numbers belong together.");
}

std::vector<Word> words_of_sweep(SweepOptions &options) {
  return {{.name = "PLAY",
           .help = "A play that passes, with a box of its own",
           .to = &options.files.script,
           .need = Need::kRequired},
          {.name = "NAME=VALUE", .help = "What $NAME stands for in the play", .to = &options.words},
          {.name = "--depth",
           .help = "So many deviations at a time, 1 or 2; 1 without it",
           .to = number(options.plan.depth, 1, 2),
           .value = "N"},
          {.name = "--pairs",
           .help = "With --depth 2: so many pairs are drawn; 1000\nwithout it",
           .to = number(options.pairs, 1, 1'000'000),
           .value = "N"},
          {.name = "--seed",
           .help = "Gives the order and the pairs; 1 without it",
           .to = number(options.plan.seed, 0, 1'000'000'000'000),
           .value = "S"},
          {.name = "--only",
           .help = "Only deviations with this text in their name, as\n--list shows it",
           .to = &options.plan.only,
           .value = "TEXT"},
          options.pool.shard_word("A share of the replays: 2/8 is the second of eight"),
          {.name = "--limit",
           .help = "No replay begins after so many seconds",
           .to = number(options.limit, 1, 1'000'000),
           .value = "SECONDS"},
          options.pool.width_word(),
          options.speed.word(),
          options.machine.word(),
          {.name = "--every", .help = "At each point, not at some of each class of equal ones", .to = &options.every},
          {.name = "--list", .help = "Only print the deviations", .to = &options.list},
          {.name = "--findings",
           .help = "Keep there a play for each fault that is found;\nPLAY.findings without it",
           .to = &options.findings,
           .value = "DIR"},
          {.name = "--report",
           .help = "Keep there a page of each of these plays, as\n--report of the verb play does",
           .to = &options.pages,
           .value = "DIR"},
          options.reports.junit_word(),
          options.reports.json_word(),
          {.name = "--good",
           .help = "One replay: what the good play came to",
           .to = &options.good,
           .value = "FILE",
           .is_hidden = true},
          {.name = "--numbers",
           .help = "One replay: its deviations, counted from 0; the\nreport goes to descriptor 3",
           .to = &options.numbers,
           .value = "N,N",
           .is_hidden = true}};
}

}  // namespace

Verb sweep_verb() {
  auto options = std::make_shared<SweepOptions>();
  return {.name = "sweep",
          .line = "Play a good play with all that can go wrong, and judge",
          .words = words_of_sweep(*options),
          .footer =
              "The play is played once, and each point at which something could be otherwise\n"
              "is counted: a control program, a record, a database, a file, a record of the\n"
              "trace, a question to the operator. Then it is played again, once for each\n"
              "deviation, at full speed, in a box of its own. Where the command leaves the\n"
              "way of the play, the operator answers with care until it ends. Then it has to\n"
              "have ended in time, with all in order or named on the screen, with a true exit\n"
              "status and a true log.\n\n"
              "Exit status: 0 nothing was found, 1 something was, 2 the play cannot be read,\n"
              "or the command line makes no sense.\n\n"
              "Examples:\n"
              "  spbox sweep replace.play\n"
              "  spbox sweep replace.play --only 'program ctlled' --findings found\n"
              "  spbox sweep replace.play --depth 2 --pairs 500 --seed 7 --shard 2/8",
          .check = [options] { judge_sweep_words(*options); },
          .act = [options] { return sweep_play(*options); }};
}

}  // namespace spbox
