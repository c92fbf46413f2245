#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>

#include "host/box/contents.h"
#include "host/box/daemon_bend.h"
#include "host/box/daemon_socket.h"
#include "host/include/lmainte_host.h"
#include "host/spbox/verbs.h"

namespace spbox {
namespace {

struct Options {
  std::filesystem::path box;
  std::string way;
  std::uint32_t seconds = 0;
  bool as_json = false;
};

const box::DaemonWayName &row_of(box::DaemonWay way) {
  return *std::find_if(box::kDaemonWays.begin(), box::kDaemonWays.end(),
                       [&](const auto &row) { return row.way == way; });
}

const box::DaemonWayName *row_of(std::string_view name) {
  const auto *const row =
      std::find_if(box::kDaemonWays.begin(), box::kDaemonWays.end(), [&](const auto &at) { return at.name == name; });
  return row == box::kDaemonWays.end() ? nullptr : row;
}

std::string way_text(const box::DaemonBend &bend) {
  switch (bend.way) {
    case box::DaemonWay::kWell:
      return "answers";
    case box::DaemonWay::kLate:
      return "answers after " + std::to_string(bend.seconds) + " s";
    case box::DaemonWay::kSilent:
      return "does not answer";
    case box::DaemonWay::kDead:
      return "ends the connection instead of answering";
    case box::DaemonWay::kGarbled:
      return "answers with messages that are not as long as they say";
  }
  return "";
}

int daemon(const Options &options) {
  const box::Place place(options.box);
  box::model_of_box(place);  // says what is wrong where this is no box
  box::Hardware hardware(place);
  if (!options.way.empty()) box::set_daemon_bend(hardware, {row_of(options.way)->way, options.seconds});
  const box::DaemonBend bend = box::daemon_bend(hardware);
  const bool running = box::daemon_listens(place.daemons(), LMAINTE_HOST_MONITOR);
  if (options.as_json) {
    const nlohmann::json whole = {
        {"name", LMAINTE_HOST_MONITOR},
        {"running", running},
        {"way", row_of(bend.way).name},
        {"seconds", bend.way == box::DaemonWay::kLate ? nlohmann::json(bend.seconds) : nullptr}};
    std::puts(whole.dump(2).c_str());
    return 0;
  }
  std::printf("%s, %s: %s\n", LMAINTE_HOST_MONITOR, running ? "running" : "not running", way_text(bend).c_str());
  return 0;
}

std::string no_way(const std::string &text) {
  if (row_of(text) != nullptr) return "";
  std::string names;
  for (const box::DaemonWayName &row : box::kDaemonWays) names += (names.empty() ? "" : ", ") + std::string(row.name);
  return "a daemon cannot be " + text + ". It can be " + names;
}

}  // namespace

void add_daemon(CLI::App &app, Action &action) {
  CLI::App *verb = app.add_subcommand("daemon", "Show the box's daemon, or bend how it answers");
  auto options = std::make_shared<Options>();
  add_box(verb, options->box);
  verb->add_option("WAY", options->way, "well, late, silent, dead or garbled")->check(no_way);
  verb->add_option("SECONDS", options->seconds, "How late")->check(CLI::Range(1, 86400));
  verb->add_flag("--json", options->as_json, "For scripts");
  verb->footer(
      "`spbox run` starts the daemon with the command and ends it after it. How it is\n"
      "bent counts from the next request on.\n\n"
      "Examples:\n"
      "  spbox daemon box                 whether it runs, and how it answers\n"
      "  spbox daemon box late 5          every answer comes after five seconds\n"
      "  spbox daemon box silent          no answer comes\n"
      "  spbox daemon box dead            the connection ends instead\n"
      "  spbox daemon box garbled         answers are not as long as they say\n"
      "  spbox daemon box well            as it should be");
  verb->callback([options, &action] {
    const bool late = options->way == "late";
    if (late != (options->seconds > 0)) {
      throw CLI::ValidationError(late ? "how late? Give seconds: spbox daemon DIR late 5"
                                      : "only `late` takes seconds");
    }
    action = [options] { return daemon(*options); };
  });
}

}  // namespace spbox
