// Plays many plays side by side, and reports what became of each.
#include <algorithm>
#include <filesystem>
#include <memory>

#include "host/box/advice.h"
#include "host/play/interrupts.h"
#include "host/play/own_folder.h"
#include "host/play/performance.h"
#include "host/runner/judge.h"
#include "host/runner/selection.h"
#include "host/runner/telling.h"
#include "host/runner/transcripts.h"
#include "host/spbox/machine.h"
#include "host/spbox/play_verbs.h"
#include "host/spbox/pool_options.h"
#include "host/spbox/progress_line.h"
#include "host/spbox/speed.h"
#include "host/spbox/standard_output.h"
#include "host/spbox/test_report.h"
#include "host/spbox/verbs.h"

namespace spbox {
namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;

struct TestOptions {
  std::vector<std::string> paths;
  PoolOptions pool;
  std::string glob;
  std::size_t rounds = 1;
  std::uint32_t limit = 600;
  bool list = false, check = false;
  TestReports reports;
  fs::path transcripts, pages;
  SpeedOption speed;
  MachineOption machine;
  std::vector<std::string> for_each_play;  // options of `spbox play`
};

// ---- which plays

runner::Reading reading_of(const fs::path &script) {
  static const play::Verbs verbs = verbs_that_work_on_box();
  runner::Reading reading;
  try {
    reading.steps = play::prepare({script, {}, {}, {}}, {}, verbs, &reading.plays).size();
  } catch (const script::Error &wrong) {
    reading.wrong = wrong.what();
  }
  return reading;
}

// What was looked through, for people.
std::string places_of(const TestOptions &options) {
  std::string text;
  for (const auto &path : options.paths) text += (text.empty() ? "" : ", ") + path;
  return text;
}

std::vector<runner::Play> plays_of(const TestOptions &options) {
  auto plays = runner::plays_among(runner::find_scripts(options.paths), reading_of);
  if (plays.empty()) {
    throw UsageError("there is no play in " + places_of(options) + ". The name of a play ends with .play.");
  }
  if (!options.glob.empty()) plays = runner::fitting(std::move(plays), options.glob);
  if (plays.empty()) {
    throw UsageError("no name of a play in " + places_of(options) + " fits `" + options.glob + "`. " +
                     box::advice({"test", "--list"}) + " shows the names.");
  }
  return runner::share_of(plays, options.pool.shard());
}

int list(const std::vector<runner::Play> &plays) {
  for (const runner::Play &play : plays) print_line(play.name);
  return 0;
}

int check(const std::vector<runner::Play> &plays) {
  std::size_t wrong = 0;
  for (const runner::Play &play : plays) {
    if (play.wrong.empty()) continue;
    ++wrong;
    print(play.wrong + "\n");
  }
  const std::string all = std::to_string(plays.size()) + (plays.size() == 1 ? " play" : " plays");
  print_line(all + ": " + std::to_string(plays.size() - wrong) + " can be played, " + std::to_string(wrong) +
             " cannot.");
  return wrong == 0 ? 0 : kUsage;
}

// ---- the plays

struct Case {
  std::string name;
  const runner::Play *play;
};

std::vector<Case> cases_of(const std::vector<runner::Play> &plays, std::size_t rounds) {
  std::vector<Case> cases;
  for (std::size_t round = 1; round <= rounds; ++round) {
    const std::string behind = rounds == 1 ? "" : " (" + std::to_string(round) + ")";
    for (const runner::Play &play : plays) cases.push_back({play.name + behind, &play});
  }
  return cases;
}

// Plays all cases, and tells of each when it is done.
class TestRun {
 public:
  TestRun(const TestOptions &options, const std::vector<Case> &cases, int alarm)
      : options_(options), transcripts_(options.transcripts), alarm_(alarm), progress_(cases.size()) {
    for (const Case &each : cases) {
      results_.emplace_back().name = each.name;
      if (!each.play->wrong.empty()) continue;
      files_.push_back(transcripts_.place_for(each.name));
      result_of_job_.push_back(results_.size() - 1);
      jobs_.push_back({each.name, command(*each.play)});
    }
    for (std::size_t i = 0; i < cases.size(); ++i) {
      if (!cases[i].play->wrong.empty()) refuse(results_[i], cases[i].play->wrong);
    }
  }

  void play() {
    const bool has_killed =
        run_side_by_side(jobs_, {options_.pool.width(), limit(), alarm_},
                         {.begins = [&](std::size_t job) { begins(job); },
                          .ends = [&](std::size_t job, const runner::JobEnding &ending) { ends(job, ending); },
                          .second_passes = [&] { progress_.show(); }});
    progress_.clear();
    if (has_killed) play::OwnFolder::remove_what_the_dead_left();
  }

  const std::vector<runner::Result> &results() const { return results_; }
  milliseconds time() const { return progress_.time(); }

 private:
  milliseconds limit() const { return std::chrono::seconds(options_.limit); }

  std::vector<std::string> command(const runner::Play &play) const {
    std::vector<std::string> words{
        fs::read_symlink("/proc/self/exe"), "play", "--account-fd", "3", "--transcript", files_.back().string()};
    if (!options_.pages.empty()) words.insert(words.end(), {"--report", page_of(files_.back())});
    words.insert(words.end(), options_.for_each_play.begin(), options_.for_each_play.end());
    words.insert(words.end(), {"--", play.file.string()});
    return words;
  }

  // Beside each other, as the transcripts are.
  fs::path page_of(const fs::path &transcript) const {
    fs::path page = options_.pages / fs::relative(transcript, transcripts_.folder());
    fs::create_directories(page.parent_path());
    return page.replace_extension(".html");
  }

  // Of a play that passed, nobody needs one.
  void judge_page(const fs::path &transcript, const runner::Result &result) const {
    if (options_.pages.empty()) return;
    const fs::path page = page_of(transcript);
    std::error_code ignored;
    if (!is_wrong(result.verdict)) {
      fs::remove(page, ignored);
    } else if (fs::exists(page, ignored)) {
      print_line("The report: " + page.string());
    }
  }

  void refuse(runner::Result &result, const std::string &wrong) {
    result.verdict = runner::Verdict::kUnreadable;
    result.reason = wrong + "\n";
    tell(result);
  }

  void begins(std::size_t job) {
    progress_.begins(jobs_[job].name);
    progress_.show();
  }

  void ends(std::size_t job, const runner::JobEnding &ending) {
    progress_.ends(jobs_[job].name);
    runner::Result &result = results_[result_of_job_[job]];
    const std::string name = result.name;
    result = judge(ending, limit());
    result.name = name;
    result.transcript = transcripts_.kept(files_[job], result.verdict);
    tell(result);
    judge_page(files_[job], result);
    progress_.show();
  }

  void tell(const runner::Result &result) {
    progress_.clear();
    progress_.counts(is_wrong(result.verdict));
    print(told_of(result));
    std::fflush(stdout);
  }

  const TestOptions &options_;
  runner::Transcripts transcripts_;
  int alarm_;
  std::vector<runner::Result> results_;
  std::vector<runner::Job> jobs_;
  std::vector<fs::path> files_;             // the transcript of each job
  std::vector<std::size_t> result_of_job_;  // and the number of its result
  ProgressOfPlays progress_;
};

int status_of(std::span<const runner::Result> results) {
  using runner::Verdict;
  const bool has_failed =
      count(results, Verdict::kFailed) + count(results, Verdict::kHung) + count(results, Verdict::kDied) > 0;
  if (has_failed) return kFailure;
  return count(results, Verdict::kUnreadable) > 0 ? kUsage : 0;
}

int play_and_report(const TestOptions &options, const std::vector<runner::Play> &plays, int alarm) {
  const auto date = std::chrono::system_clock::now();
  TestRun run(options, cases_of(plays, options.rounds), alarm);
  run.play();
  const auto &results = run.results();
  const milliseconds time = run.time();
  print(told_of_all(results, time));
  const bool are_written = write_reports(options.reports, results, time, date);
  const int status = status_of(results);
  return status == 0 && !are_written ? kFailure : status;
}

int play_all(const TestOptions &options, const std::vector<runner::Play> &plays) {
  options.machine.check_is_installed();
  make_report_folder("--transcripts", options.transcripts);
  make_report_folder("--report", options.pages);
  const play::Interrupts interrupts;
  const int status = play_and_report(options, plays, interrupts.alarm());
  return interrupts.signal() == 0 ? status : interrupts.die();
}

int test(const TestOptions &options) {
  check_reports(options.reports);
  const auto plays = plays_of(options);
  if (options.list) return list(plays);
  if (options.check) return check(plays);
  return play_all(options, plays);
}

void judge_words(TestOptions &options) {
  if (options.paths.empty()) options.paths = {"."};
  options.speed.check();
  options.for_each_play = options.speed.words();
  const std::vector<std::string> machine = options.machine.words();
  options.for_each_play.insert(options.for_each_play.end(), machine.begin(), machine.end());
  options.pool.check();
}

}  // namespace

Verb test_verb() {
  auto options = std::make_shared<TestOptions>();
  return {
      .name = "test",
      .line = "Play many plays side by side, and report on them",
      .words =
          {{.name = "PLAY|FOLDER",
            .help = "A play, or a folder: all *.play in it and below it;\nthe current folder without one",
            .to = &options->paths},
           options->pool.width_word(),
           {.name = "--filter",
            .help = "Only plays whose name fits, as in 'wrong/*'",
            .to = &options->glob,
            .value = "GLOB"},
           options->pool.shard_word("A share of the plays: 2/8 is the second of eight"),
           {.name = "--repeat", .help = "Each play so often", .to = number(options->rounds, 1, 1000), .value = "N"},
           {.name = "--limit",
            .help = "How long a play takes at most; 600 without it",
            .to = number(options->limit, 1, 86400),
            .value = "SECONDS"},
           {.name = "--list",
            .help = "Only print the names of the plays",
            .to = &options->list,
            .excludes = {"--check"}},
           {.name = "--check", .help = "Only read the plays, and say what is wrong with them", .to = &options->check},
           options->reports.junit_word(),
           options->reports.json_word(),
           {.name = "--transcripts",
            .help = "Keep there the transcripts of all plays; without it,\nthose of plays that went wrong are kept",
            .to = &options->transcripts,
            .value = "DIR"},
           {.name = "--report",
            .help = "Keep there a page of each play that went wrong, as\n--report of the verb play does",
            .to = &options->pages,
            .value = "DIR"},
           options->speed.word(),
           options->machine.word()},
      .footer =
          "A play is a script as `spbox play` takes it, with a box of its own. Hidden\n"
          "folders and linked ones are left out, and scripts that only other plays play.\n"
          "Each play is a process of its own. A failure ends its play and no other.\n\n"
          "Exit status: 0 all passed, 1 a play failed, 2 a play cannot be read, or the\n"
          "command line makes no sense.\n\n"
          "Examples:\n"
          "  spbox test\n"
          "  spbox test plays -j 8 --junit report.xml\n"
          "  spbox test plays --filter '*/wrong/*' --repeat 10",
      .check = [options] { judge_words(*options); },
      .act = [options] { return test(*options); }};
}

}  // namespace spbox
