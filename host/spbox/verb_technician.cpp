#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <memory>

#include "host/spbox/standard_output.h"
#include "host/spbox/verbs.h"
#include "host/technician/technician.h"

namespace spbox {
namespace {

struct TechnicianOptions {
  std::filesystem::path box, script;
  std::string steps;
  std::uint32_t limit = 600;
  int ready_fd = -1;
  std::vector<technician::Step> read_steps;
  technician::Clock clock;
};

std::vector<technician::Step> read(const TechnicianOptions &options) {
  if (options.script.empty()) return technician::read_script(options.steps, "");
  return technician::read_script(script::text_of_file(options.script), options.script.string());
}

// Of this process, so not where the words alone are judged.
void check_ready_fd(const TechnicianOptions &options) {
  const int mode = options.ready_fd < 0 ? O_RDWR : fcntl(options.ready_fd, F_GETFL);
  if (mode < 0 || (mode & O_ACCMODE) == O_RDONLY) {
    throw UsageError("--ready-fd " + std::to_string(options.ready_fd) + ": this descriptor is not open for writing.");
  }
}

void prepare(TechnicianOptions &options) {
  check_ready_fd(options);
  options.read_steps = read(options);
  options.clock = technician::Clock::of(box::Place(options.box));
}

int work(const TechnicianOptions &options) {
  technician::Technician hands(box::Place(options.box), options.clock, [](const std::string &line) {
    print_line(line);
    std::fflush(stdout);
  });
  hands.work(options.read_steps, std::chrono::seconds(options.limit), [&] {
    if (options.ready_fd >= 0 && write(options.ready_fd, "", 1) == 1) close(options.ready_fd);
  });
  return 0;
}

std::string steps_of_technicians() {
  constexpr std::size_t kColumn = 36;
  return script::help_of(technician::step_rows(), kColumn) +
         script::help_of({"#", 0, 0, "# a comment", "Also after a step, to the end of the line"}, kColumn);
}

void check(const TechnicianOptions &options) {
  if (options.script.empty() && options.steps.empty()) {
    throw UsageError("no steps are given. Name a SCRIPT, or give them with --do.");
  }
}

}  // namespace

Verb technician_verb() {
  auto options = std::make_shared<TechnicianOptions>();
  return {.name = "technician",
          .line = "Pull and insert units by a script while a command runs",
          .works_on_box = true,
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
          .footer = steps_of_technicians() +
                    "A word in quotes keeps its blanks, and knows the escapes of `spbox help play`.\n"
                    "All units are looked up before the first step. `when trace` looks at what was\n"
                    "recorded after the record that the last such step found, or after the beginning.\n\n"
                    "Examples:\n"
                    "  spbox technician box hands.txt &\n"
                    "  spbox technician box --do 'when flag /PSU#3 start; after 2; pull /PSU#3' &",
          .check = [options] { check(*options); },
          .prepare = [options] { prepare(*options); },
          .act = [options] { return work(*options); },
          .as_step =
              [options](const std::vector<std::string> &) {
                std::string steps;
                for (const technician::Step &step : options->read_steps)
                  steps += (steps.empty() ? "" : "; ") + step.text;
                return std::vector<std::string>{"hands", steps};
              }};
}

}  // namespace spbox
