#include "host/spbox/watch_eyes.h"

#include <sys/types.h>

#include <algorithm>
#include <array>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <sstream>
#include <string_view>

#include "host/base/read_all.h"
#include "host/base/told.h"
#include "host/box/confinement.h"
#include "host/box/contents.h"
#include "host/box/hardware.h"
#include "host/box/inhabitants.h"
#include "host/box/inventory.h"
#include "host/box/partitions.h"
#include "host/spbox/bent_text.h"
#include "host/spbox/condition.h"
#include "host/spbox/log_book.h"
#include "host/spbox/machine.h"
#include "host/spbox/steady_box.h"
#include "host/spbox/text.h"
#include "host/spbox/unit_text.h"
#include "host/trace_book/following.h"
#include "host/watch/packed.h"

namespace spbox {
namespace {

using TextLines = std::vector<std::string>;

watch::State state_of(const box::Unit &unit) {
  if (!unit.unreadable.empty()) return watch::State::kUnreadable;
  if (!unit.installed()) return watch::State::kOut;
  if (unit.faulted()) return watch::State::kFaulted;
  return unit.degraded() ? watch::State::kDegraded : watch::State::kNormal;
}

std::string note_of(const box::Unit &unit) {
  if (!unit.unreadable.empty()) return unit.unreadable;
  return unit.fru_unreadable.empty() ? unit.fru_name : unit.fru_unreadable;
}

// Each carried unit follows the one that carries it.
std::vector<watch::Unit> units_of(const box::Inventory &inventory) {
  std::vector<watch::Unit> units;
  std::uint32_t carrier = watch::kNobody;
  for (const box::Unit &unit : inventory.units()) {
    if (!unit.place.carried) carrier = static_cast<std::uint32_t>(units.size());
    const bool sits = unit.place.carried && carrier != watch::kNobody && units[carrier].name == unit.place.carrier();
    watch::Unit seen;
    seen.name = unit.place.name;
    seen.carrier = sits ? carrier : watch::kNobody;
    seen.state = state_of(unit);
    seen.note = note_of(unit);
    units.push_back(std::move(seen));
  }
  return units;
}

// What control programs have set for a unit.
void set(const box::SettingValue &row, watch::Unit &unit) {
  switch (row.setting) {
    case box::Setting::kLed:
      unit.led = row.is_blinking() ? watch::Led::kBlinks : row.is_usual() ? watch::Led::kOff : watch::Led::kOn;
      break;
    case box::Setting::kFlag:
      unit.maintenance = true;
      break;
    case box::Setting::kDetached:
      unit.detached = true;
      break;
    case box::Setting::kLink:
      unit.link_down = row.value == "down";
      break;
    case box::Setting::kFan:
      unit.fan = row.value;
      break;
    case box::Setting::kMaintenance:
    case box::Setting::kReport:
    case box::Setting::kPower:
    case box::Setting::kMirror:
      break;
  }
}

// All programs with their ways.
TextLines ways_of_programs(const box::Place &place) {
  TextLines ways;
  const box::TextDatabase kept(place);
  for (const std::string &name : box::program_names()) {
    ways.push_back(std::string(name).append(": ").append(bend_text(box::bend_of(kept, name))));
  }
  return ways;
}

watch::Server server_in(const box::Place &place) {
  const box::Inventory inventory(place);
  const box::Hardware hardware(place);
  watch::Server server;
  server.model = box::model_name(inventory.model());
  server.in_maintenance_mode = hardware.maintenance_mode();
  server.fan_speed = hardware.fan_speed();
  const box::Server whole = box::server_of(place);
  server.note = whole.unreadable.empty() ? "service processor unit " + std::to_string(whole.service_processor)
                                         : unreadable(whole.unreadable);
  server.units = units_of(inventory);
  std::map<std::string_view, watch::Unit *> by_name;
  for (watch::Unit &unit : server.units) by_name.emplace(unit.name, &unit);
  for (const box::SettingValue &row : hardware.settings()) {
    if (const auto unit = by_name.find(row.of); unit != by_name.end()) set(row, *unit->second);
  }
  for (const box::Xsb &xsb : box::xsbs_of(place, inventory.model())) {
    const auto part = box::board_part_in(xsb.name);
    if (part) server.parts.push_back({part->board, part->part, xsb.domain, xsb.active, xsb.unreadable.empty()});
  }
  server.programs = ways_of_programs(place);
  server.bent = bent_lines(place);
  std::ranges::move(other_lines(inventory, hardware), std::back_inserter(server.bent));
  return server;
}

// That of the platform may be unreadable: then there is trouble, and the library's records are there.
void read_trace(const box::Place &place, std::size_t lines, watch::Scene &scene) {
  // Many moments may be one line.
  constexpr std::uint32_t kForALine = 4;
  const trace_book::Rings rings = trace_book::newest_rings_of(place, static_cast<std::uint32_t>(lines) * kForALine);
  const trace_book::History history(rings.records, rings.calls, box::model_in(place));
  std::vector<const trace_book::Moment *> moments;
  for (const trace_book::Moment &moment : history.moments()) {
    if (!moment.is_void) moments.push_back(&moment);
  }
  std::vector<trace_book::Told> newest = trace_book::told(moments, trace_book::UnitNames::kTogether);
  if (newest.size() > lines) newest.erase(newest.begin(), newest.end() - static_cast<long>(lines));
  for (const trace_book::Told &line : newest) {
    scene.trace.push_back(time_of_day(line.moment->time_ns).substr(0, 12) + (line.moment->is_error ? " ! " : " ") +
                          line.moment->function + ": " + line.text);
  }
  scene.trouble = rings.trouble;
  if (!scene.trouble.empty()) scene.trace.push_back("! " + scene.trouble);
}

TextLines log_in(const box::Place &place, std::size_t lines) {
  const std::uint32_t model = box::model_of_box(place);
  std::vector<box::LogEntry> entries = box::EventLog::read(place.events());
  if (entries.size() > lines) entries.erase(entries.begin(), entries.end() - static_cast<long>(lines));
  TextLines log;
  for (const box::LogEntry &entry : entries) {
    const LogLine line = decode(model, entry);
    log.push_back(date_and_time(entry.time_ns) + " " + line.what + (line.kind.empty() ? "" : ", " + line.kind) +
                  (line.unit.empty() ? "" : ": " + line.unit));
  }
  return log;
}

// Whatever a process of the box is called. Nothing when it has ended.
std::string command_line_of(pid_t process) {
  std::istringstream text(base::text_if_readable(("/proc/" + std::to_string(process) + "/cmdline").c_str()));
  std::vector<std::string> words;
  for (std::string word; std::getline(text, word, '\0');) words.push_back(word);
  if (words.empty()) return {};
  words = words_on_machine(std::move(words));
  words.front().erase(0, words.front().rfind('/') + 1);
  std::string line;
  for (const std::string &word : words) line += (line.empty() ? "" : " ") + word;
  return line;
}

// What `spbox run` has put around the command and beside it.
bool is_of_spbox(const std::string &command) {
  const std::string name = command.substr(0, command.find(' '));
  constexpr std::array<std::string_view, 5> kOwn{"bwrap", "spbox", "monitor_daemon", "monitor", "platform_server"};
  return name.empty() || std::ranges::find(kOwn, name) != kOwn.end();
}

std::string look_once(const box::Place &place, Parts parts, std::size_t lines, watch::Scene &scene) {
  try {
    const std::string bytes = box::in_confinement(place, [&] {
      watch::Scene seen;
      box::check_is_box(place);
      if (parts.server) seen.server = server_in(place);
      if (parts.trace) read_trace(place, lines, seen);
      if (parts.log) seen.log = log_in(place, lines);
      return watch::packed(seen);
    });
    watch::Scene seen = watch::unpacked(bytes);
    if (parts.server) scene.server = std::move(seen.server);
    if (parts.trace) scene.trace = std::move(seen.trace);
    if (parts.log) scene.log = std::move(seen.log);
    scene.trouble.clear();
    return seen.trouble;
  } catch (const std::exception &error) {
    scene.trouble = base::told(error);
    return scene.trouble;
  }
}

}  // namespace

std::string look_at(const box::Place &place, Parts parts, std::size_t lines, watch::Scene &scene) {
  return look_at_one_box(place, [&] { return look_once(place, parts, lines, scene); });
}

TextLines at_work_in(const box::Place &place) {
  std::map<pid_t, std::string> commands;
  std::map<pid_t, pid_t> parents;
  for (const pid_t process : box::inhabitants(place)) {
    const auto state = box::state_of(process);
    std::string command = command_line_of(process);
    if (!state || is_of_spbox(command)) continue;
    commands.emplace(process, std::move(command));
    parents.emplace(process, state->parent);
  }
  std::set<pid_t> with_children;
  for (const auto &[process, parent] : parents) with_children.insert(parent);
  TextLines lines;
  for (const auto &[process, command] : commands) {
    if (with_children.contains(process)) continue;
    std::string line = command;
    // A process has a parent that is older, but for numbers that came round again: so many steps at most.
    pid_t at = parents.at(process);
    for (std::size_t i = 0; i < commands.size() && commands.contains(at); ++i, at = parents.at(at)) {
      line.insert(0, " > ").insert(0, commands.at(at));
    }
    lines.push_back(line);
  }
  return lines;
}

}  // namespace spbox
