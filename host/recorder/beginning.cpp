#include "host/recorder/beginning.h"

#include <algorithm>
#include <array>
#include <span>
#include <string>

#include "host/base/signal_name.h"
#include "host/box/breakage.h"
#include "host/box/daemon_bend.h"
#include "host/box/inventory.h"
#include "host/box/model.h"
#include "host/box/program_list.h"
#include "host/technician/changes.h"

namespace recorder {
namespace {

using play::Words;

struct Row {
  box::Change change;
  bool (*is_so)(const box::Unit &unit);
};
constexpr std::array<Row, 3> kRows{{
    {box::Change::kPull, [](const box::Unit &unit) { return unit.unreadable.empty() && !unit.installed(); }},
    {box::Change::kFault, [](const box::Unit &unit) { return unit.faulted(); }},
    {box::Change::kDegrade, [](const box::Unit &unit) { return unit.degraded(); }},
}};

// What a unit carries goes with it.
bool goes_with_another(const std::string &unit, const std::vector<std::string> &units) {
  return std::ranges::any_of(units, [&](const std::string &other) { return unit.starts_with(other + "/"); });
}

// Does to a new box what makes its units be as they are, and returns the steps that do so.
std::vector<Words> change_units(const std::vector<box::Unit> &units, const box::Inventory &fresh) {
  std::vector<Words> steps;
  for (const Row &row : kRows) {
    std::vector<std::string> names;
    for (const box::Unit &unit : units) {
      const bool goes_along = row.change == box::Change::kPull && goes_with_another(unit.place.name, names);
      if (row.is_so(unit) && !goes_along) names.push_back(unit.place.name);
    }
    if (names.empty()) continue;
    fresh.change(row.change, names);
    steps.push_back({"spbox", std::string(technician::row_of(row.change).verb)});
    steps.back().insert(steps.back().end(), names.begin(), names.end());
  }
  return steps;
}

Words step_of(std::string_view program, const box::Bend &bend) {
  Words step{"spbox", "program", std::string(program)};
  const auto add = [&](const char *option, const std::string &value) { step.insert(step.end(), {option, value}); };
  if (bend.exit) add("--exit", std::to_string(*bend.exit));
  if (bend.delay > 0) add("--delay", std::to_string(bend.delay));
  if (bend.hang) step.emplace_back("--hang");
  if (bend.ignore_term) step.emplace_back("--ignore-term");
  if (bend.die) add("--die", std::to_string(*bend.die));
  return step;
}

std::vector<Words> bend_programs(const box::Place &place, const box::Place &fresh) {
  const box::TextDatabase kept(place);
  box::TextDatabase other(fresh);
  std::vector<Words> steps;
  for (const box::Program &program : box::kPrograms) {
    const box::Bend bend = box::bend_of(kept, program.name);
    if (bend.straight()) continue;
    box::set_bend(other, program.name, bend);
    steps.push_back(step_of(program.name, bend));
  }
  const box::DaemonBend daemon = box::daemon_bend(kept);
  for (const box::DaemonWayName &row : box::kDaemonWays) {
    if (row.way != daemon.way || row.way == box::DaemonWay::kWell) continue;
    box::set_daemon_bend(other, daemon);
    const bool is_late = row.way == box::DaemonWay::kLate;
    steps.push_back({"spbox", "daemon", is_late ? "--delay" : "--" + std::string(row.name)});
    if (is_late) steps.back().push_back(std::to_string(daemon.seconds));
  }
  return steps;
}

struct BreakageRow {
  box::Breakage breakage;
  const char *option;
};

BreakageRow row_of(const box::BrokenRecord &broken) {
  if (!broken.size) return {box::Breakage::kMissing, "--missing"};
  if (*broken.size < broken.whole) return {box::Breakage::kShort, "--short"};
  return {box::Breakage::kLong, "--long"};
}

std::vector<Words> break_records(const box::Place &place, const box::Place &fresh) {
  std::vector<Words> steps;
  for (const box::BrokenRecord &broken : box::broken_records(place)) {
    const BreakageRow row = row_of(broken);
    box::break_records(fresh, {broken.record}, row.breakage);
    steps.push_back({"spbox", "break", broken.record.name, row.option});
  }
  return steps;
}

// When programs ran last is no part of what a command finds.
bool are_same(const box::Contents &one, const box::Contents &other) {
  const auto hardware = [](box::Contents contents) {
    std::erase_if(contents.hardware, [](const auto &entry) { return box::is_last_run(entry.first); });
    return contents.hardware;
  };
  return one.records == other.records && hardware(one) == hardware(other);
}

void append(std::vector<Words> &steps, const std::vector<Words> &more) {
  steps.insert(steps.end(), more.begin(), more.end());
}

}  // namespace

// The box itself is not asked: a command in it may have left anything in its files.
Beginning beginning_of(const box::Contents &contents, const std::filesystem::path &folder) {
  Beginning beginning{{{"box", std::string(box::model_name(contents.model))}}, true};
  const box::Place wanted(folder / "wanted"), fresh(folder / "fresh");
  box::create_box(wanted, contents);
  box::create_box(fresh, contents.model);
  try {
    append(beginning.steps, change_units(box::Inventory(wanted).units(), box::Inventory(fresh)));
    append(beginning.steps, bend_programs(wanted, fresh));
    append(beginning.steps, break_records(wanted, fresh));
    beginning.is_whole = are_same(contents, box::contents_of(fresh));
  } catch (const box::BoxError &) {
    beginning.is_whole = false;
  }
  if (!beginning.is_whole) beginning.steps.resize(1);
  return beginning;
}

}  // namespace recorder
