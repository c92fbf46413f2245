#include "host/spbox/sweep_options.h"

#include <stdexcept>

#include "host/spbox/log_book.h"
#include "host/spbox/play_verbs.h"

namespace spbox {
namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;

constexpr milliseconds kLongestWork{120'000};       // of a replay, on the wall
constexpr milliseconds kLongestSilence{3'600'000};  // of a command, in the box's time
constexpr std::uint32_t kPairs = 1000;

}  // namespace

std::vector<Word> words_of_sweep(SweepOptions &options) {
  return {{.name = "PLAY",
           .help = "A play that passes, with a box of its own",
           .to = &options.files.script,
           .need = Need::kRequired},
          {.name = "NAME=VALUE", .help = "What $NAME stands for in the play", .to = &options.words},
          {.name = "--depth",
           .help = "So many deviations at a time, 1 or 2; 1 without it",
           .to = number(options.depth, 1, 2),
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
           .help = "Only deviations with this text in their name, as\n--list shows it; in both names of a pair",
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
          {.name = "--list",
           .help = "Only print the deviations. With --depth 2, the first\none of each pair is played for it",
           .to = &options.list},
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
          {.name = "--number",
           .help = "One replay: its deviation, counted from 0; the\nreport goes to descriptor 3",
           .to = &options.number,
           .value = "N",
           .is_hidden = true},
          {.name = "--followers",
           .help = "One replay: so many deviations behind it are drawn",
           .to = number(options.followers, 1, 1'000'000),
           .value = "N",
           .is_hidden = true},
          {.name = "--sequel",
           .help = "One replay: what came behind its deviation",
           .to = &options.sequel,
           .value = "FILE",
           .is_hidden = true},
          {.name = "--second",
           .help = "One replay: a second deviation, of the sequel",
           .to = &options.second,
           .value = "N",
           .is_hidden = true}};
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
  if (options.pairs > 0 && options.depth == 1) throw UsageError("--pairs goes with --depth 2.");
  if (options.pairs == 0) options.pairs = kPairs;
  if (options.good.empty() != options.number.empty()) throw UsageError("--good and --number belong together.");
  const bool is_behind = options.followers > 0 || !options.second.empty();
  if (is_behind == options.sequel.empty()) throw UsageError("--sequel goes with --followers or --second.");
}

fs::path this_program() {
  return fs::read_symlink("/proc/self/exe");
}

fs::path findings_folder(const SweepOptions &options) {
  if (!options.findings.empty()) return options.findings;
  return options.files.script.stem().string() + ".findings";
}

milliseconds longest_replay(const SweepOptions &options) {
  const box_time::Speed speed = *options.speed.speed();
  return speed.is_full() ? kLongestWork : kLongestWork + kLongestSilence / speed.times;
}

sweep::ReplayRules replay_rules(const SweepOptions &options, int alarm, const fs::path &folder) {
  return {.spbox = this_program().string(),
          .limit = kLongestSilence,
          .alarm = alarm,
          .speed = *options.speed.speed(),
          .log = [](const box::Place &place) { return log_of(place, sentence_of); },
          .options = options.machine.words(),
          .checkpoints = sweep::Checkpoints(folder),
          .findings = findings_folder(options)};
}

std::vector<play::Step> swept_steps(const SweepOptions &options) {
  auto steps = play::prepare(options.files, options.values, verbs_that_work_on_box());
  for (const play::Step &step : steps) {
    if (step.row->traits.turns_to_operator) throw step.error("a sweep follows one operator");
    const bool is_of_points = step.row->traits.names_verb && (step.words[0] == "points" || step.words[0] == "deviate");
    if (is_of_points) throw step.error("the points of a play that is swept are the sweep's");
  }
  return steps;
}

}  // namespace spbox
