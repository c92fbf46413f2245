// What was recorded of commands on a board, or in a box.
#include <memory>
#include <utility>

#include "host/base/shown.h"
#include "host/box/box_error.h"
#include "host/play/interrupts.h"
#include "host/recording/as_rings.h"
#include "host/recording/recording.h"
#include "host/spbox/answer.h"
#include "host/spbox/recording_page.h"
#include "host/spbox/replay_command.h"
#include "host/spbox/standard_output.h"
#include "host/spbox/text.h"
#include "host/spbox/trace_lines.h"
#include "host/spbox/verbs.h"
#include "host/spbox/whole_file.h"
#include "host/trace_book/history.h"

namespace spbox {
namespace {

using trace_book::History;
using trace_book::Told;

struct ReplayOptions {
  TraceOptions trace;
  Replayed replayed;  // but for its run, which is that of the trace
  std::filesystem::path page;
};

Holder recording_as_holder() {
  return {.title = "The recording",
          .name = "the recording",
          .remembers = "holds",
          .is_empty = "The recording holds the beginning of processes, and nothing that they did."};
}

Json::List steps_of(const std::vector<Told> &lines) {
  Json::List steps;
  for (const Told &line : lines) {
    Json::Object step{{"time", utc(line.moment->time_ns)}, {"pid", line.moment->pid}, {"level", line.moment->level},
                      {"function", line.moment->function}, {"text", line.text},       {"error", line.moment->is_error}};
    if (line.duration_ns) step.push_back({"nanoseconds", *line.duration_ns});
    steps.push_back(step);
  }
  return steps;
}

std::vector<Told> lines_of(const History &history, const TraceOptions &options) {
  std::vector<const trace_book::Moment *> moments;
  for (const trace_book::Moment &moment : history.moments()) moments.push_back(&moment);
  std::vector<Told> lines = told(shown_of(moments, history, options), options.names());
  keep_last(lines, options.last);
  return lines;
}

int write_page(const report::Play &page, const std::filesystem::path &file) {
  write_whole_file(file, report::page_of(page));
  const std::string steps = std::to_string(page.steps.size()) + (page.steps.size() == 1 ? " step" : " steps");
  print_line(base::shown(file.native()) + " shows the recording in " + steps + "." +
             (page.steps_left_out == 0
                  ? ""
                  : " " + std::to_string(page.steps_left_out) + " older ones are left out; --run and --since choose."));
  return 0;
}

int show(const recording::Recording &recording, const ReplayOptions &options) {
  const recording::AsRings rings = recording::as_rings(recording);
  const History history(rings.records, rings.calls, recording.model);
  if (!options.page.empty()) {
    if (std::error_code none; std::filesystem::equivalent(options.page, options.replayed.file, none)) {
      throw box::BoxError(base::shown(options.page.native()) +
                          " is the recording itself. Give another name for the page.");
    }
    const play::Interrupts interrupts;  // the box of the pictures goes with them
    const auto page = as_play(recording, rings, lines_of(history, options.trace), options.replayed.file.filename(),
                              [&] { return interrupts.signal() != 0; });
    return interrupts.signal() == 0 ? write_page(page, options.page) : interrupts.die();
  }
  if (is_for_script()) {
    answer({{"steps", steps_of(lines_of(history, options.trace))}});
  } else {
    print_history(history, options.trace);
  }
  return 0;
}

int replay(const ReplayOptions &options) {
  Replayed replayed = options.replayed;
  replayed.run = options.trace.run;
  try {
    const recording::Recording recording = recording::read(replayed.file);
    for (const std::string &remark : recording::remarks(recording, replayed.file)) complain(remark);
    return replayed.command.empty() ? show(recording, options) : replay_command(recording, replayed);
  } catch (const box::BoxError &error) {
    complain(error.what());
    return kNothingToCompare;
  }
}

}  // namespace

Verb replay_verb() {
  auto options = std::make_shared<ReplayOptions>();
  options->trace.holder = recording_as_holder();
  std::vector<Word> words = choosing_words(options->trace);
  words.insert(words.begin(),
               {.name = "FILE", .help = "The recording", .to = &options->replayed.file, .need = Need::kRequired});
  words.insert(
      words.end(),
      {{.name = "--calls",
        .help = "As a tree: which function called which, and how long it\ntook",
        .to = &options->trace.calls,
        .excludes = {"--json"}},
       {.name = "--names",
        .help = "Each call for the name of a unit; without it, a list of\nunits is one line",
        .to = &options->trace.each_name},
       {.name = "--report",
        .help =
            "Write it there as one HTML page, to step through: the\nquestions, the server and the trace at each step",
        .to = &options->page,
        .value = "FILE",
        .excludes = {"--json", "--calls", "COMMAND"}},
       {.name = "--limit",
        .help = "How long COMMAND may make no call; 60 without it",
        .to = number(options->replayed.limit, 1, 86400),
        .value = "SECONDS"},
       {.name = "COMMAND",
        .help = "The command that gets the same answers, and its\narguments; -- may stand before it",
        .to = Rest{&options->replayed.command}}});
  return {.name = "replay",
          .line = "Show a recording, or run a command against it",
          .words = std::move(words),
          .footer =
              "A recording is made by a board whose platform has lmainte_record.h, or by\n"
              "spbox run --recording. It is shown as spbox trace shows a box.\n\n"
              "COMMAND runs in a new box of the recorded model, at full speed, and gets the\n"
              "recorded answers: of databases, the operator, control programs, files, the\n"
              "daemon. At its first call that is another one it is ended, and both sides are\n"
              "named; so is one that makes no call any more. The exit status is 0 without a\n"
              "difference, 1 with one, and 2 where there is nothing to compare: the recording\n"
              "cannot be read, records of the run are damaged or missing, or the command\n"
              "cannot be run. A recording that ends before its command did, as where that was\n"
              "killed, is compared up to there, and the answer says so.\n\n"
              "Examples:\n"
              "  spbox replay fault.rec --errors\n"
              "  spbox replay fault.rec --report fault.html\n"
              "  spbox replay fault.rec -- ./replace_unit psu",
          .check = [options] { check(options->trace); },
          .prepare = [options] { options->trace.window = window_of_output(); },
          .act = [options] { return replay(*options); }};
}

}  // namespace spbox
