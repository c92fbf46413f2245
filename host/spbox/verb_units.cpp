#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>

#include "host/box/inventory.h"
#include "host/box/programs.h"
#include "host/spbox/text.h"
#include "host/spbox/verbs.h"
#include "include/lmainte.h"

namespace spbox {
namespace {

using nlohmann::json;

struct Options {
  std::filesystem::path box;
  std::vector<std::string> units;
  bool as_json = false;
};

struct TypeRow {
  std::int32_t type;
  const char *name;
};
constexpr TypeRow kTypes[] = {
    {LMAINTE_TYPE_OPNL, "operator panel"}, {LMAINTE_TYPE_CMU, "CPU/memory unit"},
    {LMAINTE_TYPE_CPUM, "CPU module"},     {LMAINTE_TYPE_DIMM, "memory module"},
    {LMAINTE_TYPE_BP, "backplane"},        {LMAINTE_TYPE_IOU, "I/O unit"},
    {LMAINTE_TYPE_PSU, "power supply"},    {LMAINTE_TYPE_EMGBU, "service processor unit"},
    {LMAINTE_TYPE_DDC, "DDC unit"},        {LMAINTE_TYPE_EMGBR, "service processor unit, second kind"},
    {LMAINTE_TYPE_FANTRAY, "fan tray"},
};

bool has_id(const box::UnitPlace &place) {
  return place.id != box::UnitId{};
}

std::string type_text(const box::UnitPlace &place) {
  if (!has_id(place)) return "fan";
  const std::int32_t type = place.entries.front().type;
  for (const TypeRow &row : kTypes) {
    if (row.type == type) return std::string(row.name) + " (" + std::to_string(type) + ")";
  }
  return std::to_string(type);
}

std::string maintenance(const box::Hardware &hardware) {
  return hardware.get("maintenance") == "lock" ? "locked" : "unlocked";
}

std::string flag_text(const box::Hardware &hardware, const std::string &unit) {
  return hardware.flag(unit) == "start" ? "maintenance" : "";
}

json json_of(const box::Unit &unit, const box::Hardware &hardware) {
  const std::string &name = unit.place.name;
  json entry = {
      {"name", name},
      {"type", unit.place.entries.front().type},
      {"unit_id", {hexadecimal(unit.place.id[0]), hexadecimal(unit.place.id[1])}},
      {"state", box::state_word(unit.status)},
      {"status", hexadecimal(unit.status)},
      {"led", hardware.led(name)},
      {"maintenance", hardware.flag(name) == "start"},
      {"fru_name", unit.fru_name},
  };
  if (!has_id(unit.place)) {
    entry["type"] = nullptr;  // a fan has neither a type nor an id of its own
    entry["unit_id"] = nullptr;
  }
  if (unit.place.carried) entry["sits_on"] = name.substr(0, name.find('/', 1));
  if (const auto speed = hardware.get("fan " + name)) entry["fan_speed"] = *speed;
  return entry;
}

int units(const Options &options) {
  const box::Place place(options.box);
  const box::Inventory inventory(place);
  const box::Hardware hardware(place);
  const std::vector<box::Unit> all = inventory.units();
  const std::string fans = hardware.get("fan").value_or("low");
  if (options.as_json) {
    json list = json::array();
    for (const box::Unit &unit : all) list.push_back(json_of(unit, hardware));
    const json whole = {{"model", box::model_name(inventory.model())},
                        {"maintenance_mode", maintenance(hardware)},
                        {"fan_speed", fans},
                        {"units", list}};
    std::puts(whole.dump(2).c_str());
    return 0;
  }
  std::printf("Model %s, maintenance mode %s, fans %s\n\n", std::string(box::model_name(inventory.model())).c_str(),
              maintenance(hardware).c_str(), fans.c_str());
  std::vector<std::vector<std::string>> lines{{"Unit", "State", "LED", "Flag", "FRU name"}};
  for (const box::Unit &unit : all) {
    const std::string name = unit.place.carried ? "  " + unit.place.label : unit.place.name;
    lines.push_back({name, std::string(box::state_word(unit.status)), hardware.led(unit.place.name),
                     flag_text(hardware, unit.place.name), unit.fru_name});
  }
  std::fputs(aligned(lines).c_str(), stdout);
  return 0;
}

box::Unit read_unit(const box::Inventory &inventory, const std::string &name) {
  const std::string full = inventory.resolve(name);
  std::vector<box::Unit> all = inventory.units();
  return *std::find_if(all.begin(), all.end(), [&](const box::Unit &unit) { return unit.place.name == full; });
}

void add_places(const box::UnitPlace &place, std::vector<std::vector<std::string>> &lines) {
  for (const box::UnitEntry &entry : place.entries) {
    const std::size_t at = entry.at == box::kNowhere ? entry.status_at : entry.at;
    lines.push_back({"Record", entry.record + ", database 2, from byte " + std::to_string(at)});
    if (entry.flag_at != box::kNowhere) lines.back()[1] += ", flag byte " + std::to_string(entry.flag_at);
    if (!entry.fru_record.empty()) lines.push_back({"FRU record", entry.fru_record + ", database 4"});
  }
}

int show(const Options &options) {
  const box::Place place(options.box);
  const box::Inventory inventory(place);
  const box::Hardware hardware(place);
  const box::Unit unit = read_unit(inventory, options.units.front());
  const std::string &name = unit.place.name;
  if (options.as_json) {
    std::puts(json_of(unit, hardware).dump(2).c_str());
    return 0;
  }
  std::vector<std::vector<std::string>> lines{{"Unit", name},
                                              {"Kind", type_text(unit.place)},
                                              {"State", std::string(box::state_word(unit.status))},
                                              {"Status word", hexadecimal(unit.status)}};
  if (has_id(unit.place)) {
    lines.push_back({"Unit id", hexadecimal(unit.place.id[0]) + " " + hexadecimal(unit.place.id[1])});
  }
  lines.push_back({"FRU name", unit.fru_name.empty() ? "none" : unit.fru_name});
  lines.push_back({"LED", hardware.led(name)});
  lines.push_back({"Flag", flag_text(hardware, name).empty() ? "none" : "maintenance"});
  if (const auto speed = hardware.get("fan " + name)) lines.push_back({"Fan speed", *speed});
  add_places(unit.place, lines);
  std::fputs(aligned(lines).c_str(), stdout);
  return 0;
}

struct ChangeRow {
  const char *verb;
  box::Change change;
  const char *help;
};
constexpr ChangeRow kChanges[] = {
    {"pull", box::Change::kPull, "Take units out, with what sits on them"},
    {"insert", box::Change::kInsert, "Put healthy units in, with what sits on them"},
    {"fault", box::Change::kFault, "Let units be faulted"},
    {"degrade", box::Change::kDegrade, "Let units be degraded"},
    {"repair", box::Change::kRepair, "Make faulted or degraded units normal"},
};

int change(const Options &options, box::Change change) {
  const box::Inventory inventory(box::Place{options.box});
  inventory.change(change, options.units);
  std::vector<std::vector<std::string>> lines;
  const std::vector<box::Unit> all = inventory.units();
  for (const std::string &name : options.units) {
    const std::string full = inventory.resolve(name);
    for (const box::Unit &unit : all) {
      if (unit.place.name == full) lines.push_back({full, std::string(box::state_word(unit.status))});
    }
  }
  std::fputs(aligned(lines).c_str(), stdout);
  return 0;
}

std::shared_ptr<Options> add_box(CLI::App *verb) {
  auto options = std::make_shared<Options>();
  verb->add_option("DIR", options->box, "Folder of the box")->required();
  return options;
}

}  // namespace

void add_units(CLI::App &app, Action &action) {
  CLI::App *verb = app.add_subcommand("units", "List the units, each with state, LED and maintenance flag");
  auto options = add_box(verb);
  verb->add_flag("--json", options->as_json, "For scripts");
  verb->footer("Examples:\n  spbox units box\n  spbox units box --json | jq '.units[] | select(.state != \"Normal\")'");
  verb->callback([options, &action] { action = [options] { return units(*options); }; });
}

void add_show(CLI::App &app, Action &action) {
  CLI::App *verb = app.add_subcommand("show", "Show one unit, and where it is written down");
  auto options = add_box(verb);
  verb->add_option("UNIT", options->units, "Its location, such as /PSU#3")->required()->expected(1);
  verb->add_flag("--json", options->as_json, "For scripts");
  verb->footer("Example:\n  spbox show box /PSU#3");
  verb->callback([options, &action] { action = [options] { return show(*options); }; });
}

void add_changes(CLI::App &app, Action &action) {
  for (const ChangeRow &row : kChanges) {
    CLI::App *verb = app.add_subcommand(row.verb, row.help);
    auto options = add_box(verb);
    verb->add_option("UNIT", options->units, "Their locations, such as /PSU#3 or /CMU#0/MEM#03A")->required();
    verb->footer(
        "Where a unit cannot be changed none is. A command that reads several databases one after the other may read "
        "in\n"
        "between.\n\n"
        "Example:\n  spbox " +
        std::string(row.verb) + " box /PSU#3 /FAN_A#0");
    verb->callback([options, &row, &action] { action = [options, &row] { return change(*options, row.change); }; });
  }
}

}  // namespace spbox
