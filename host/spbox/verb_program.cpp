#include <algorithm>
#include <memory>
#include <set>

#include "host/base/signal_name.h"
#include "host/box/advice.h"
#include "host/box/call_ring.h"
#include "host/box/contents.h"
#include "host/box/inhabitants.h"
#include "host/box/program_list.h"
#include "host/spbox/answer.h"
#include "host/spbox/bent_text.h"
#include "host/spbox/text.h"
#include "host/spbox/verbs.h"

namespace spbox {
namespace {

struct ProgramOptions {
  std::filesystem::path box;
  std::string name;
  box::Bend bend;
  std::string die;
  bool reset = false;
  std::set<pid_t> inside;  // who is in the box: a last run may still be going on
};

}  // namespace

std::string bend_text(const box::Bend &bend) {
  std::string text;
  const auto add = [&text](const std::string &part) { text += (text.empty() ? "" : ", ") + part; };
  if (bend.ignore_term) add("ignores SIGTERM");
  if (bend.delay > 0) add("waits " + std::to_string(bend.delay) + " s");
  if (bend.hang) add(bend.exit ? "hangs until SIGTERM" : "hangs");
  if (bend.die) add("dies by " + base::signal_name(*bend.die));
  if (bend.exit) add("exits with " + std::to_string(*bend.exit));
  return text.empty() ? "straight" : text;
}

namespace {

// Whether the process of a last run is there still, and for how many seconds it has been.
std::optional<std::int64_t> seconds_of(const box::Run &run, const std::set<pid_t> &inside) {
  if (run.status || !inside.contains(run.pid)) return std::nullopt;
  return std::max<std::int64_t>(box::call_time() - run.time_ns, 0) / 1'000'000'000;
}

std::string run_text(const std::optional<box::Run> &run, const std::set<pid_t> &inside) {
  if (!run) return "never ran";
  const auto seconds = seconds_of(*run, inside);
  const std::string status = run->status ? "exit status " + std::to_string(*run->status)
                             : seconds   ? "running for " + std::to_string(*seconds) + " s"
                                         : "did not end by itself";
  return date_and_time(run->time_ns) + ", process " + std::to_string(run->pid) + ", \"" + run->arguments + "\", " +
         status;
}

Json last_run_json(const std::optional<box::Run> &run, const std::set<pid_t> &inside) {
  if (!run) return nullptr;
  return Json::Object{{"time", utc(run->time_ns)},
                      {"pid", run->pid},
                      {"arguments", run->arguments},
                      {"exit_status", run->status},
                      {"running", seconds_of(*run, inside).has_value()}};
}

Json bend_json(const box::TextDatabase &kept, std::string_view name, const std::set<pid_t> &inside) {
  const box::Bend bend = bend_of(kept, name);
  return Json::Object{{"name", name},
                      {"ignore_term", bend.ignore_term},
                      {"delay", bend.delay},
                      {"hang", bend.hang},
                      {"die", bend.die ? Json(base::signal_name(*bend.die)) : Json()},
                      {"exit", bend.exit},
                      {"last_run", last_run_json(last_run(kept, name), inside)}};
}

struct Shown {
  std::vector<std::vector<std::string>> lines{{"Program", "Bent", "Last run"}};
  Json::List list;
};

Shown shown(const box::TextDatabase &kept, const ProgramOptions &options) {
  Shown all;
  for (const std::string &name : options.name.empty() ? box::program_names() : std::vector{options.name}) {
    all.lines.push_back({name, bend_text(bend_of(kept, name)), run_text(last_run(kept, name), options.inside)});
    all.list.push_back(bend_json(kept, name, options.inside));
  }
  return all;
}

bool is_change(const ProgramOptions &options) {
  return options.reset || !options.bend.straight();
}

int program(const ProgramOptions &options) {
  const box::Place place(options.box);
  box::check_is_box(place);
  box::TextDatabase kept(place);
  const bool changes = is_change(options);
  // What is printed is read before the change is saved: an error after that would be taken for a failure of the change.
  if (changes) {
    kept.lock();
    box::set_bend(kept, options.name, options.bend);
  }
  const Shown all = shown(kept, options);
  if (changes) kept.unlock();
  show({{"programs", all.list}}, aligned(all.lines));
  return 0;
}

void check(ProgramOptions &options) {
  if (!options.die.empty()) {
    options.bend.die = base::signal_number(options.die);
    if (*options.bend.die <= 0) {
      throw UsageError("there is no signal `" + options.die + "`. Give a name such as TERM, or a number.");
    }
  }
  if (options.name.empty() && is_change(options)) {
    throw UsageError("no program is named. " + box::advice({"program", options.box}) + " lists them.");
  }
}

}  // namespace

Verb program_verb() {
  auto options = std::make_shared<ProgramOptions>();
  box::Bend &bend = options->bend;
  return {.name = "program",
          .line = "Show a control program, or bend what it does",
          .works_on_box = true,
          .words = {box_word(options->box),
                    {.name = "NAME",
                     .help = "The control program; without it, all are shown",
                     .to = Choice{&options->name, "control program", box::program_names()}},
                    {.name = "--exit",
                     .help = "It does nothing and ends with this status; with --hang, at\n"
                             "SIGTERM",
                     .to = number(bend.exit, box::kLowestExit, box::kHighestExit),
                     .value = "STATUS"},
                    {.name = "--delay",
                     .help = "It waits so long first",
                     .to = number(bend.delay, 1, 86400),
                     .value = "SECONDS"},
                    {.name = "--hang", .help = "It never ends", .to = &bend.hang},
                    {.name = "--ignore-term", .help = "It does not end at SIGTERM", .to = &bend.ignore_term},
                    {.name = "--die",
                     .help = "It does nothing and dies by this signal",
                     .to = &options->die,
                     .value = "SIGNAL",
                     .excludes = {"--exit", "--hang"}},
                    {.name = "--reset",
                     .help = "It does again what it should",
                     .to = &options->reset,
                     .excludes = {"--exit", "--delay", "--hang", "--ignore-term", "--die"}}},
          .footer =
              "What is given replaces how the program was bent before. Several options may be\n"
              "given together, but not --die with --exit or --hang.\n\n"
              "Examples:\n"
              "  spbox program box                      all programs and their last runs\n"
              "  spbox program box ctlled --exit 206    the LED is not switched\n"
              "  spbox program box ctlmainte --hang --ignore-term\n"
              "  spbox program box ctlled --reset",
          .check = [options] { check(*options); },
          .prepare = [options] { options->inside = box::inhabitants(box::Place(options->box)); },
          .act = [options] { return program(*options); },
          .as_step = step_of_verb("program", [options] { return is_change(*options); })};
}

}  // namespace spbox
