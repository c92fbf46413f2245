#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>

#include "host/box/contents.h"
#include "host/box/programs.h"
#include "host/box/signal_name.h"
#include "host/spbox/json_text.h"
#include "host/spbox/text.h"
#include "host/spbox/verbs.h"

namespace spbox {
namespace {

using nlohmann::json;

struct Options {
  std::filesystem::path box;
  std::string name;
  box::Bend bend;
  std::string die;
  bool reset = false, as_json = false;
};

std::string bend_text(const box::Bend &bend) {
  std::string text;
  const auto add = [&text](const std::string &part) { text += (text.empty() ? "" : ", ") + part; };
  if (bend.ignore_term) add("ignores SIGTERM");
  if (bend.delay > 0) add("waits " + std::to_string(bend.delay) + " s");
  if (bend.hang) add(bend.exit ? "hangs until SIGTERM" : "hangs");
  if (bend.die) add("dies by " + box::signal_name(*bend.die));
  if (bend.exit) add("exits with " + std::to_string(*bend.exit));
  return text.empty() ? "straight" : text;
}

std::string run_text(const std::optional<box::Run> &run) {
  if (!run) return "never ran";
  const std::string status = run->status ? "exit status " + std::to_string(*run->status) : "did not end by itself";
  return date_and_time(run->time_ns) + ", process " + std::to_string(run->pid) + ", \"" + run->arguments + "\", " +
         status;
}

json json_of(const box::Hardware &hardware, std::string_view name) {
  const box::Bend bend = hardware.bend(name);
  json entry = {{"name", name},
                {"ignore_term", bend.ignore_term},
                {"delay", bend.delay},
                {"hang", bend.hang},
                {"die", bend.die ? json(box::signal_name(*bend.die)) : json()},
                {"exit", bend.exit ? json(*bend.exit) : json()},
                {"last_run", nullptr}};
  if (const auto run = hardware.last_run(name)) {
    entry["last_run"] = {{"time", utc(run->time_ns)},
                         {"pid", run->pid},
                         {"arguments", run->arguments},
                         {"exit_status", run->status ? json(*run->status) : json()}};
  }
  return entry;
}

void print(const box::Hardware &hardware, const std::vector<std::string> &names, bool as_json) {
  std::vector<std::vector<std::string>> lines{{"Program", "Bent", "Last run"}};
  json list = json::array();
  for (const std::string &name : names) {
    lines.push_back({name, bend_text(hardware.bend(name)), run_text(hardware.last_run(name))});
    list.push_back(json_of(hardware, name));
  }
  std::fputs(as_json ? json_text(list).c_str() : aligned(lines).c_str(), stdout);
}

std::vector<std::string> program_names() {
  std::vector<std::string> names;
  for (const box::Program &row : box::kPrograms) names.emplace_back(row.name);
  return names;
}

int program(const Options &options) {
  const box::Place place(options.box);
  box::model_of_box(place);  // says what is wrong where this is no box
  box::Hardware hardware(place);
  box::Bend bend = options.bend;
  if (!options.die.empty()) bend.die = box::signal_number(options.die);
  const bool changes = options.reset || !bend.straight();
  if (options.name.empty() && changes) {
    throw box::InventoryError("no program is named. `spbox program " + box::quoted(place.root()) + "` lists them.");
  }
  if (changes) hardware.set_bend(options.name, bend);
  print(hardware, options.name.empty() ? program_names() : std::vector{options.name}, options.as_json);
  return 0;
}

// Validators: what is wrong, or nothing.
std::string no_program(const std::string &text) {
  const std::vector<std::string> names = program_names();
  if (std::find(names.begin(), names.end(), text) != names.end()) return "";
  return "there is no control program " + text + ". `spbox program DIR` lists them";
}

std::string no_signal(const std::string &text) {
  return box::signal_number(text) > 0 ? "" : "there is no signal " + text + ". Give a name such as TERM, or a number";
}

}  // namespace

void add_program(CLI::App &app, Action &action) {
  CLI::App *verb = app.add_subcommand("program", "Show a control program, or bend what it does");
  auto options = std::make_shared<Options>();
  add_box(verb, options->box);
  verb->add_option("NAME", options->name, "Control program; without it, all are shown")->check(no_program);
  auto *exit =
      verb->add_option("--exit", options->bend.exit, "Ends with this status, not acting; with --hang, at SIGTERM");
  exit->option_text("STATUS")->check(CLI::Range(0, 255));
  auto *delay = verb->add_option("--delay", options->bend.delay, "Waits so many seconds first");
  delay->option_text("SECONDS")->check(CLI::Range(1, 86400));
  auto *hang = verb->add_flag("--hang", options->bend.hang, "Never ends");
  auto *term = verb->add_flag("--ignore-term", options->bend.ignore_term, "Does not end at SIGTERM");
  auto *die = verb->add_option("--die", options->die, "Dies by this signal instead of acting");
  die->option_text("SIGNAL")->check(no_signal);
  auto *reset = verb->add_flag("--reset", options->reset, "Makes it straight again");
  for (CLI::Option *option : {exit, delay, hang, term, die}) reset->excludes(option);
  die->excludes(exit);
  die->excludes(hang);
  verb->add_flag("--json", options->as_json, "For scripts");
  verb->footer(
      "What is given replaces how the program was bent before. Several may be given\ntogether, but not --die with "
      "--exit or --hang.\n\n"
      "Examples:\n"
      "  spbox program box                      all programs and their last runs\n"
      "  spbox program box ctlled --exit 206    the LED is not switched\n"
      "  spbox program box ctlmainte --hang --ignore-term\n"
      "  spbox program box ctlled --reset");
  verb->callback([options, &action] { action = [options] { return program(*options); }; });
}

}  // namespace spbox
