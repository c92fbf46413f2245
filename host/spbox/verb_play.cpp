// Plays a script: an operator and technicians who work by themselves.
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>
#include <utility>

#include "host/box/contents.h"
#include "host/play/interrupts.h"
#include "host/play/plan.h"
#include "host/play/player.h"
#include "host/spbox/technician_script.h"
#include "host/spbox/verbs.h"

namespace spbox {
namespace {

namespace fs = std::filesystem;

struct Options {
  fs::path script, box, transcript, picture;
  std::vector<std::string> values;
};

play::Checks checks() {
  play::Checks checks;
  for (const Verb &verb : all_verbs()) {
    const std::string &name = verb.name;
    if (name != "create" && name != "run" && name != "play" && name != "load") checks.verbs.push_back(name);
  }
  checks.check_hands = [](const std::string &steps) { parse_technician(steps); };
  return checks;
}

bool has(const std::vector<play::Step> &steps, std::string_view verb) {
  return std::any_of(steps.begin(), steps.end(), [&](const auto &step) { return step.form->verb == verb; });
}

std::vector<play::Step> read(const Options &options) {
  play::Values values;
  for (const auto &word : options.values) play::add_value(word, values);
  auto steps = play::read_plan(options.script, values, checks());
  if (!options.picture.empty() && !has(steps, "screen")) {
    throw UsageError(options.script.string() + " shows no screen to be drawn. Write `screen \"what it shows\"`.");
  }
  if (has(steps, "box")) return steps;
  if (options.box.empty()) {
    throw UsageError(options.script.string() + " makes no box. Write `box qe1`, for example, or give one with --box.");
  }
  if (!box::is_box(box::Place(options.box))) {
    throw UsageError(options.box.string() + " is no box, and " + options.script.string() +
                     " makes none. Write `box qe1`, for example, or `spbox create` one.");
  }
  return steps;
}

// What the library recorded and the log, however the play ended.
void keep_books(const play::Stage &stage, play::Transcript &transcript) {
  if (!transcript.is_kept() || !stage.exists()) return;
  for (const auto &[verb, heading] : {std::pair{"trace", "The trace"}, std::pair{"log", "The log"}}) {
    auto book = stage.spbox({verb});
    book.wait();
    transcript.keep(std::string("==== ") + heading + "\n\n" + book.output() + "\n");
  }
}

void write_picture(const play::Picture &picture, const fs::path &path) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  if (!(file << picture.svg() << std::flush))
    throw std::runtime_error("the picture " + path.string() + " cannot be written.");
}

int perform(const Options &options, const std::vector<play::Step> &steps, int alarm) {
  play::Transcript transcript(std::cout);
  if (!options.transcript.empty()) transcript.keep_in(options.transcript);
  play::Picture picture;
  play::Stage stage(fs::read_symlink("/proc/self/exe"), options.box, alarm);
  try {
    play::Player(stage, transcript, picture, alarm).play(steps);
  } catch (const play::Failure &failure) {
    std::fputs(failure.what(), stderr);
    transcript.keep(std::string(failure.what()) + "\n");
    keep_books(stage, transcript);
    return kFailure;
  }
  keep_books(stage, transcript);
  if (!options.picture.empty()) write_picture(picture, options.picture);
  return 0;
}

int play_script(const Options &options) {
  std::vector<play::Step> steps;
  try {
    steps = read(options);
  } catch (const std::exception &wrong) {
    std::fprintf(stderr, "%s\n", wrong.what());
    return kUsage;
  }
  const play::Interrupts interrupts;
  try {
    return perform(options, steps, interrupts.alarm());
  } catch (const terminal::Interrupted &) {
    const int signal = interrupts.signal();
    std::signal(signal, SIG_DFL);
    std::raise(signal);
    return 128 + signal;
  }
}

std::string help() {
  constexpr std::size_t kColumn = 26;
  std::string text = "Steps:\n";
  for (const auto &form : play::step_forms()) {
    std::string left = "  " + std::string(form.written);
    if (left.size() >= kColumn) text += std::exchange(left, "") + "\n";
    std::istringstream lines{std::string(form.meaning)};
    for (std::string line; std::getline(lines, line); left.clear()) {
      left.resize(kColumn, ' ');
      text += left + line + "\n";
    }
  }
  return text;
}

}  // namespace

Verb play_verb() {
  auto options = std::make_shared<Options>();
  return {.name = "play",
          .line = "Play an operator and a technician by a script",
          .words = {{.name = "SCRIPT",
                     .help = "File with the steps, one a line",
                     .to = &options->script,
                     .need = Need::kRequired},
                    {.name = "NAME=VALUE", .help = "What $NAME stands for in the script", .to = &options->values},
                    {.name = "--box",
                     .help = "Play on this box and keep it; made if there is none",
                     .to = &options->box,
                     .value = "DIR"},
                    {.name = "--transcript",
                     .help = "Keep there what is printed, with trace and log",
                     .to = &options->transcript,
                     .value = "FILE"},
                    {.name = "--picture",
                     .help = "Keep there the screens, as a moving SVG",
                     .to = &options->picture,
                     .value = "FILE"}},
          .footer = help() +
                    "\nA word in quotes keeps its blanks and knows \\n \\t \\r \\e \\\" \\\\ and\n"
                    "bytes in octal, such as \\003. $NAME in a word stands for a value, $$ for a\n"
                    "dollar. # begins a comment. All scripts are read and checked before the first\n"
                    "step.\n\n"
                    "Without --box, the box is gone after the play. Exit status: 0 played to its\n"
                    "end, 1 a step failed, 2 the script or the command line makes no sense.\n\n"
                    "Examples:\n"
                    "  spbox play replace.play\n"
                    "  spbox play replace.play --box box --transcript replace.txt\n"
                    "  spbox play replace.play UNIT=/PSU#3 --picture replace.svg",
          .act = [options] { return play_script(*options); }};
}

}  // namespace spbox
