// One unit, and where it is written down.
#include <memory>
#include <optional>

#include "host/box/inventory.h"
#include "host/box/unit_name.h"
#include "host/spbox/answer.h"
#include "host/spbox/standard_output.h"
#include "host/spbox/text.h"
#include "host/spbox/unit_text.h"
#include "host/spbox/verbs.h"

namespace spbox {
namespace {

using Lines = std::vector<std::vector<std::string>>;

struct ShowOptions {
  std::filesystem::path box;
  std::string unit;
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

std::string type_text(const box::UnitPlace &place) {
  if (!has_id(place)) return "fan";
  const std::int32_t type = place.type();
  for (const TypeRow &row : kTypes) {
    if (row.type == type) return std::string(row.name) + " (" + std::to_string(type) + ")";
  }
  return std::to_string(type);
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

void add_hardware(const box::Hardware &hardware, const std::string &name, Lines &lines) {
  lines.push_back({"LED", hardware.led(name)});
  const std::string flags = flag_text(hardware, name);
  lines.push_back({"Flag", flags.empty() ? "none" : flags});
  if (const auto speed = hardware.fan(name); !speed.empty()) lines.push_back({"Fan speed", speed});
  if (const auto power = hardware.power(name); !power.empty()) lines.push_back({"Power", power});
}

// A location without a record, or an I/O expansion unit: there is what control programs have set for it.
int show_unrecorded(const box::Hardware &hardware, const std::string &name, const std::optional<box::UnitId> &id) {
  if (is_for_script()) {
    Json::Object entry{{"name", name},
                       {"unit_id", id ? id_json(*id) : Json()},
                       {"state", nullptr},
                       {"led", hardware.led(name)},
                       {"maintenance", hardware.flag(name)},
                       {"detached", hardware.detached(name)}};
    if (const auto speed = hardware.fan(name); !speed.empty()) entry.push_back({"fan_speed", speed});
    if (const auto power = hardware.power(name); !power.empty()) entry.push_back({"power", power});
    answer(std::move(entry));
    return 0;
  }
  Lines lines{{"Unit", name}, {"State", "unknown: it has no record"}};
  if (id) lines.push_back({"Unit id", hexadecimal((*id)[0]) + " " + hexadecimal((*id)[1])});
  add_hardware(hardware, name, lines);
  print(aligned(lines));
  return 0;
}

int show(const ShowOptions &options) {
  const box::Place place(options.box);
  const box::Inventory inventory(place);
  const box::Hardware hardware(place);
  const std::string whole = box::location_of(options.unit);
  const auto id = box::unit_id(inventory.model(), whole);
  if (!inventory.has(whole) && (id || hardware.has_expansion(whole))) {
    return show_unrecorded(hardware, whole, id);
  }
  const box::Unit unit = inventory.unit(options.unit);
  const std::string &name = unit.place.name;
  if (is_for_script()) {
    answer(json_of(unit, hardware));
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
  add_hardware(hardware, name, lines);
  add_places(unit.place, lines);
  print(aligned(lines));
  return 0;
}

}  // namespace

Verb show_verb() {
  auto options = std::make_shared<ShowOptions>();
  return {.name = "show",
          .line = "Show one unit, and the records that hold it",
          .works_on_box = true,
          .words =
              {box_word(options->box),
               {.name = "UNIT", .help = "Its location, such as /PSU#3", .to = &options->unit, .need = Need::kRequired}},
          .footer = "Example:\n  spbox show box /PSU#3",
          .act = [options] { return show(*options); }};
}

}  // namespace spbox
