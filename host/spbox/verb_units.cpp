#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>

#include "host/box/inventory.h"
#include "host/box/partitions.h"
#include "host/box/programs.h"
#include "host/spbox/text.h"
#include "host/spbox/verbs.h"

namespace spbox {
namespace {

using nlohmann::json;
using Lines = std::vector<std::vector<std::string>>;

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
    {LMAINTE_TYPE_PCI, "PCI slot"},        {LMAINTE_TYPE_EMGBU, "service processor unit"},
    {LMAINTE_TYPE_PSU, "power supply"},    {LMAINTE_TYPE_EMGBR, "service processor unit, second kind"},
    {LMAINTE_TYPE_DDC, "DDC unit"},        {LMAINTE_TYPE_FANTRAY, "fan tray"},
};

constexpr std::uint32_t kLastDomain = 23;

// What spbox knows of a box, read once.
struct View {
  explicit View(const box::Place &place)
      : inventory(place),
        hardware(place),
        server(box::server_of(place)),
        xsbs(box::xsbs_of(place, inventory.model())),
        domains(box::domains_of(place, inventory.model())) {}

  box::Inventory inventory;
  box::Hardware hardware;
  box::Server server;
  std::vector<box::Xsb> xsbs;
  std::vector<box::Domain> domains;
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

std::string fan_speed(const box::Hardware &hardware) {
  return hardware.get("fan").value_or("low");
}

// What the control programs have set for a unit: "maintenance, detached, link down".
std::string flag_text(const box::Hardware &hardware, const std::string &unit) {
  std::string text;
  const auto add = [&text](const char *part) { text += (text.empty() ? "" : ", ") + std::string(part); };
  if (hardware.flag(unit) == "start") add("maintenance");
  if (hardware.get("detached " + unit)) add("detached");
  if (hardware.get("link " + unit) == "down") add("link down");
  return text;
}

std::string unreadable(const std::string &why) {
  return "unreadable: " + why;
}

std::string domain_text(std::uint32_t domain) {
  return domain <= kLastDomain ? std::to_string(domain) : "SP";
}

json json_of(const box::Unit &unit, const box::Hardware &hardware) {
  const std::string &name = unit.place.name;
  json entry = {
      {"name", name},
      {"type", unit.place.entries.front().type},
      {"unit_id", {hexadecimal(unit.place.id[0]), hexadecimal(unit.place.id[1])}},
      {"state", box::state_word(unit)},
      {"status", hexadecimal(unit.status)},
      {"led", hardware.led(name)},
      {"maintenance", hardware.flag(name) == "start"},
      {"detached", hardware.get("detached " + name).has_value()},
      {"fru_name", unit.fru_name},
  };
  if (!has_id(unit.place)) {
    entry["type"] = nullptr;  // a fan has neither a type nor an id of its own
    entry["unit_id"] = nullptr;
  }
  if (!unit.unreadable.empty()) {
    entry["status"] = nullptr;
    entry["unreadable"] = unit.unreadable;
  }
  if (!unit.fru_unreadable.empty()) {
    entry["fru_name"] = nullptr;
    entry["fru_unreadable"] = unit.fru_unreadable;
  }
  if (unit.place.carried) entry["sits_on"] = unit.place.carrier();
  if (const auto speed = hardware.get("fan " + name)) entry["fan_speed"] = *speed;
  if (const auto link = hardware.get("link " + name)) entry["link"] = *link;
  return entry;
}

json json_of(const View &view, const std::vector<box::Unit> &units) {
  json list = json::array(), xsbs = json::array(), domains = json::array();
  for (const box::Unit &unit : units) list.push_back(json_of(unit, view.hardware));
  for (const box::Xsb &xsb : view.xsbs) {
    json entry = {{"name", xsb.name}, {"unreadable", xsb.unreadable}};
    if (xsb.unreadable.empty()) {
      entry = {{"name", xsb.name}, {"active", xsb.active}, {"domain", xsb.domain}, {"setup_domain", xsb.setup_domain}};
    }
    xsbs.push_back(entry);
  }
  for (const box::Domain &domain : view.domains) {
    json entry = {{"number", domain.number}, {"unreadable", domain.unreadable}};
    if (domain.unreadable.empty()) {
      entry = {{"number", domain.number}, {"word_0", hexadecimal(domain.word_0)}, {"byte_44", domain.byte_44}};
    }
    domains.push_back(entry);
  }
  json whole = {{"model", box::model_name(view.inventory.model())},
                {"maintenance_mode", maintenance(view.hardware)},
                {"fan_speed", fan_speed(view.hardware)},
                {"units", list},
                {"xsbs", xsbs},
                {"domains", domains}};
  if (view.server.unreadable.empty()) {
    whole["system_status"] = hexadecimal(view.server.status);
    whole["service_processor"] = view.server.service_processor;
  } else {
    whole["unreadable"] = view.server.unreadable;
  }
  return whole;
}

std::string heading(const View &view) {
  std::string text = "Model " + std::string(box::model_name(view.inventory.model())) + ", maintenance mode " +
                     maintenance(view.hardware) + ", fans " + fan_speed(view.hardware) + "\n";
  if (!view.server.unreadable.empty()) return text + "Server " + unreadable(view.server.unreadable) + "\n";
  return text + "System status " + hexadecimal(view.server.status) + ", on service processor unit " +
         std::to_string(view.server.service_processor) + "\n";
}

std::string unit_table(const std::vector<box::Unit> &units, const box::Hardware &hardware) {
  Lines lines{{"Unit", "State", "LED", "Flag", "FRU name"}};
  std::string carrier;  // the last one listed
  for (const box::Unit &unit : units) {
    if (!unit.place.carried) carrier = unit.place.name;
    const std::string name =
        unit.place.carrier() == carrier && unit.place.carried ? "  " + unit.place.label : unit.place.name;
    if (!unit.unreadable.empty()) {
      lines.push_back({name, unreadable(unit.unreadable)});
      continue;
    }
    lines.push_back({name, std::string(box::state_word(unit)), hardware.led(unit.place.name),
                     flag_text(hardware, unit.place.name),
                     unit.fru_unreadable.empty() ? unit.fru_name : unreadable(unit.fru_unreadable)});
  }
  return aligned(lines);
}

std::string partition_tables(const View &view) {
  Lines xsbs{{"XSB", "Active", "Domain", "Set up for"}};
  for (const box::Xsb &xsb : view.xsbs) {
    if (!xsb.unreadable.empty()) {
      xsbs.push_back({xsb.name, unreadable(xsb.unreadable)});
    } else {
      xsbs.push_back({xsb.name, xsb.active ? "yes" : "no", domain_text(xsb.domain), domain_text(xsb.setup_domain)});
    }
  }
  Lines domains{{"Domain", "Word 0", "Byte 44"}};
  for (const box::Domain &domain : view.domains) {
    const std::string number = std::to_string(domain.number);
    if (!domain.unreadable.empty()) {
      domains.push_back({number, unreadable(domain.unreadable)});
    } else {
      domains.push_back({number, hexadecimal(domain.word_0), std::to_string(domain.byte_44)});
    }
  }
  return (view.xsbs.empty() ? "" : "\n" + aligned(xsbs)) + "\n" + aligned(domains);
}

int units(const Options &options) {
  const View view{box::Place(options.box)};
  const std::vector<box::Unit> all =
      options.units.empty() ? view.inventory.units() : view.inventory.units(view.inventory.with_carried(options.units));
  if (options.as_json) {
    std::puts(json_of(view, all).dump(2).c_str());
    return 0;
  }
  std::string text = unit_table(all, view.hardware);
  if (options.units.empty()) text = heading(view) + "\n" + text + partition_tables(view);
  std::fputs(text.c_str(), stdout);
  return 0;
}

void add_places(const box::UnitPlace &place, Lines &lines) {
  for (const box::UnitEntry &entry : place.entries) {
    const std::size_t at = entry.at == box::kNowhere ? entry.status_at : entry.at;
    lines.push_back({"Record", entry.record + ", database 2, from byte " + std::to_string(at)});
    if (entry.flag_at != box::kNowhere) lines.back()[1] += ", flag byte " + std::to_string(entry.flag_at);
    if (!entry.fru_record.empty()) lines.push_back({"FRU record", entry.fru_record + ", database 4"});
  }
}

std::string fru_text(const box::Unit &unit) {
  if (!unit.unreadable.empty()) return "unknown";
  if (!unit.fru_unreadable.empty()) return unreadable(unit.fru_unreadable);
  return unit.fru_name.empty() ? "none" : unit.fru_name;
}

int show(const Options &options) {
  const box::Place place(options.box);
  const box::Unit unit = box::Inventory(place).unit(options.units.front());
  const box::Hardware hardware(place);
  const std::string &name = unit.place.name;
  if (options.as_json) {
    std::puts(json_of(unit, hardware).dump(2).c_str());
    return 0;
  }
  Lines lines{{"Unit", name}, {"Kind", type_text(unit.place)}};
  if (unit.unreadable.empty()) {
    lines.push_back({"State", std::string(box::state_word(unit))});
    lines.push_back({"Status word", hexadecimal(unit.status)});
  } else {
    lines.push_back({"State", unreadable(unit.unreadable)});
  }
  if (has_id(unit.place)) {
    lines.push_back({"Unit id", hexadecimal(unit.place.id[0]) + " " + hexadecimal(unit.place.id[1])});
  }
  lines.push_back({"FRU name", fru_text(unit)});
  lines.push_back({"LED", hardware.led(name)});
  const std::string flags = flag_text(hardware, name);
  lines.push_back({"Flag", flags.empty() ? "none" : flags});
  if (const auto speed = hardware.get("fan " + name)) lines.push_back({"Fan speed", *speed});
  add_places(unit.place, lines);
  std::fputs(aligned(lines).c_str(), stdout);
  return 0;
}

}  // namespace

void add_units(CLI::App &app, Action &action) {
  CLI::App *verb = app.add_subcommand("units", "List the units, each with state, LED and maintenance flag");
  auto options = std::make_shared<Options>();
  add_box(verb, options->box);
  verb->add_option("UNIT", options->units, "Only these, with what sits on them");
  verb->add_flag("--json", options->as_json, "For scripts");
  verb->footer(
      "Examples:\n"
      "  spbox units box\n"
      "  spbox units box /CMU#0\n"
      "  spbox units box --json | jq '.units[] | select(.state != \"Normal\")'");
  verb->callback([options, &action] { action = [options] { return units(*options); }; });
}

void add_show(CLI::App &app, Action &action) {
  CLI::App *verb = app.add_subcommand("show", "Show one unit, and where it is written down");
  auto options = std::make_shared<Options>();
  add_box(verb, options->box);
  verb->add_option("UNIT", options->units, "Its location, such as /PSU#3")->required()->expected(1);
  verb->add_flag("--json", options->as_json, "For scripts");
  verb->footer("Example:\n  spbox show box /PSU#3");
  verb->callback([options, &action] { action = [options] { return show(*options); }; });
}

}  // namespace spbox
