// Plays a script: an operator and technicians who work by themselves.
#include <fcntl.h>

#include <filesystem>
#include <iostream>
#include <memory>

#include "host/play/interrupts.h"
#include "host/play/performance.h"
#include "host/play/player.h"
#include "host/spbox/machine.h"
#include "host/spbox/play_verbs.h"
#include "host/spbox/speed.h"
#include "host/spbox/standard_output.h"
#include "host/spbox/verbs.h"

namespace spbox {
namespace {

struct PlayOptions {
  play::Files files;
  std::vector<std::string> words;  // NAME=VALUE
  play::Values values;
  SpeedOption speed;
  MachineOption machine;
};

void take_values(PlayOptions &options) {
  try {
    for (const auto &word : options.words) play::add_value(word, options.values);
  } catch (const std::invalid_argument &wrong) {
    throw UsageError(wrong.what() + std::string("."));
  }
}

// Of this process, so not where the words alone are judged. The command of the play does not get the descriptor.
void take_account_fd(int fd) {
  const int mode = fd < 0 ? O_RDWR : fcntl(fd, F_GETFL);
  if (mode < 0 || (mode & O_ACCMODE) == O_RDONLY)
    throw UsageError("--account-fd " + std::to_string(fd) + ": this descriptor is not open for writing.");
  if (fd >= 0) fcntl(fd, F_SETFD, FD_CLOEXEC);
}

int play_script(const PlayOptions &options) {
  options.machine.check_is_installed();
  const auto steps = play::prepare(options.files, options.values, verbs_that_work_on_box());
  const play::Interrupts interrupts;
  const std::unique_ptr<box_time::Keeper> keeper = options.speed.keeper();
  try {
    play::perform(steps, options.files, std::filesystem::read_symlink("/proc/self/exe"), std::cout, interrupts.alarm());
    return 0;
  } catch (const play::Failure &failure) {
    complain_in_lines(failure.what());
    return kFailure;
  } catch (const terminal::Interrupted &) {
    return interrupts.die();
  }
}

}  // namespace

Verb play_verb() {
  auto options = std::make_shared<PlayOptions>();
  return {
      .name = "play",
      .line = "Play an operator and a technician by a script",
      .words =
          {{.name = "SCRIPT",
            .help = "File with the steps, one a line; - is standard input",
            .to = &options->files.script,
            .need = Need::kRequired},
           {.name = "NAME=VALUE", .help = "What $NAME stands for in the script", .to = &options->words},
           {.name = "--box",
            .help = "Play on this box and keep it; made if there is none",
            .to = &options->files.box,
            .value = "DIR"},
           {.name = "--transcript",
            .help = "Keep there what is printed, with trace and log",
            .to = &options->files.transcript,
            .value = "FILE"},
           {.name = "--picture",
            .help = "Keep there the screens, as a moving SVG",
            .to = &options->files.picture,
            .value = "FILE"},
           {.name = "--server",
            .help = "In the picture, the server beside each screen, as the\nverb watch draws it",
            .to = &options->files.draws_server},
           {.name = "--report",
            .help =
                "Keep there what happened, as one HTML page with the\nscreen, the server and the trace at each step",
            .to = &options->files.report,
            .value = "FILE"},
           {.name = "--cast",
            .help = "Keep there what the first operator's terminal showed,\nfor asciinema",
            .to = &options->files.cast,
            .value = "FILE"},
           {.name = "--account-fd",
            .help = "How far it is and why it fails is written there",
            .to = number(options->files.account, 0, 65535),
            .value = "FD"},
           options->speed.word(),
           options->machine.word()},
      .footer = script::help_of(play::step_rows(), 26) +
                "\nA word in quotes keeps its blanks and knows \\n \\t \\r \\e \\\" \\\\ and\n"
                "bytes such as \\003 or \\x03. $NAME in a word stands for a value, $$ for a\n"
                "dollar. # begins a comment. All scripts are read and checked before the first\n"
                "step.\n\n"
                "Without --box, the box is gone after the play. Exit status: 0 played to its\n"
                "end, 1 a step failed, 2 the script or the command line makes no sense.\n\n"
                "Examples:\n"
                "  spbox play replace.play\n"
                "  spbox play replace.play --box box --transcript replace.txt\n"
                "  spbox play replace.play UNIT=/PSU#3 --picture replace.svg\n"
                "  spbox play replace.play --report replace.html",
      .check =
          [options] {
            take_values(*options);
            options->speed.check();
            options->files.options = options->machine.words();
          },
      .prepare = [options] { take_account_fd(options->files.account); },
      .act = [options] { return play_script(*options); }};
}

}  // namespace spbox
