#include "host/sweep/deviation.h"

#include <algorithm>
#include <csignal>
#include <filesystem>

#include "host/base/signal_name.h"
#include "host/box/inventory_kinds.h"
#include "host/box/model.h"
#include "host/box/unit_name.h"
#include "host/play/script_writer.h"
#include "host/programs/exit_statuses.h"
#include "host/trace_book/event_names.h"

namespace sweep {
namespace {

using box::PointKind;
using box::Way;
using Instead = std::optional<std::vector<Words>>;

const std::vector<PointKind> kPrograms{PointKind::kProgram}, kRecords{PointKind::kRead}, kLocks{PointKind::kLock};
const std::vector<PointKind> kCalls{PointKind::kOpen,   PointKind::kLock,  PointKind::kRead,     PointKind::kWrite,
                                    PointKind::kUnlock, PointKind::kClose, PointKind::kFile,     PointKind::kTrace,
                                    PointKind::kLog,    PointKind::kName,  PointKind::kQuestion, PointKind::kMessage};
const std::vector<PointKind> kQuestions{PointKind::kQuestion}, kFiles{PointKind::kFile}, kPagers{PointKind::kPager};

constexpr int kUnknownStatus = 77, kNotRun = 127;

// The exit statuses of which a command has to know, and one that none knows. That its arguments make no sense a program with none of its
// own says, too.
std::vector<int> statuses_of(std::string_view program) {
  const auto own = programs::own_statuses_of(program);
  std::vector<int> statuses(own.begin(), own.end());
  if (own.empty()) statuses.push_back(programs::kUsage);
  statuses.insert(statuses.end(), {programs::kFailed, kUnknownStatus});
  return statuses;
}

// ---- what the operator does instead

Instead in_place(const std::string &keys) {
  return {{{"type", keys}}};
}

Instead before(const std::string &keys, const Occasion &occasion) {
  Words as_before = occasion.words;
  as_before.insert(as_before.begin(), "type");
  return {{{"type", keys}, {"pause", "1"}, as_before}};
}

Instead gives_up(const Occasion & /*occasion*/) {
  return in_place("q\n");
}
Instead ends_input(const Occasion & /*occasion*/) {
  return in_place("\004");
}
Instead interrupts(const Occasion & /*occasion*/) {
  return in_place("\003");
}
Instead types_nonsense(const Occasion &occasion) {
  return before("nonsense\n", occasion);
}
Instead types_nothing(const Occasion &occasion) {
  return before("\n", occasion);
}
Instead line_is_cut(const Occasion & /*occasion*/) {
  return {{{"hangup"}}};
}

// While the command waits for the answer.
Instead changes_window(const Occasion &occasion) {
  Words as_before = occasion.words;
  as_before.insert(as_before.begin(), "type");
  return {{{"resize", "30", "100"}, {"pause", "1"}, as_before}};
}

// They stop the command, and go on with it a while later.
Instead stops_and_goes_on(const Occasion &occasion) {
  Words as_before = occasion.words;
  as_before.insert(as_before.begin(), "type");
  return {{{"type", "\032"}, {"pause", "2"}, {"signal", "CONT"}, {"pause", "1"}, as_before}};
}

template <int kSignal>
Instead gets(const Occasion & /*occasion*/) {
  return {{{"signal", base::signal_name(kSignal).substr(3)}}};
}

// ---- what the technician does instead

const std::string &unit_in(const Occasion &occasion) {
  return occasion.words.at(1);
}

// As the play has it, and more.
std::vector<Words> as_before(const Occasion &occasion) {
  Words words = occasion.words;
  words.insert(words.begin(), "spbox");
  return {words};
}

Instead never_comes(const Occasion & /*occasion*/) {
  return std::vector<Words>{};
}

Instead flickers(const Occasion &occasion) {
  return {{{"hands", "flicker " + unit_in(occasion) + " 5 0.5"}}};
}

Instead with_hands(const Occasion &occasion, const std::string &hands) {
  auto steps = as_before(occasion);
  steps.push_back({"hands", hands + " " + unit_in(occasion)});
  return steps;
}

Instead comes_back(const Occasion &occasion) {
  return with_hands(occasion, "after 3; insert");
}
Instead vanishes(const Occasion &occasion) {
  return with_hands(occasion, "after 3; pull");
}

Instead with_state(const Occasion &occasion, const char *state) {
  auto steps = as_before(occasion);
  steps.push_back({"spbox", state, unit_in(occasion)});
  return steps;
}

Instead comes_faulty(const Occasion &occasion) {
  return with_state(occasion, "fault");
}
Instead comes_degraded(const Occasion &occasion) {
  return with_state(occasion, "degrade");
}

// Another one of its kind; nothing where there is none.
Instead pulls_another(const Occasion &occasion) {
  const box::Model *model = box::find_model(occasion.model);
  if (model == nullptr) return {};
  const auto places = box::places_of(model->code);
  const std::string unit = box::location_of(unit_in(occasion));
  const auto at = std::ranges::find(places, unit, &box::UnitPlace::name);
  if (at == places.end()) return {};
  const auto other = std::ranges::find_if(places, [&](const box::UnitPlace &place) {
    return place.type() == at->type() && place.name != unit && !place.carried && place.carrier() != at->carrier();
  });
  if (other == places.end()) return {};
  return {{{"spbox", "pull", other->name}}};
}

const std::vector<DeviationRow> kRows{
    {"exit",
     "a control program ends with an exit status of its page, or with another one",
     At::kPoint,
     kPrograms,
     {Way::kExit, 0}},
    {"absent", "a control program is not there", At::kPoint, kPrograms, {Way::kExit, kNotRun}},
    {"dies", "a control program dies of a signal", At::kPoint, kPrograms, {Way::kSignal, SIGSEGV}},
    {"hang", "a control program never ends", At::kPoint, kPrograms, {Way::kHang, 0}},
    {"missing", "a record is not there", At::kPoint, kRecords, {Way::kMissing, 0}},
    {"short", "a record is too short", At::kPoint, kRecords, {Way::kShort, 0}},
    {"long", "a record is too long", At::kPoint, kRecords, {Way::kLong, 0}},
    {"refused", "a call is refused", At::kPoint, kCalls, {Way::kRefused, 0}},
    {"full", "/tmp has no room from here on", At::kPoint, kFiles, {Way::kFull, 0}},
    {"missing", "the pager is not there", At::kPoint, kPagers, {Way::kMissing, 0}},
    {"refused", "the pager cannot be run", At::kPoint, kPagers, {Way::kRefused, 0}},
    {"dies", "the pager dies of a signal at once", At::kPoint, kPagers, {Way::kSignal, SIGKILL}},
    {"midway", "the pager is killed in the middle of its page", At::kPoint, kPagers, {Way::kMidway, 0}},
    {"busy", "somebody else holds the lock for longer than the wait", At::kPoint, kLocks, {Way::kBusy, 0}},
    {.word = "end",
     .what = "the operator's input is at its end",
     .at = At::kPoint,
     .kinds = kQuestions,
     .turn = {Way::kEnd, 0},
     .is_choice = true},
    {"INT", "SIGINT comes", At::kPoint, kCalls, {Way::kSignal, SIGINT}},
    {"TERM", "SIGTERM comes", At::kPoint, kCalls, {Way::kSignal, SIGTERM}},
    {"HUP", "SIGHUP comes", At::kPoint, kCalls, {Way::kSignal, SIGHUP}},
    {"KILL", "SIGKILL comes, and another command begins", At::kPoint, kCalls, {Way::kSignal, SIGKILL}},
    {.word = "q", .what = "the operator gives up", .at = At::kAnswer, .is_choice = true, .instead = gives_up},
    {.word = "nonsense",
     .what = "the operator types what makes no sense",
     .at = At::kAnswer,
     .instead = types_nonsense},
    {.word = "empty", .what = "the operator types an empty line", .at = At::kAnswer, .instead = types_nothing},
    {.word = "Ctrl-D",
     .what = "the operator ends their input",
     .at = At::kAnswer,
     .is_choice = true,
     .instead = ends_input},
    {.word = "Ctrl-C", .what = "the operator interrupts", .at = At::kAnswer, .is_choice = true, .instead = interrupts},
    {.word = "cut", .what = "the operator's line is cut", .at = At::kAnswer, .instead = line_is_cut},
    {.word = "Ctrl-Z",
     .what = "the operator stops the command, and goes on",
     .at = At::kAnswer,
     .instead = stops_and_goes_on},
    {.word = "INT", .what = "SIGINT comes", .at = At::kAnswer, .is_in_place_of_points = true, .instead = gets<SIGINT>},
    {.word = "TERM",
     .what = "SIGTERM comes",
     .at = At::kAnswer,
     .is_in_place_of_points = true,
     .instead = gets<SIGTERM>},
    {.word = "HUP", .what = "SIGHUP comes", .at = At::kAnswer, .is_in_place_of_points = true, .instead = gets<SIGHUP>},
    {.word = "KILL",
     .what = "SIGKILL comes, and another command begins",
     .at = At::kAnswer,
     .is_in_place_of_points = true,
     .instead = gets<SIGKILL>},
    {.word = "resized", .what = "the operator's window changes its size", .at = At::kAnswer, .instead = changes_window},
    {.word = "never", .what = "the unit is not pulled out", .at = At::kPull, .instead = never_comes},
    {.word = "flickers", .what = "the unit is out, in, out, in and out", .at = At::kPull, .instead = flickers},
    {.word = "back", .what = "the unit is in again a moment later", .at = At::kPull, .instead = comes_back},
    {.word = "another", .what = "another unit is pulled out by mistake", .at = At::kPull, .instead = pulls_another},
    {.word = "never", .what = "no unit is put in", .at = At::kInsert, .instead = never_comes},
    {.word = "flickers", .what = "the unit is in, out, in, out and in", .at = At::kInsert, .instead = flickers},
    {.word = "vanishes", .what = "the unit is out again a moment later", .at = At::kInsert, .instead = vanishes},
    {.word = "faulty", .what = "a faulty unit is put in", .at = At::kInsert, .instead = comes_faulty},
    {.word = "degraded", .what = "a degraded unit is put in", .at = At::kInsert, .instead = comes_degraded},
};

// What records of the trace the databases' calls write stands between these calls, which are points themselves.
bool is_of_databases(const std::string &event) {
  const std::string text = trace_book::event_text(event);
  return text.starts_with("lmainte_scdb_") || text.starts_with("lmainte_db_");
}

// A call for a file that needs room in /tmp. What is opened may be new.
bool needs_room(std::string_view call) {
  return call == "open" || call == "write" || call == "make";
}

// The last point of a range at which it can be, from the first one on; none where that comes first. One record of the trace is refused
// as another one of its event is.
std::uint32_t last_for(const DeviationRow &row, const PointRange &range) {
  if (row.turn.way == Way::kFull) return needs_room(range.name) ? range.last : 0;
  if (range.kind != PointKind::kTrace) return range.last;
  if (row.turn.way == Way::kRefused) return range.first;
  return gets_signals(range.kind, range.name) ? range.last : 0;
}

std::vector<box::Turn> turns_of(const DeviationRow &row, const PointRange &range) {
  if (row.turn.way != Way::kExit || row.turn.value != 0) return {row.turn};
  std::vector<box::Turn> turns;
  for (const int status : statuses_of(range.name)) turns.push_back({Way::kExit, status});
  return turns;
}

void add_at_points(const DeviationRow &row, const Good &good, std::vector<Deviation> &to) {
  for (const PointRange &range : good.points) {
    if (std::ranges::find(row.kinds, range.kind) == row.kinds.end()) continue;
    const auto turns = turns_of(row, range);
    const std::uint32_t last = last_for(row, range);
    for (std::uint32_t number = range.first; number <= last; ++number) {
      for (const box::Turn &turn : turns) {
        to.push_back({&row, range.command, box::Deviation{range.kind, range.name, number, turn, 0}});
      }
    }
  }
}

std::optional<At> occasion_of(const play::Step &step) {
  if (step.row->verb == "type") return At::kAnswer;
  if (step.row->verb != "spbox" || step.words.size() != 2) return {};
  if (step.words[0] == "pull") return At::kPull;
  return step.words[0] == "insert" ? std::optional(At::kInsert) : std::nullopt;
}

bool asks_by_library(const Good &good, std::size_t command) {
  return std::ranges::any_of(good.points, [command](const PointRange &range) {
    return range.kind == PointKind::kQuestion && range.command == command;
  });
}

void add_at_steps(const DeviationRow &row, const std::vector<play::Step> &steps, const Good &good,
                  std::vector<Deviation> &to) {
  std::string model;
  std::size_t begun = 0, number = 0;
  for (std::size_t i = 0; i < steps.size(); ++i) {
    const play::Step &step = steps[i];
    if (step.row->traits.makes_box) model = step.words[0];
    if (step.row->traits.starts_command) ++begun;
    const bool runs = begun > 0 && begun <= good.commands.size() && steps[good.commands[begun - 1].start].late.empty();
    if (occasion_of(step) != row.at) continue;
    ++number;
    if (!runs || !step.late.empty() || i < good.first_step || i > good.last_step) continue;
    if (row.is_in_place_of_points && asks_by_library(good, begun - 1)) continue;
    const auto instead = row.instead({step.words, model});
    if (instead)
      to.push_back({&row, begun - 1, {}, i, number, std::filesystem::path(step.place).filename().string(), *instead});
  }
}

std::string point_name(const box::Deviation &point) {
  return point.kind == PointKind::kTrace ? trace_book::event_text(point.name) : point.name;
}

}  // namespace

std::span<const DeviationRow> deviation_rows() {
  return kRows;
}

std::string kind_of(const Deviation &deviation) {
  if (deviation.point) return std::string(box::row_of(deviation.point->kind).word);
  switch (deviation.row->at) {
    case At::kPull:
      return "pull";
    case At::kInsert:
      return "insert";
    default:
      return "answer";
  }
}

std::string where(const Deviation &deviation) {
  if (!deviation.point) return kind_of(deviation) + " " + std::to_string(deviation.number) + " at " + deviation.place;
  const box::Deviation &point = *deviation.point;
  const std::string name = point_name(point);
  return kind_of(deviation) + (name.empty() ? "" : " " + name) + " " + std::to_string(point.number);
}

std::string what(const Deviation &deviation) {
  return deviation.point ? box::text_of(deviation.point->turn) : std::string(deviation.row->word);
}

std::string sort_of(const Deviation &deviation) {
  const std::string name = deviation.point ? " " + point_name(*deviation.point) : "";
  return kind_of(deviation) + (name == " " ? "" : name) + " " + std::string(deviation.row->word);
}

std::string name_of(const Deviation &deviation) {
  return where(deviation) + ": " + what(deviation);
}

std::vector<std::string> lines_of(const Deviation &deviation) {
  std::vector<std::string> lines;
  for (const Words &words : deviation.instead) lines.push_back(play::written_step(words));
  if (!deviation.point) return lines;
  const box::Deviation &point = *deviation.point;
  Words words{"spbox", "deviate", std::string(box::row_of(point.kind).word)};
  const std::string name = point_name(point);
  if (point.kind == PointKind::kTrace && name.find(' ') != std::string::npos) {
    words.insert(words.end(), {name.substr(0, name.find(' ')), name.substr(name.find(' ') + 1)});
  } else if (!name.empty()) {
    words.push_back(name);
  }
  words.insert(words.end(), {"--at", std::to_string(point.number), "--" + std::string(box::word_of(point.turn.way))});
  if (point.turn.way == Way::kExit) words.push_back(std::to_string(point.turn.value));
  if (point.turn.way == Way::kSignal) words.push_back(base::signal_name(point.turn.value).substr(3));
  return {play::written_step(words)};
}

std::vector<Deviation> all_deviations(const std::vector<play::Step> &steps, const Good &good) {
  std::vector<Deviation> all;
  for (const DeviationRow &row : kRows) {
    if (row.at == At::kPoint) {
      add_at_points(row, good, all);
    } else {
      add_at_steps(row, steps, good, all);
    }
  }
  std::erase_if(all, [&](const Deviation &deviation) {
    return starts_control_program(steps[good.commands[deviation.command].start]);
  });
  return all;
}

bool gets_signals(PointKind kind, const std::string &name) {
  if (kind == PointKind::kTrace) return !is_of_databases(name);
  return kind != PointKind::kProgram && kind != PointKind::kPager;
}

play::Step step_of(const Words &words) {
  play::Step step{{"the sweep", play::written_step(words), words}, nullptr, {}, {}, -1, {}};
  step.row = &script::take_row(play::step_rows(), step.words);
  if (step.row->check != nullptr) step.row->check(step.words);
  return step;
}

bool starts_control_program(const play::Step &step) {
  return step.row->traits.starts_command && step.words[0].starts_with("/mgb/");
}

}  // namespace sweep
