#include <cstdlib>
#include <filesystem>
#include <memory>

#include "host/box/contents.h"
#include "host/include/lmainte_host.h"
#include "host/spbox/daemon_process.h"
#include "host/spbox/enclosure.h"
#include "host/spbox/found_program.h"
#include "host/spbox/verbs.h"
#include "host/spbox/visit.h"
#include "host/spbox/way_in.h"

namespace spbox {
namespace {

namespace fs = std::filesystem;

int run(const fs::path &folder, bool pager, const std::vector<std::string> &command) {
  const box::Place place(fs::absolute(folder));
  box::model_of_box(box::Place{folder});  // says what is wrong where this is no box
  check_bwrap();
  if (pager) check_pager();
  Visit guest{.box = place,
              .spbox = fs::read_symlink("/proc/self/exe"),
              .control_program = {},
              .program = find_program(command.front()),
              .folder = fs::current_path(),
              .pager = pager};
  guest.control_program = find_part(guest.spbox, "programs", "control_program");
  const fs::path daemon = find_part(guest.spbox, "daemon", "monitor_daemon");
  MountPoints mount_points(place);
  for (const std::string &name : guests_in_tmp(guest)) mount_points.make(name, fs::is_directory("/tmp/" + name));
  const DaemonProcess answers(daemon, place);
  setenv(LMAINTE_HOST_RUN, way_in(folder).c_str(), 1);
  return visit(bwrap_arguments(guest), command);
}

}  // namespace

Verb run_verb() {
  struct Options {
    fs::path box;
    bool no_pager = false;
    std::vector<std::string> command;
  };
  auto options = std::make_shared<Options>();
  return {.name = "run",
          .line = "Run a command in the box, on this terminal",
          .words = {box_word(options->box),
                    {.name = "COMMAND",
                     .help = "The command and its arguments; -- may stand before it",
                     .to = Rest{&options->command},
                     .need = Need::kRequired},
                    {.name = "--no-pager",
                     .help = "Without a pager: /bin/busybox cannot be run",
                     .to = &options->no_pager}},
          .footer =
              "The command sees the workstation, but cannot write there. It has the box's\n"
              "databases, programs and times as /mgb, and the box's own /tmp. Of the\n"
              "workstation's /tmp it sees only what holds the program, the working folder or\n"
              "spbox. The exit status is the command's own, or 128 and the number of the\n"
              "signal that ended it.\n\n"
              "Examples:\n"
              "  spbox run box ./replace_unit\n"
              "  spbox run box /mgb/bin/ctlled -u /PSU#0 -c blink\n"
              "  spbox run box sh                         look around",
          .act = [options] { return run(options->box, !options->no_pager, options->command); }};
}

}  // namespace spbox
