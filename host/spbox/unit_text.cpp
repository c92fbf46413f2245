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
  if (hardware.is_linked_down(unit)) add("link down");
  return text;
}

Json id_json(const box::UnitId &id) {
  return Json::List{hexadecimal(id[0]), hexadecimal(id[1])};
}

std::string unreadable(const std::string &why) {
  return "unreadable: " + why;
}

Json::Object json_of(const box::Unit &unit, const box::Hardware &hardware) {
  const box::UnitPlace &place = unit.place;
  const bool has_type = has_id(place);  // a fan has neither a type nor an id of its own
  Json::Object entry{
      {"name", place.name},
      {"type", has_type ? Json(place.type()) : Json()},
      {"unit_id", has_type ? id_json(place.id) : Json()},
      {"state", box::state_word(unit)},
      {"status", unit.unreadable.empty() ? Json(hexadecimal(unit.status)) : Json()},
      {"led", hardware.led(place.name)},
      {"maintenance", hardware.flag(place.name)},
      {"detached", hardware.detached(place.name)},
      {"fru_name", unit.fru_unreadable.empty() ? Json(unit.fru_name) : Json()},
  };
  const auto add = [&entry](const char *name, const std::string &text) {
    if (!text.empty()) entry.push_back({name, text});
  };
  add("unreadable", unit.unreadable);
  add("fru_unreadable", unit.fru_unreadable);
  add("sits_on", place.carried ? place.carrier() : "");
  add("fan_speed", hardware.fan(place.name));
  add("link", hardware.link(place.name));
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
