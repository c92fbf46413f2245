#include "host/spbox/sweep_run.h"

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <iterator>

#include "host/play/own_folder.h"
#include "host/runner/judge.h"
#include "host/runner/telling.h"
#include "host/script/script.h"
#include "host/spbox/standard_output.h"
#include "host/spbox/whole_file.h"
#include "host/sweep/draw.h"

namespace spbox {
namespace {

namespace fs = std::filesystem;
using SweepClock = std::chrono::steady_clock;

// So many pairs begin with the same deviation, which is played alone once to see what comes behind it. More do where there are few deviations.
constexpr std::size_t kPairsOfOne = 4;
constexpr std::size_t kFirstsAtATime = 32;  // so that a limit leaves pairs, too
constexpr std::uint64_t kSeeds = 1'000'000'000'000;

std::size_t shares_of(std::size_t sum, std::size_t part) {
  return (sum + part - 1) / part;
}

double seconds_of_processor() {
  rusage usage{};
  getrusage(RUSAGE_CHILDREN, &usage);
  const auto seconds = [](const timeval &time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// What a replay told; nothing where it broke off.
sweep::Outcome outcome_of(const runner::JobEnding &ending) {
  try {
    return sweep::outcome_in(ending.told);
  } catch (const script::Error &) {
    return {};
  }
}

std::string sorts_of(std::span<const sweep::Deviation> deviations) {
  std::string text;
  for (const auto &deviation : deviations) text += (text.empty() ? "" : " and ") + sweep::sort_of(deviation);
  return text;
}

}  // namespace

SweepRun::SweepRun(const SweepOptions &options, std::vector<play::Step> steps, sweep::Good good, fs::path folder,
                   int alarm)
    : options_(options),
      folder_(std::move(folder)),
      steps_(std::move(steps)),
      good_(std::move(good)),
      alarm_(alarm),
      all_(sweep::all_deviations(steps_, good_)),
      fold_(good_, options.plan.seed),
      findings_(options.files.script, findings_folder(options), options.pages),
      progress_(0, "replay") {
  write_whole_file(good_file(), sweep::text_of(good_));
}

void SweepRun::run() {
  if (options_.limit > 0) last_begin_ = SweepClock::now() + std::chrono::seconds(options_.limit);
  const auto numbers = sweep::plan(all_, options_.every ? nullptr : &fold_, options_.plan);
  if (options_.depth == 1) {
    for (const std::size_t number : numbers) add_case({.number = number, .deviations = {all_[number]}});
    progress_.awaits(cases_.size());
    if (!options_.list) play_from(0, 0);
  } else {
    run_pairs(numbers);
  }
  progress_.clear();
  processor_ = seconds_of_processor();
  time_ = progress_.time();
  if (options_.list) return;
  keep_findings();
  play_findings();
  play::OwnFolder::remove_what_the_dead_left();
}

bool SweepRun::is_over() const {
  return last_begin_ && SweepClock::now() > *last_begin_;
}

bool SweepRun::has_named() const {
  return std::ranges::any_of(all_, [this](const auto &deviation) { return is_named(deviation, options_.plan); });
}

std::vector<std::string> SweepRun::names() const {
  std::vector<std::string> names;
  for (const Case &one : cases_) {
    if (options_.depth == 1 || one.second) names.push_back(name_of(one));
  }
  return names;
}

// ---- which there are

// The first deviations are played alone; of what comes behind each, some second ones are drawn. Which depends on nothing but the seed
// and the share.
void SweepRun::run_pairs(const std::vector<std::size_t> &firsts) {
  const runner::Shard &shard = options_.plan.shard;
  quota_ = options_.pairs / shard.shares + (shard.number <= options_.pairs % shard.shares ? 1 : 0);
  if (firsts.empty()) return;
  const std::size_t of_one = std::max(kPairsOfOne, shares_of(quota_, firsts.size()));
  for (std::size_t next = 0; next < firsts.size() && pairs_ < quota_ && !is_over() && !is_interrupted_;) {
    const std::size_t begin = cases_.size();
    const std::size_t end = std::min({firsts.size(), next + kFirstsAtATime, next + shares_of(quota_ - pairs_, of_one)});
    for (; next < end; ++next) add_case({.number = firsts[next], .deviations = {all_[firsts[next]]}});
    progress_.awaits(cases_.size() + quota_ - pairs_);
    play_from(begin, of_one);
    const std::size_t first_pair = cases_.size();
    for (Case &pair : pairs_behind(std::span(cases_).subspan(begin))) {
      if (pairs_ == quota_) break;
      add_case(std::move(pair));
      ++pairs_;
    }
    if (!options_.list) play_from(first_pair, 0);
  }
}

std::vector<SweepRun::Case> SweepRun::pairs_behind(std::span<const Case> firsts) const {
  std::vector<Case> pairs;
  for (const Case &first : firsts) {
    if (first.followers.empty()) continue;
    const auto behind = sweep::all_deviations(steps_, sweep::good_in(script::text_of_file(sequel_file(first.number))));
    for (const std::size_t number : first.followers) {
      pairs.push_back(
          {.number = first.number, .second = number, .deviations = {all_[first.number], behind.at(number)}});
    }
  }
  return pairs;
}

void SweepRun::add_case(Case one) {
  const bool is_pair = one.second.has_value();
  const sweep::Deviation &first = one.deviations.front();
  tried_.push_back({is_pair ? "pair" : sweep::kind_of(first), is_pair ? "" : std::string(first.row->word), {}});
  tried_.back().result.name = name_in_report(one);
  cases_.push_back(std::move(one));
}

std::string SweepRun::name_of(const Case &one) {
  std::string name;
  for (const auto &deviation : one.deviations) name += (name.empty() ? "" : " and ") + sweep::name_of(deviation);
  return name;
}

// Readers of JUnit group by what stands before the last slash.
std::string SweepRun::name_in_report(const Case &one) const {
  const std::string stem = options_.files.script.stem().string();
  return stem + "/" + (one.second ? "pairs" : std::string(one.deviations.front().row->word)) + "/" + name_of(one);
}

// ---- each of them

void SweepRun::add_options(std::vector<std::string> &words) const {
  std::ranges::copy(options_.speed.words(), std::back_inserter(words));
  std::ranges::copy(options_.machine.words(), std::back_inserter(words));
}

std::vector<std::string> SweepRun::command(const Case &one, std::size_t followers) const {
  std::vector<std::string> words{this_program(), "sweep",    "--good",
                                 good_file(),    "--number", std::to_string(one.number)};
  if (one.second) words.insert(words.end(), {"--second", std::to_string(*one.second)});
  if (one.second || followers > 0) words.insert(words.end(), {"--sequel", sequel_file(one.number)});
  if (followers > 0) {
    words.insert(words.end(), {"--followers", std::to_string(followers)});
    if (!options_.plan.only.empty()) words.insert(words.end(), {"--only", options_.plan.only});
    words.insert(words.end(),
                 {"--seed", std::to_string(sweep::Draw::hash_of(name_of(one), options_.plan.seed) % kSeeds)});
    if (options_.every) words.emplace_back("--every");
  }
  words.insert(words.end(), {"--findings", findings_folder(options_)});
  add_options(words);
  words.insert(words.end(), {"--", options_.files.script});
  words.insert(words.end(), options_.words.begin(), options_.words.end());
  return words;
}

// All cases from this one on; so many second deviations are drawn behind each.
void SweepRun::play_from(std::size_t first_case, std::size_t followers) {
  std::vector<runner::Job> jobs;
  for (std::size_t i = first_case; i < cases_.size(); ++i) {
    jobs.push_back({name_of(cases_[i]), command(cases_[i], followers)});
  }
  run_side_by_side(
      jobs,
      {.width = options_.pool.width(), .limit = longest_replay(options_), .alarm = alarm_, .last_begin = last_begin_},
      {.begins = [&](std::size_t job) { progress_.begins(jobs[job].name); },
       .ends =
           [&](std::size_t job, const runner::JobEnding &ending) {
             progress_.ends(jobs[job].name);
             ends(first_case + job, ending);
           },
       .second_passes = [&] { progress_.show(); }});
}

// ---- what became of each

void SweepRun::ends(std::size_t number, const runner::JobEnding &ending) {
  const Case &one = cases_[number];
  runner::Result &result = tried_[number].result;
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
  if (result.verdict == runner::Verdict::kUnplayed && is_over()) {
    result.reason = "the limit was over before it began\n";
  }
  const bool is_played = outcome.is_told && !ending.hung && !ending.interrupted;
  if (is_played && !outcome.happened) {
    result.verdict = runner::Verdict::kUnplayed;
    result.reason = "the command did not come there\n";
  }
  if (is_played && !outcome.faults.empty()) {
    result.verdict = runner::Verdict::kFailed;
    result.reason.clear();
    for (const sweep::Fault &fault : outcome.faults) result.reason += fault.what + "\n";
    failed_.push_back({number, outcome});
  }
  is_interrupted_ |= ending.interrupted && !is_over();
  if (is_played) cases_[number].followers = outcome.followers;
  progress_.counts(is_wrong(result.verdict));
  if (!is_wrong(result.verdict) || options_.list) return progress_.show();
  progress_.clear();
  print(row_of(result.verdict).word + ("  " + name_of(one)) + "\n    " + runner::headline_of(result) + "\n");
  std::fflush(stdout);
}

void SweepRun::keep(const sweep::Fault &fault, const sweep::Outcome &outcome, const Case &one) {
  findings_.keep(fault, outcome, name_of(one), sorts_of(one.deviations));
}

// In the order of the cases, whichever ended first.
void SweepRun::keep_findings() {
  std::ranges::sort(failed_, {}, &Failed::number);
  for (const Failed &one : failed_) {
    if (cases_[one.number].second) continue;
    for (const sweep::Fault &fault : one.outcome.faults) keep(fault, one.outcome, cases_[one.number]);
  }
  auto alone = play_seconds_alone();
  for (const Failed &pair : failed_) {
    const Case &both = cases_[pair.number];
    if (both.second) keep_of_pair(pair, alone[sweep::name_of(both.deviations.back())]);
  }
}

// What the second deviation brings about alone, too, is shown with it alone. The first one brought nothing about.
void SweepRun::keep_of_pair(const Failed &pair, const sweep::Outcome &second) {
  const Case &both = cases_[pair.number];
  const Case last{.number = 0, .deviations = {both.deviations.back()}};
  for (const sweep::Fault &fault : pair.outcome.faults) {
    const auto same = std::ranges::find(second.faults, fault.what, &sweep::Fault::what);
    if (same != second.faults.end()) {
      keep(*same, second, last);
    } else if (findings_.has(fault, sorts_of(last.deviations))) {
      keep(fault, pair.outcome, last);
    } else {
      keep(fault, pair.outcome, both);
    }
  }
}

// Of the pairs that failed, by name. To some, the good play never comes.
std::map<std::string, sweep::Outcome> SweepRun::play_seconds_alone() const {
  std::map<std::string, std::size_t> numbers;
  for (std::size_t i = 0; i < all_.size() && !failed_.empty(); ++i) numbers[sweep::name_of(all_[i])] = i;
  std::map<std::string, sweep::Outcome> alone;
  std::vector<runner::Job> jobs;
  for (const Failed &pair : failed_) {
    const Case &both = cases_[pair.number];
    const auto number = numbers.find(sweep::name_of(both.deviations.back()));
    if (!both.second || number == numbers.end() || !alone.try_emplace(number->first).second) continue;
    jobs.push_back({number->first, command({.number = number->second, .deviations = {all_[number->second]}}, 0)});
  }
  run_side_by_side(
      jobs, {.width = options_.pool.width(), .limit = longest_replay(options_), .alarm = alarm_},
      {.begins = [](std::size_t) {},
       .ends = [&](std::size_t job, const runner::JobEnding &ending) { alone[jobs[job].name] = outcome_of(ending); },
       .second_passes = [] {}});
  return alone;
}

// Shows each finding once more.
void SweepRun::play_findings() {
  std::vector<std::string> options;
  add_options(options);
  findings_.play_again(options, {.width = options_.pool.width(), .limit = longest_replay(options_), .alarm = alarm_});
}

}  // namespace spbox
