#include <unistd.h>

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

void check(const Options &options) {
  if (options.script.empty() && options.steps.empty()) {
    throw UsageError("no steps are given. Name a SCRIPT, or give them with --do.");
  }
}

}  // namespace

Verb technician_verb() {
  auto options = std::make_shared<Options>();
  return {.name = "technician",
          .line = "Pull and insert units by a script while a command runs",
          .words = {box_word(options->box),
                    {.name = "SCRIPT",
                     .help = "File with the steps, one a line",
                     .to = &options->script,
                     .excludes = {"--do"}},
                    {.name = "--do",
                     .help = "The steps themselves, with semicolons between them",
                     .to = &options->steps,
                     .value = "STEPS"},
                    {.name = "--limit",
                     .help = "How long a step waits at most; 600 without it",
                     .to = number(options->limit, 1, 86400),
                     .value = "SECONDS"},
                    {.name = "--ready-fd",
                     .help = "A byte is written there when the first step begins",
                     .to = number(options->ready_fd, 0, 65535),
                     .value = "FD"}},
          .footer =
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
              "All units are looked up before the first step. `when trace` looks at what was\n"
              "recorded after the record that the last such step found, or after the beginning.\n\n"
              "Examples:\n"
              "  spbox technician box hands.txt &\n"
              "  spbox technician box --do 'when flag /PSU#3 start; after 2; pull /PSU#3' &",
          .check = [options] { check(*options); },
          .act = [options] { return technician(*options); }};
}

}  // namespace spbox
