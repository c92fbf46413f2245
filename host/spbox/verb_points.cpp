// The points of the commands in a box, counted, and what happens at some of them instead of what is usual.
#include <algorithm>
#include <memory>

#include "host/base/listed.h"
#include "host/base/signal_name.h"
#include "host/box/advice.h"
#include "host/box/breakage.h"
#include "host/box/contents.h"
#include "host/box/points.h"
#include "host/box/program_list.h"
#include "host/spbox/answer.h"
#include "host/spbox/bent_text.h"
#include "host/spbox/standard_output.h"
#include "host/spbox/text.h"
#include "host/spbox/verbs.h"
#include "host/trace_book/event_names.h"

namespace spbox {
namespace {

struct PointsOptions {
  std::filesystem::path box;
  bool count = false, forget = false;
};

struct DeviateOptions {
  std::filesystem::path box;
  std::string kind;
  std::vector<std::string> name;
  box::Deviation deviation;
  bool refused = false, busy = false, missing = false, shorter = false, longer = false, end = false, hang = false;
  bool full = false, midway = false;
  std::optional<int> exit;
  std::string signal;
};

// The ways that take no value, by the option of each.
struct WayFlag {
  box::Way way;
  bool DeviateOptions::*flag;
};
constexpr WayFlag kWayFlags[] = {
    {box::Way::kRefused, &DeviateOptions::refused}, {box::Way::kBusy, &DeviateOptions::busy},
    {box::Way::kMissing, &DeviateOptions::missing}, {box::Way::kShort, &DeviateOptions::shorter},
    {box::Way::kLong, &DeviateOptions::longer},     {box::Way::kEnd, &DeviateOptions::end},
    {box::Way::kHang, &DeviateOptions::hang},       {box::Way::kFull, &DeviateOptions::full},
    {box::Way::kMidway, &DeviateOptions::midway},
};

// Those of a kind, as options, beside --signal.
std::vector<std::string> ways_of(const box::PointKindRow &row) {
  std::vector<std::string> ways;
  for (const WayFlag &way : kWayFlags) {
    if (row.can(way.way)) ways.push_back("--" + std::string(box::word_of(way.way)));
  }
  if (row.can(box::Way::kExit)) ways.emplace_back("--exit");
  return ways;
}

std::string name_text(box::PointKind kind, const std::string &name) {
  return kind == box::PointKind::kTrace ? trace_book::event_text(name) : name;
}

std::string point_text(box::PointKind kind, const std::string &name, std::uint32_t number) {
  return std::string(box::row_of(kind).word) + (name.empty() ? "" : " " + name_text(kind, name)) + " " +
         std::to_string(number);
}

std::string happened_text(const box::Deviation &deviation) {
  return deviation.happened == 0 ? "not yet" : "in process " + std::to_string(deviation.happened);
}

}  // namespace

std::string deviation_text(const box::Deviation &deviation) {
  return "At " + point_text(deviation.kind, deviation.name, deviation.number) + ": " + box::text_of(deviation.turn) +
         (deviation.happened == 0 ? "" : ", happened " + happened_text(deviation));
}

namespace {

// ---- points --------------------------------------------------------------------------------------------------------

Json::Object points_json(const box::Points &points, bool counting) {
  Json::List counts, deviations;
  for (const box::PointCount &count : points.counts) {
    counts.push_back(Json::Object{
        {"kind", box::row_of(count.kind).word}, {"name", name_text(count.kind, count.name)}, {"count", count.count}});
  }
  for (const box::Deviation &deviation : points.deviations) {
    deviations.push_back(Json::Object{{"kind", box::row_of(deviation.kind).word},
                                      {"name", name_text(deviation.kind, deviation.name)},
                                      {"at", deviation.number},
                                      {"what", box::text_of(deviation.turn)},
                                      {"pid", deviation.happened == 0 ? Json() : Json(deviation.happened)}});
  }
  return Json::Object{{"counting", counting}, {"counts", counts}, {"deviations", deviations}, {"lost", points.lost}};
}

void print_points(const box::Points &points) {
  std::vector<std::vector<std::string>> lines{{"Kind", "Name", "Times"}};
  for (const box::PointCount &count : points.counts) {
    lines.push_back(
        {std::string(box::row_of(count.kind).word), name_text(count.kind, count.name), std::to_string(count.count)});
  }
  if (lines.size() > 1) print(aligned(lines));
  if (lines.size() == 1) print_line("No command has come to a point yet.");
  if (points.lost != 0) print_line("There was no room to count " + std::to_string(points.lost) + " more.");
  if (points.deviations.empty()) return;
  std::vector<std::vector<std::string>> table{{"Deviation", "What", "Happened"}};
  for (const box::Deviation &deviation : points.deviations) {
    table.push_back({point_text(deviation.kind, deviation.name, deviation.number), box::text_of(deviation.turn),
                     happened_text(deviation)});
  }
  print_line("");
  print(aligned(table));
}

int points(const PointsOptions &options) {
  const box::Place place(options.box);
  box::check_is_box(place);
  if (options.count) {
    box::count_points(place);
    print_line("The points of commands are counted from now on.");
    return 0;
  }
  if (options.forget) {
    print_line(box::forget_points(place) ? "The points are forgotten, and all happens as usual."
                                         : "No points were counted.");
    return 0;
  }
  const std::optional<box::Points> counted = box::points_of(place);
  if (is_for_script()) {
    answer(points_json(counted.value_or(box::Points()), counted.has_value()));
  } else if (counted) {
    print_points(*counted);
  } else {
    print_line("Points are not counted. " + box::advice({"points", options.box, "--count"}) + " begins.");
  }
  return 0;
}

// ---- deviate -------------------------------------------------------------------------------------------------------

std::vector<std::string> kind_names() {
  std::vector<std::string> names;
  for (const box::PointKindRow &row : box::kPointKinds) names.emplace_back(row.word);
  return names;
}

std::string kinds_text() {
  std::string text;
  for (const box::PointKindRow &row : box::kPointKinds) {
    std::string left = "  " + std::string(row.word) + (row.name.empty() ? "" : " ") + std::string(row.name);
    left.resize(24, ' ');
    text += left + std::string(row.what) + "\n" + std::string(24, ' ') + base::listed(ways_of(row)) + "\n";
  }
  return text;
}

const box::PointKindRow &kind_row(const std::string &word) {
  return *std::ranges::find(box::kPointKinds, std::string_view(word), &box::PointKindRow::word);
}

// Throws where a name is one of few, and not one of those.
template <typename Names>
void check_name(const Names &names, const std::string &name, const char *what) {
  if (std::ranges::find(names, name) != names.end()) return;
  throw UsageError("`" + name + "` is no " + what + ". It is one of " + base::listed(names) + ".");
}

std::string event_in(const std::vector<std::string> &words) {
  const auto event = words.size() == 2 ? trace_book::event_named(words[0], words[1]) : std::nullopt;
  if (event) return hexadecimal(*event).substr(2);
  const auto known = trace_book::event_names(words[0]);
  if (known.empty()) throw UsageError("`" + words[0] + "` is no function that records events.");
  throw UsageError("which event? Those of `" + words[0] + "` are " + base::listed(known) + ".");
}

// Of the kinds whose points are calls.
std::vector<std::string_view> calls_of(box::PointKind kind) {
  if (kind == box::PointKind::kFile) return {box::kFileCalls.begin(), box::kFileCalls.end()};
  if (kind == box::PointKind::kMessage) return {box::kMessageCalls.begin(), box::kMessageCalls.end()};
  return {};
}

// The name under which the points of a kind are counted.
std::string name_in(const box::PointKindRow &kind, const std::vector<std::string> &words) {
  const bool has_name = !kind.name.empty();
  if (has_name && words.empty()) {
    throw UsageError("which one? `" + std::string(kind.word) + "` needs a name: " + std::string(kind.name) + ".");
  }
  if (kind.kind == box::PointKind::kTrace) return event_in(words);
  if (words.size() > (has_name ? 1U : 0U)) throw UsageError("`" + words.back() + "` is a word too many.");
  if (const auto calls = calls_of(kind.kind); !calls.empty()) check_name(calls, words[0], "call at such a point");
  if (kind.name == "DATABASE") check_name(box::kDatabaseNames, words[0], "database");
  if (kind.kind == box::PointKind::kProgram) check_name(box::program_names(), words[0], "control program");
  return has_name ? words[0] : "";
}

int signal_in(const std::string &text) {
  if (const int signal = base::signal_number(text); signal > 0) return signal;
  throw UsageError("there is no signal `" + text + "`. Give a name such as TERM, or a number.");
}

std::vector<box::Turn> turns_in(const DeviateOptions &options) {
  std::vector<box::Turn> turns;
  for (const WayFlag &row : kWayFlags) {
    if (options.*row.flag) turns.push_back({row.way, 0});
  }
  if (options.exit) turns.push_back({box::Way::kExit, *options.exit});
  if (!options.signal.empty()) turns.push_back({box::Way::kSignal, signal_in(options.signal)});
  return turns;
}

void check(DeviateOptions &options) {
  const box::PointKindRow &kind = kind_row(options.kind);
  box::Deviation &deviation = options.deviation;
  deviation.name = name_in(kind, options.name);
  const std::vector<box::Turn> turns = turns_in(options);
  if (turns.size() != 1) throw UsageError("what is to happen? Give one of the options of this kind of point.");
  if (!kind.can(turns.front().way)) {
    throw UsageError("`" + options.kind + "` takes no --" + std::string(box::word_of(turns.front().way)) + ".");
  }
  deviation.kind = kind.kind;
  deviation.turn = turns.front();
}

int deviate(const DeviateOptions &options) {
  const box::Place place(options.box);
  box::check_is_box(place);
  const box::Deviation &deviation = options.deviation;
  box::deviate(place, deviation);
  print_line("At " + point_text(deviation.kind, deviation.name, deviation.number) +
             " this happens: " + box::text_of(deviation.turn) + ".");
  const bool is_of_record = deviation.kind == box::PointKind::kRead || deviation.kind == box::PointKind::kWrite;
  if (is_of_record && !box::has_record(place, deviation.name)) {
    print_line("The box has no record " + deviation.name + " now. Is the name right?");
  }
  print_line(box::advice({"points", options.box, "--forget"}) + " lets all happen as usual.");
  return 0;
}

}  // namespace

Verb points_verb() {
  auto options = std::make_shared<PointsOptions>();
  return {.name = "points",
          .line = "Show at which points a command could have gone wrong",
          .works_on_box = true,
          .words = {box_word(options->box),
                    {.name = "--count",
                     .help = "Count them from now on, from 0 and without deviations",
                     .to = &options->count,
                     .excludes = {"--forget"}},
                    {.name = "--forget", .help = "Count them no longer; all happens as usual", .to = &options->forget}},
          .footer =
              "A point is something that a command asks its platform for, or the start of a\n"
              "control program. `spbox deviate` lets something else happen there. A command\n"
              "that began before --count is not counted.\n\n"
              "Examples:\n"
              "  spbox points box --count       from now on\n"
              "  spbox run box ./replace_unit   comes to its points\n"
              "  spbox points box               which they were, and how often",
          .act = [options] { return points(*options); },
          .as_step = step_of_verb("points", [options] { return options->count || options->forget; })};
}

Verb deviate_verb() {
  auto options = std::make_shared<DeviateOptions>();
  const auto way = [&](const char *name, const char *help, Target to) {
    return Word{.name = name, .help = help, .to = std::move(to)};
  };
  return {
      .name = "deviate",
      .line = "Let something else happen at one point of a command",
      .works_on_box = true,
      .words = {box_word(options->box),
                {.name = "KIND",
                 .help = "The kind of point: see below",
                 .to = Choice{&options->kind, "kind of point", kind_names()},
                 .need = Need::kRequired},
                {.name = "NAME", .help = "Which program, record ...; none where a kind has none", .to = &options->name},
                {.name = "--at",
                 .help = "At the point with this number among those of its kind\nand name; 1 at first",
                 .to = number(options->deviation.number, 1, 1'000'000'000),
                 .value = "NUMBER"},
                way("--refused", "The call fails", &options->refused),
                way("--busy", "Another process holds the lock for too long", &options->busy),
                way("--missing", "The record or the pager is not there", &options->missing),
                way("--short", "The record is one byte too short", &options->shorter),
                way("--long", "The record is one byte too long", &options->longer),
                way("--end", "The operator's input is at its end", &options->end),
                way("--hang", "The program never ends", &options->hang),
                way("--full", "From here on /tmp has no room for the command", &options->full),
                way("--midway", "The pager is killed in the middle of its page", &options->midway),
                {.name = "--exit",
                 .help = "The program does nothing and ends with this status",
                 .to = number(options->exit, box::kLowestExit, box::kHighestExit),
                 .value = "STATUS"},
                {.name = "--signal",
                 .help = "The process gets this signal there",
                 .to = &options->signal,
                 .value = "SIGNAL"}},
      .footer = "Kinds of points, and what can happen there beside --signal:\n\n" + kinds_text() +
                "\nIt happens to the next command. What was set before stays; `spbox points` shows\n"
                "it, and whether it has happened.\n\n"
                "Examples:\n"
                "  spbox deviate box program ctlled --at 2 --exit 206\n"
                "  spbox deviate box read current_psu_info --at 3 --missing\n"
                "  spbox deviate box file make --at 2 --full\n"
                "  spbox deviate box trace lmainte_exec entry --signal KILL",
      .check = [options] { check(*options); },
      .act = [options] { return deviate(*options); },
      .as_step = step_of_verb("deviate")};
}

}  // namespace spbox
