#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <memory>

#include "host/box/contents.h"
#include "host/spbox/technician.h"
#include "host/spbox/verbs.h"

namespace spbox {
namespace {

struct Options {
  std::filesystem::path box, script;
  std::string steps;
  std::uint32_t limit = 600;
  int ready_fd = -1;
};

std::string text_of(const Options &options) {
  if (options.script.empty()) return options.steps;
  std::ifstream in(options.script);
  if (!in) throw ScriptError(options.script.string() + " cannot be read. Is it the script's name?");
  return {std::istreambuf_iterator<char>(in), {}};
}

int technician(const Options &options) {
  const std::vector<Step> steps = parse_technician(text_of(options));
  Technician hands(box::Place(options.box), Clock::real(), [](const std::string &line) {
    std::puts(line.c_str());
    std::fflush(stdout);
  });
  hands.work(steps, std::chrono::seconds(options.limit), [&] {
    if (options.ready_fd >= 0 && write(options.ready_fd, "", 1) == 1) close(options.ready_fd);
  });
  return 0;
}

}  // namespace

void add_technician(CLI::App &app, Action &action) {
  CLI::App *verb = app.add_subcommand("technician", "Hands that pull and insert units while a command runs");
  auto options = std::make_shared<Options>();
  add_box(verb, options->box);
  auto *script = verb->add_option("SCRIPT", options->script, "File with the steps, one a line");
  auto *steps =
      verb->add_option("--do", options->steps, "The steps themselves, parted by semicolons")->option_text("STEPS");
  script->excludes(steps);
  verb->add_option("--limit", options->limit, "What a step waits at most; 600 without it")
      ->check(CLI::Range(1, 86400))
      ->option_text("SECONDS");
  verb->add_option("--ready-fd", options->ready_fd, "A byte comes there once the hands are at work")->option_text("FD");
  verb->footer(
      "Steps:\n"
      "  after 3                           wait three seconds\n"
      "  when led /PSU#3 blink             wait until the LED is off, on or blinks\n"
      "  when flag /PSU#3 start            until the maintenance flag is set, or `end`\n"
      "  when detached /PSU#3 yes          until the unit is out of operation, or `no`\n"
      "  when mode lock                    until maintenance mode is on, or `unlock`\n"
      "  when trace FUNCTION [EVENT]       until the library records it, as in\n"
      "                                    `spbox trace`: lmainte_chk_fru_install entry\n"
      "  when text FILE TEXT               until the file holds the text\n"
      "  pull UNIT...                      and insert, fault, degrade, repair\n"
      "  flicker UNIT TIMES SECONDS        so many times out or in, so far apart\n"
      "  # a comment                       also behind a step, to the line's end\n"
      "Of the trace, a step looks at what came after the record that the last such step\n"
      "has found, or after the beginning. All units are looked up before the first step.\n\n"
      "Examples:\n"
      "  spbox technician box hands.txt &\n"
      "  spbox technician box --do 'when flag /PSU#3 start; after 2; pull /PSU#3' &");
  verb->callback([options, &action] {
    if (options->script.empty() == options->steps.empty()) {
      throw CLI::ValidationError("no steps are given: name a SCRIPT, or give them with --do");
    }
    action = [options] { return technician(*options); };
  });
}

}  // namespace spbox
