#include <algorithm>
#include <memory>

#include "host/box/advice.h"
#include "host/box/contents.h"
#include "host/box/daemon_bend.h"
#include "host/box/daemon_socket.h"
#include "host/include/lmainte_host.h"
#include "host/spbox/answer.h"
#include "host/spbox/bent_text.h"
#include "host/spbox/standard_output.h"
#include "host/spbox/verbs.h"

namespace spbox {
namespace {

struct DaemonOptions {
  std::filesystem::path box;
  std::string way;
  std::uint32_t seconds = 0;
  std::uint32_t delay = 0;
  bool silent = false, dead = false, garbled = false, reset = false;
  bool is_running = false;
};

const box::DaemonWayName &row_of(box::DaemonWay way) {
  return *std::find_if(box::kDaemonWays.begin(), box::kDaemonWays.end(),
                       [&](const auto &row) { return row.way == way; });
}

box::DaemonWay way_of(std::string_view name) {
  return std::find_if(box::kDaemonWays.begin(), box::kDaemonWays.end(),
                      [&](const auto &row) { return row.name == name; })
      ->way;
}

}  // namespace

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

namespace {

int daemon(const DaemonOptions &options) {
  const box::Place place(options.box);
  box::check_is_box(place);
  box::TextDatabase kept(place);
  const bool changes = !options.way.empty();
  const box::DaemonBend bend = changes ? box::DaemonBend{way_of(options.way), options.seconds} : box::daemon_bend(kept);
  if (changes) box::set_daemon_bend(kept, bend);
  if (is_for_script()) {
    answer({{"name", LMAINTE_HOST_MONITOR},
            {"running", options.is_running},
            {"way", row_of(bend.way).name},
            {"seconds", bend.way == box::DaemonWay::kLate ? Json(bend.seconds) : Json()}});
    return 0;
  }
  print_line(LMAINTE_HOST_MONITOR + std::string(options.is_running ? ", running: " : ", not running: ") +
             way_text(bend));
  return 0;
}

void prepare(DaemonOptions &options) {
  options.is_running = box::daemon_listens(box::Place(options.box).daemons(), LMAINTE_HOST_MONITOR);
}

std::vector<std::string> way_names() {
  std::vector<std::string> names;
  for (const box::DaemonWayName &row : box::kDaemonWays) names.emplace_back(row.name);
  return names;
}

// What the options say, in the words that stand for the same.
void take_options(DaemonOptions &options) {
  const struct {
    bool given;
    const char *way;
  } rows[] = {{options.delay > 0, "late"},
              {options.silent, "silent"},
              {options.dead, "dead"},
              {options.garbled, "garbled"},
              {options.reset, "well"}};
  for (const auto &row : rows) {
    if (!row.given) continue;
    if (!options.way.empty()) throw UsageError("the daemon is bent in one way at a time.");
    options.way = row.way;
    options.seconds = options.delay;
  }
}

void check(DaemonOptions &options) {
  take_options(options);
  const bool late = options.way == "late";
  if (late && options.seconds == 0) {
    throw UsageError("how late? Give seconds, as in " + box::advice({"daemon", options.box, "--delay", "5"}) + ".");
  }
  if (!late && options.seconds > 0) throw UsageError("only `late` takes seconds.");
}

}  // namespace

Verb daemon_verb() {
  auto options = std::make_shared<DaemonOptions>();
  return {.name = "daemon",
          .line = "Show the box's daemon, or bend how it answers",
          .works_on_box = true,
          .words = {box_word(options->box),
                    {.name = "WAY",
                     .help = "The same in a word: well, late, silent, dead or garbled",
                     .to = Choice{&options->way, "way to answer", way_names()}},
                    {.name = "SECONDS", .help = "How late", .to = number(options->seconds, 1, 86400)},
                    {.name = "--delay",
                     .help = "It answers so late",
                     .to = number(options->delay, 1, 86400),
                     .value = "SECONDS"},
                    {.name = "--silent", .help = "It does not answer", .to = &options->silent},
                    {.name = "--dead", .help = "It ends the connection instead of answering", .to = &options->dead},
                    {.name = "--garbled", .help = "Its answers are not as long as they say", .to = &options->garbled},
                    {.name = "--reset", .help = "It answers as it should", .to = &options->reset}},
          .footer =
              "`spbox run` starts the daemon with the command, and ends it when the command has\n"
              "ended. It answers the new way from the next request on.\n\n"
              "Examples:\n"
              "  spbox daemon box                 whether it runs, and how it answers\n"
              "  spbox daemon box --delay 5       every answer comes after five seconds\n"
              "  spbox daemon box --silent        no answer comes\n"
              "  spbox daemon box --reset         it answers as it should",
          .check = [options] { check(*options); },
          .prepare = [options] { prepare(*options); },
          .act = [options] { return daemon(*options); },
          .as_step = step_of_verb("daemon", [options] { return !options->way.empty(); })};
}

}  // namespace spbox
