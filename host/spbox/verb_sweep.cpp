// Plays a good play again and again, each time with something otherwise, and judges what the command makes of it.
#include <chrono>
#include <filesystem>
#include <memory>

#include "host/base/shown.h"
#include "host/play/interrupts.h"
#include "host/play/own_folder.h"
#include "host/spbox/standard_output.h"
#include "host/spbox/sweep_one.h"
#include "host/spbox/sweep_report.h"
#include "host/spbox/sweep_run.h"
#include "host/spbox/verbs.h"
#include "host/sweep/good_play.h"
#include "host/terminal/terminal.h"

namespace spbox {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void refuse_without_deviations(const SweepOptions &options) {
  const std::string script = options.files.script.string();
  const std::string &only = options.plan.only;
  if (only.empty()) throw UsageError(script + " comes to no point at which anything could be otherwise.");
  throw UsageError("no deviation of " + script + " has \"" + base::shown(only) +
                   "\" in its name. --list prints the names.");
}

[[noreturn]] void refuse_without_pairs(const SweepOptions &options) {
  const std::string &only = options.plan.only;
  throw UsageError("no deviation of " + options.files.script.string() +
                   (only.empty() ? "" : " with \"" + base::shown(only) + "\" in its name") +
                   " comes behind another one that passes alone.");
}

int sweep_all(const SweepOptions &options, int alarm) {
  const auto date = std::chrono::system_clock::now();
  auto steps = swept_steps(options);
  const play::OwnFolder folder;
  auto good = sweep::play_well(steps, replay_rules(options, alarm, folder.path()));
  SweepRun run(options, std::move(steps), std::move(good), folder.path(), alarm);
  if (!run.has_named()) refuse_without_deviations(options);
  run.run();
  const int status = options.list ? 0 : report_sweep(options, run, date);
  if (options.list) {
    for (const std::string &name : run.names()) print_line(name);
  }
  const bool may_have_none =
      options.depth == 1 || options.plan.shard.shares > 1 || run.is_over() || run.is_interrupted();
  if (run.pairs() == 0 && !may_have_none && status == 0) refuse_without_pairs(options);
  return status;
}

int sweep_play(const SweepOptions &options) {
  check_reports(options.reports);
  options.machine.check_is_installed();
  make_report_folder("--report", options.pages);
  // It is made for the first finding.
  const fs::path findings = findings_folder(options);
  if (!options.findings.empty() || fs::exists(findings)) check_report_folder("--findings", findings);
  const play::Interrupts interrupts;
  int status = kFailure;
  try {
    status = options.good.empty() ? sweep_all(options, interrupts.alarm()) : sweep_one(options, interrupts.alarm());
  } catch (const terminal::Interrupted &) {
  }
  return interrupts.signal() == 0 ? status : interrupts.die();
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
