#include "host/spbox/unit_text.h"

#include "host/spbox/text.h"

namespace spbox {
namespace {

bool is_in_heading(const box::SettingValue &row) {
  return row.of.empty() && (row.setting == box::Setting::kMaintenance || row.setting == box::Setting::kFan);
}

}  // namespace

bool has_id(const box::UnitPlace &place) {
  return place.id != box::UnitId{};
}

// What the control programs have set for a unit: "maintenance, detached, link down".
std::string flag_text(const box::Hardware &hardware, const std::string &unit) {
  std::string text;
  const auto add = [&text](const char *part) { text += (text.empty() ? "" : ", ") + std::string(part); };
  if (hardware.flag(unit)) add("maintenance");
  if (hardware.detached(unit)) add("detached");
  if (hardware.link(unit) == "down") add("link down");
  return text;
}

std::string unreadable(const std::string &why) {
  return "unreadable: " + why;
}

nlohmann::json json_of(const box::Unit &unit, const box::Hardware &hardware) {
  const std::string &name = unit.place.name;
  nlohmann::json entry = {
      {"name", name},
      {"type", unit.place.type()},
      {"unit_id", {hexadecimal(unit.place.id[0]), hexadecimal(unit.place.id[1])}},
      {"state", box::state_word(unit)},
      {"status", hexadecimal(unit.status)},
      {"led", hardware.led(name)},
      {"maintenance", hardware.flag(name)},
      {"detached", hardware.detached(name)},
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
  if (const auto speed = hardware.fan(name); !speed.empty()) entry["fan_speed"] = speed;
  if (const auto link = hardware.link(name); !link.empty()) entry["link"] = link;
  return entry;
}

std::map<std::string, std::string> other_settings(const box::Hardware &hardware, const box::Inventory &inventory) {
  std::map<std::string, std::string> others;
  for (const box::SettingValue &row : hardware.settings()) {
    if (!inventory.has(row.of) && !is_in_heading(row)) others.emplace(row.key(), row.value);
  }
  return others;
}

}  // namespace spbox
