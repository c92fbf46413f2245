#include "host/spbox/sweep_one.h"

#include <algorithm>
#include <stdexcept>

#include "host/base/descriptor.h"
#include "host/base/number.h"
#include "host/script/script.h"
#include "host/spbox/whole_file.h"
#include "host/sweep/judge.h"
#include "host/sweep/outcome.h"

namespace spbox {
namespace {

constexpr int kReportFd = 3;

sweep::Deviation deviation_at(const std::string &number, const std::vector<sweep::Deviation> &all) {
  const auto at = base::number_in<std::size_t>(number);
  if (!at || *at >= all.size()) throw std::invalid_argument("\"" + number + "\" names no deviation");
  return all[*at];
}

// Deviations of the sequel, drawn by the seed.
std::vector<std::size_t> draw_followers(const SweepOptions &options, const std::vector<play::Step> &steps,
                                        const sweep::Good &sequel) {
  const sweep::Fold fold(sequel, options.plan.seed);
  auto numbers = sweep::plan(sweep::all_deviations(steps, sequel), options.every ? nullptr : &fold, options.plan);
  numbers.resize(std::min<std::size_t>(numbers.size(), options.followers));
  return numbers;
}

}  // namespace

int sweep_one(const SweepOptions &options, int alarm) {
  const auto steps = swept_steps(options);
  const auto good = sweep::good_in(script::text_of_file(options.good));
  std::vector<sweep::Deviation> met{deviation_at(options.number, sweep::all_deviations(steps, good))};
  if (!options.second.empty()) {
    const auto sequel = sweep::good_in(script::text_of_file(options.sequel));
    met.push_back(deviation_at(options.second, sweep::all_deviations(steps, sequel)));
  }
  sweep::ReplayRules rules = replay_rules(options, alarm, options.good.parent_path());
  rules.notes_sequel = options.followers > 0;
  const sweep::Course course = sweep::replay(steps, good, met, rules);
  std::vector<sweep::Fault> faults;
  if (course.happened) faults = sweep::faults_of(course, good);
  if (!course.left_early.empty()) {
    faults.push_back(
        {"the play went another way before anything was otherwise: " + course.left_early, {course.failed_line}});
  }
  // A second deviation would show the faults of the first one.
  std::vector<std::size_t> followers;
  if (rules.notes_sequel && course.happened && faults.empty()) {
    write_whole_file(options.sequel, sweep::text_of(course.sequel));
    followers = draw_followers(options, steps, course.sequel);
  }
  base::write_all(kReportFd, sweep::text_of(course, faults, followers));
  return faults.empty() ? 0 : kFailure;
}

}  // namespace spbox
