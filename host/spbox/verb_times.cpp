// The time limits that a command reads from the box's time files.
#include <algorithm>
#include <memory>

#include "host/base/number.h"
#include "host/box/advice.h"
#include "host/box/contents.h"
#include "host/box/program_list.h"
#include "host/box/time_files.h"
#include "host/spbox/answer.h"
#include "host/spbox/standard_output.h"
#include "host/spbox/text.h"
#include "host/spbox/verbs.h"

namespace spbox {
namespace {

struct TimesOptions {
  std::filesystem::path box;
  std::string name;
  std::vector<std::string> words;
  std::vector<std::uint32_t> seconds;
  bool missing = false, reset = false;
};

constexpr const char *kMissing = "The file is missing.";

// The kinds of units by their slots in lmainte_model_data. Most slots have no name: commands agree on them with the file.
constexpr std::array<std::string_view, box::kControlTimes> kKinds{"cmu",   "iou",   "slot2", "fan",   "psu",    "slot5",
                                                                  "slot6", "slot7", "slot8", "slot9", "slot10", "bp32"};

std::vector<std::string> timed_names() {
  std::vector<std::string> names = box::program_names();
  names.insert(names.end(), kKinds.begin(), kKinds.end());
  return names;
}

std::optional<std::size_t> kind_of(const std::string &name) {
  const auto *const found = std::ranges::find(kKinds, name);
  return found == kKinds.end() ? std::nullopt : std::optional<std::size_t>(found - kKinds.begin());
}

std::size_t program_of(const std::string &name) {
  const auto *const row =
      std::ranges::find_if(box::kPrograms, [&](const auto &program) { return program.name == name; });
  return row->number;
}

bool changes_times(const TimesOptions &options) {
  return options.missing || options.reset || !options.seconds.empty();
}

// A file by its times, or why it has none.
template <typename Times>
struct File {
  std::optional<Times> times;
  std::string why;
};
template <typename Times>
File<Times> file_of(std::optional<Times> (&read)(const box::Place &, std::uint32_t), const box::Place &place,
                    std::uint32_t model) {
  try {
    return {read(place, model), kMissing};
  } catch (const box::BoxError &error) {
    return {std::nullopt, error.what()};
  }
}

struct BothFiles {
  File<box::CommandTimes> commands;
  File<box::ControlTimes> controls;
};

// Changes the files, and what is known of them: nothing is read any more that could fail behind a change. Of a file that was missing
// or cut, the other times are the usual ones.
void change(const box::Place &place, std::uint32_t model, const TimesOptions &options, BothFiles &files) {
  if (options.missing) {
    files = {{std::nullopt, kMissing}, {std::nullopt, kMissing}};
    return box::remove_time_files(place, model);
  }
  const auto kind = kind_of(options.name);
  if (options.reset || kind) {
    box::ControlTimes times = options.reset ? box::usual_control_times(model)
                                            : files.controls.times.value_or(box::usual_control_times(model));
    for (std::size_t i = 0; kind && i < times.size(); ++i) times.at(i).at(*kind) = options.seconds.at(i);
    box::set_control_times(place, model, times);
    files.controls.times = times;
  }
  if (options.reset || !kind) {
    box::CommandTimes times =
        options.reset ? box::usual_command_times() : files.commands.times.value_or(box::usual_command_times());
    if (!options.seconds.empty()) times.at(program_of(options.name)) = options.seconds.front();
    box::set_command_times(place, model, times);
    files.commands.times = times;
  }
}

std::string seconds_text(std::uint32_t seconds) {
  return std::to_string(seconds) + " s";
}

int times(const TimesOptions &options) {
  const box::Place place(options.box);
  const std::uint32_t model = box::model_of_box(place);
  BothFiles files{file_of(box::command_times, place, model), file_of(box::control_times, place, model)};
  if (changes_times(options)) change(place, model, options, files);
  const auto &[commands, controls] = files;
  const auto is_wanted = [&](std::string_view name) { return options.name.empty() || options.name == name; };
  std::vector<std::vector<std::string>> programs{{"Program", "Time limit"}}, kinds{{"Kind", "Time 1", "Time 2"}};
  Json::List program_list, kind_list;
  for (const box::Program &program : box::kPrograms) {
    if (!commands.times || !is_wanted(program.name)) continue;
    const std::uint32_t limit = commands.times->at(program.number);
    programs.push_back({std::string(program.name), seconds_text(limit)});
    program_list.emplace_back(Json::Object{{"name", program.name}, {"seconds", limit}});
  }
  for (std::size_t i = 0; i < kKinds.size(); ++i) {
    if (!controls.times || !is_wanted(kKinds.at(i))) continue;
    const std::uint32_t first = controls.times->at(0).at(i), second = controls.times->at(1).at(i);
    kinds.push_back({std::string(kKinds.at(i)), seconds_text(first), seconds_text(second)});
    kind_list.emplace_back(Json::Object{{"name", kKinds.at(i)}, {"seconds_1", first}, {"seconds_2", second}});
  }
  if (is_for_script()) {
    answer({{"programs", commands.times ? Json(program_list) : Json()},
            {"kinds", controls.times ? Json(kind_list) : Json()}});
    return 0;
  }
  const bool all = options.name.empty(), of_kinds = kind_of(options.name).has_value();
  if (all || !of_kinds) print(commands.times ? aligned(programs) : "Control programs: " + commands.why + "\n");
  if (all) print("\n");
  if (all || of_kinds) print(controls.times ? aligned(kinds) : "Kinds of units: " + controls.why + "\n");
  return 0;
}

void check(TimesOptions &options) {
  for (const std::string &word : options.words) {
    const auto seconds = base::number_in<std::uint32_t>(word);
    if (!seconds) throw UsageError("`" + word + "` is no number of seconds.");
    options.seconds.push_back(*seconds);
  }
  const std::size_t wanted = kind_of(options.name) ? 2 : 1;
  if (!options.seconds.empty() && options.seconds.size() != wanted) {
    throw UsageError(wanted == 2 ? "a kind of unit has two times." : "a control program has one time limit.");
  }
  if ((options.missing || options.reset) && !options.name.empty()) {
    throw UsageError("--missing and --reset are for both files. Leave " + options.name + " out.");
  }
}

}  // namespace

Verb times_verb() {
  auto options = std::make_shared<TimesOptions>();
  return {.name = "times",
          .line = "Show or set time limits of control programs and units",
          .works_on_box = true,
          .words = {box_word(options->box),
                    {.name = "NAME",
                     .help = "A control program or a kind of unit; without it, all are\nshown",
                     .to = Choice{&options->name, "control program or kind of unit", timed_names()}},
                    {.name = "SECONDS",
                     .help = "Its time limit; of a kind of unit, its two control times",
                     .to = &options->words},
                    {.name = "--missing", .help = "The model's two time files are not there", .to = &options->missing},
                    {.name = "--reset",
                     .help = "All times as in a new box",
                     .to = &options->reset,
                     .excludes = {"--missing"}}},
          .footer =
              "A command reads the times of the model that the server takes itself for.\n\n"
              "Examples:\n"
              "  spbox times box ctlled 2        its next starts have two seconds\n"
              "  spbox times box psu 5 10        how long a procedure waits for a power supply\n"
              "  spbox times box --missing       no command learns its times\n"
              "  spbox times box --reset",
          .check = [options] { check(*options); },
          .act = [options] { return times(*options); },
          .acts_confined = false,  // files are made and removed, where no link leads out of the box
          .as_step = step_of_verb("times", [options] { return changes_times(*options); })};
}

}  // namespace spbox
