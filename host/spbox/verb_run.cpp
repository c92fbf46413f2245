#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>

#include "host/base/temporary_folder.h"
#include "host/box/contents.h"
#include "host/box/daemon_socket.h"
#include "host/box/logs.h"
#include "host/clock/guest.h"
#include "host/clock/hours.h"
#include "host/clock/page.h"
#include "host/emulator/emulator.h"
#include "host/include/lmainte_host.h"
#include "host/replay/score.h"
#include "host/spbox/beside_process.h"
#include "host/spbox/children.h"
#include "host/spbox/enclosure.h"
#include "host/spbox/found_program.h"
#include "host/spbox/recording_file.h"
#include "host/spbox/remains.h"
#include "host/spbox/run_in_root.h"
#include "host/spbox/run_mark.h"
#include "host/spbox/speed.h"
#include "host/spbox/standard_output.h"
#include "host/spbox/verbs.h"
#include "host/spbox/way_in.h"
#include "host/terminal/own_mode.h"

namespace spbox {
namespace {

namespace fs = std::filesystem;

struct RunOptions {
  fs::path box;
  bool no_pager = false;
  bool network = false;
  fs::path recording;
  bool without_contents = false;
  fs::path score;
  SpeedOption speed;
  MachineOption machine;
  std::vector<std::string> command;
};

void preload(RootPlan &plan, const char *inside) {
  plan.preloaded.push_back({find_part(plan.spbox, fs::path(inside).filename(), R_OK), inside});
}

// The runtime of gcc's sanitizers would refuse to come after another library.
void let_sanitizers_come_later() {
  constexpr const char *kSanitizer = "ASAN_OPTIONS";
  // NOLINTNEXTLINE(concurrency-mt-unsafe): one thread
  const char *options = std::getenv(kSanitizer);
  const std::string own = options == nullptr ? "" : std::string(options) + ":";
  setenv(kSanitizer, (own + "verify_asan_link_order=0").c_str(), 1);  // NOLINT(concurrency-mt-unsafe): as above
}

// The command's programs find those of their machine, and no others of the same name.
void put_commands_on_path() {
  const char *path = std::getenv("PATH");  // NOLINT(concurrency-mt-unsafe): one thread
  const std::string own = path == nullptr ? "/usr/bin:/bin" : path;
  setenv("PATH", (kCommandsInside + (":" + own)).c_str(), 1);  // NOLINT(concurrency-mt-unsafe): as above
}

// The sockets of platforms whose spbox was killed.
void remove_sockets_nobody_listens_on(const box::Place &place) {
  std::error_code error;
  for (const fs::directory_entry &entry : fs::directory_iterator(place.daemons(), error)) {
    const std::string name = entry.path().filename();
    if (name.starts_with(kPlatformSocket) && !box::daemon_listens(place.daemons(), name))
      fs::remove(entry.path(), error);
  }
}

void check(const RunOptions &options) {
  options.speed.check();
  if (!options.without_contents || !options.recording.empty()) return;
  throw UsageError("--without-contents says what a recording leaves out: give --recording FILE, too.");
}

int run(const RunOptions &options) {
  const auto &[folder, no_pager, network, recording, without_contents, score, speed, machine, command] = options;
  const box::Place place(fs::absolute(folder));
  box::check_is_any_box(box::Place{folder});
  check_bwrap();
  if (!no_pager) check_pager();
  const std::optional<Machine> on_machine = machine.machine();
  RootPlan plan{.box = place,
                .spbox = fs::read_symlink("/proc/self/exe"),
                .control_program = {},
                .daemon = {},
                .program = program_of(command.front(), on_machine),
                .folder = fs::current_path(),
                .pager = !no_pager,
                .network = network,
                .machine = on_machine};
  if (plan.machine) plan.platform_server = find_part(plan.spbox, "platform_server");
  plan.control_program = find_part(plan.spbox, "control_program");
  plan.daemon = find_part(plan.spbox, "monitor_daemon");
  const std::unique_ptr<box_time::Keeper> keeper = speed.keeper();
  box_time::keep(place.clock());
  const box_time::Guest guest(place.clock());  // of another keeper, where there is one
  plan.has_own_time = keeper || guest.has_box_time();
  if (plan.has_own_time) preload(plan, BOX_TIME_LIBRARY);
  if (plan.machine) preload(plan, EMULATOR_CALLS);
  if (!plan.preloaded.empty()) let_sanitizers_come_later();
  end_what_killed_runs_left(place);
  clear_up_behind_the_dead(place);
  complete_databases(place);
  for (const std::string &sentence : box::damaged_logs(box::Place{folder})) complain(sentence);
  MountPoints mount_points(place);
  const RunMark mark(place);
  if (plan.machine) make_links(*plan.machine, mark.folder());
  plan.guests = guests_in_tmp(plan);
  for (const std::string &name : plan.guests) mount_points.make(name, fs::is_directory("/tmp/" + name));
  Children children;
  const BesideProcess answers(plan, children, daemon_of(plan));
  std::optional<BesideProcess> platform;
  if (plan.machine) {
    platform.emplace(plan, children, platform_of(plan));
    put_commands_on_path();
  }
  setenv(LMAINTE_HOST_RUN, way_in(folder).c_str(), 1);
  // Not before what runs beside the command: the recording has what passes between that and its platform.
  if (!score.empty()) {
    preload(plan, REPLAY_LIBRARY);
    plan.score = score;
  }
  std::optional<RecordingFile> recorded;
  if (!recording.empty()) plan.recording = recorded.emplace(recording, without_contents).path();
  // The workstation's is not in the box, which has a /tmp of its own.
  for (const char *const name : base::kTemporaryFolderVariables)
    unsetenv(name);  // NOLINT(concurrency-mt-unsafe): one thread
  const terminal::OwnMode terminal;
  const int status = run_in_root(plan, command, children);
  if (was_cut_off(status)) {
    clear_up_behind_the_dead(place);
    terminal.put_back();
  }
  if (recorded) recorded->complain_if_nothing_came();
  platform.reset();
  remove_sockets_nobody_listens_on(place);
  return status;
}

}  // namespace

Verb run_verb() {
  auto options = std::make_shared<RunOptions>();
  return {
      .name = "run",
      .line = "Run a command in the box, on this terminal",
      .words = {box_word(options->box),
                {.name = "COMMAND",
                 .help = "The command and its arguments; -- may stand before it",
                 .to = Rest{&options->command},
                 .need = Need::kRequired},
                {.name = "--no-pager", .help = "Without a pager: /bin/busybox cannot be run", .to = &options->no_pager},
                {.name = "--network", .help = "Let the command use the workstation's network", .to = &options->network},
                {.name = "--recording",
                 .help = "Record what passes between the command and its platform",
                 .to = &options->recording,
                 .value = "FILE"},
                {.name = "--without-contents",
                 .help = "Of the databases' records, the recording has sizes and\nchecksums only",
                 .to = &options->without_contents},
                {.name = "--score",
                 .help = "Answer the command from it",
                 .to = &options->score,
                 .value = "FILE",
                 .is_hidden = true},
                options->speed.word(),
                options->machine.word()},
      .footer =
          "The command sees the workstation, but cannot write there. It has the box's\n"
          "databases, programs and times as /mgb, and the box's own /tmp. Of the\n"
          "workstation's /tmp and /run it sees only what holds the program, the working\n"
          "folder or spbox. The exit status is the command's own, or 128 and the number of\n"
          "the signal that ended it.\n\n"
          "Examples:\n"
          "  spbox run box ./replace_unit\n"
          "  spbox run box /mgb/bin/ctlled -u /PSU#0 -c blink\n"
          "  spbox run --recording fault.rec box ./replace_unit\n"
          "  spbox run box sh                         look around",
      .check = [options] { check(*options); },
      .act = [options] { return run(*options); }};
}

}  // namespace spbox
