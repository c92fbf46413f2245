#include "host/spbox/sweep_report.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <string>
#include <vector>

#include "host/base/shown.h"
#include "host/runner/telling.h"
#include "host/spbox/standard_output.h"

namespace spbox {
namespace {

std::size_t points_of(const sweep::Good &good) {
  std::size_t number = 0;
  for (const sweep::PointRange &range : good.points) number += range.last - range.first + 1;
  return number;
}

std::size_t wrong_in(std::span<const runner::Result> results) {
  return static_cast<std::size_t>(std::ranges::count_if(results, runner::is_wrong, &runner::Result::verdict));
}

// A share may have nothing to replay: then it costs what the good play costs.
std::string cost_of(double seconds, std::size_t played) {
  const std::string each =
      played == 0 ? "" : ", " + std::to_string(std::lround(seconds * 1000 / static_cast<double>(played))) + " ms each";
  return ", " + std::to_string(std::lround(seconds)) + " s of CPU" + each;
}

std::string summary(const SweepOptions &options, const SweepRun &run, std::span<const runner::Result> results) {
  const std::size_t unplayed = count(results, runner::Verdict::kUnplayed), played = results.size() - unplayed;
  return base::shown(options.files.script.string()) + ": " + std::to_string(points_of(run.good())) + " points of " +
         std::to_string(run.classes()) + " kinds, " + std::to_string(run.deviations()) + " deviations, " +
         std::to_string(played) + (unplayed == 0 ? "" : " of " + std::to_string(results.size())) + " replays" +
         (options.depth == 1 ? "" : ", " + std::to_string(run.pairs()) + " of pairs,") + " in " +
         runner::time_text(run.time()) + cost_of(run.processor(), played) + ": " +
         std::to_string(count(results, runner::Verdict::kPassed)) + " passed, " + std::to_string(wrong_in(results)) +
         " failed, " + std::to_string(unplayed) + " unplayed.";
}

// Of what passed, there is no more to tell. What a failed one left stands in its reason, and the play that shows it in the findings.
Json json_of_replay(const runner::Result &result) {
  Json::Object members{
      {"name", result.name}, {"result", row_of(result.verdict).word}, {"milliseconds", result.time.count()}};
  if (!result.reason.empty()) members.push_back({"reason", result.reason});
  return members;
}

Json json_of(const SweepOptions &options, const SweepRun &run, std::span<const runner::Result> results) {
  Json::List replays, table;
  for (const runner::Result &result : results) replays.push_back(json_of_replay(result));
  for (const sweep::Tally &tally : sweep::tallies_of(run.tried())) {
    table.push_back(Json::Object{{"point", tally.kind},
                                 {"deviation", tally.deviation},
                                 {"passed", tally.passed},
                                 {"wrong", tally.failed},
                                 {"unplayed", tally.unplayed}});
  }
  const runner::Shard &shard = options.plan.shard;
  return Json::Object{{"play", options.files.script.string()},
                      {"seed", options.plan.seed},
                      {"depth", options.depth},
                      {"shard", std::to_string(shard.number) + "/" + std::to_string(shard.shares)},
                      {"points", points_of(run.good())},
                      {"kinds_of_points", run.classes()},
                      {"deviations", run.deviations()},
                      {"pairs", run.pairs()},
                      {"passed", count(results, runner::Verdict::kPassed)},
                      {"wrong", wrong_in(results)},
                      {"unplayed", count(results, runner::Verdict::kUnplayed)},
                      {"milliseconds", run.time().count()},
                      {"table", table},
                      {"findings", run.findings().json()},
                      {"replays", replays}};
}

void tell_of_few_pairs(const SweepRun &run) {
  if (run.pairs() >= run.wanted_pairs()) return;
  const char *const why = run.is_interrupted() ? "the sweep was interrupted."
                          : run.is_over()      ? "the limit was over."
                                               : "there are no more.";
  print_line("Only " + std::to_string(run.pairs()) + " pairs of " + std::to_string(run.wanted_pairs()) +
             " were drawn: " + why);
}

}  // namespace

int report_sweep(const SweepOptions &options, const SweepRun &run, std::chrono::system_clock::time_point date) {
  std::vector<runner::Result> results;
  for (const sweep::Tried &one : run.tried()) results.push_back(one.result);
  print_line("");
  print(sweep::table_of(sweep::tallies_of(run.tried())));
  run.findings().tell();
  print_line("");
  tell_of_few_pairs(run);
  print_line(summary(options, run, results));
  const bool are_written =
      write_reports(options.reports, "spbox sweep", results, run.time(), date, json_of(options, run, results));
  return wrong_in(results) == 0 && are_written ? 0 : kFailure;
}

}  // namespace spbox
