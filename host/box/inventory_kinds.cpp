#include "host/box/inventory_kinds.h"

#include <optional>

#include "host/box/records.h"

namespace box {
namespace {

// A unit's number among the units of its kind. Memory modules count through the boards of their records, four memory
// boards to a record.
std::uint32_t number_of(const Kind &kind, const Location &location) {
  const std::vector<std::uint8_t> &path = location.path;
  if (path.size() == 2) return path[0] * kind.entries + path[1];
  if (path.size() == 3) return path[1] / 4u * kind.entries + path[2];
  return location.number;
}

UnitEntry entry_of(const Kind &kind, std::uint32_t number) {
  const std::size_t at = kind.first_at + kind.stride * (number % kind.entries);
  return {.type = kind.type,
          .number = number,
          .record = numbered(kind.record, number / kind.entries),
          .size = kind.size,
          .at = at,
          .status_at = at + 8,
          .flag_at = kind.flag_at == kNowhere ? kNowhere : at + kind.flag_at,
          .fru_record = kind.fru.record.empty() ? "" : numbered(kind.fru.record, kind.fru.first + number),
          .fru = kind.fru};
}

// The unit at a location; none where nothing is written down about it.
std::optional<UnitPlace> unit_at(std::uint32_t model, const Location &location) {
  const std::size_t below = location.name.find('/', 1);
  const bool carried = below != std::string::npos;
  UnitPlace unit{location.name, location.name.substr(carried ? below + 1 : 0), location.id, carried, {}};
  for (const Kind &kind : kinds()) {
    if (!(kind.models >> model & 1u) || kind.pattern != location.row->pattern) continue;
    unit.entries.push_back(entry_of(kind, kind.first + number_of(kind, location)));
  }
  if (unit.entries.empty()) return std::nullopt;
  return unit;
}

std::uint32_t fans_of(const Model &model, std::uint32_t tray) {
  for (const lmainte_fan_count *row = model.fans; row->tray != 255; ++row) {
    if (row->tray == tray) return row->fans;
  }
  return 0;
}

void add_fans(const Model &model, const UnitPlace &tray, std::vector<UnitPlace> &units) {
  const UnitEntry &entry = tray.entries.front();
  for (std::uint32_t fan = 0; fan < fans_of(model, entry.number); ++fan) {
    UnitEntry own = entry;
    own.number = entry.number * std::uint32_t{kMostFans} + fan;
    own.status_at = entry.at + kFansAt + kFanStride * fan;
    own.flag_at = own.status_at + kFanFlagAt;
    own.at = kNowhere;
    own.fru_record.clear();
    const std::string label = "FAN#" + std::to_string(fan);
    units.push_back({tray.name + "/" + label, label, {}, true, {own}});
  }
}

}  // namespace

std::vector<UnitPlace> places_of(std::uint32_t model) {
  const Model *row = find_model(model);
  if (row == nullptr) return {};
  std::vector<UnitPlace> carriers, carried;
  for (const Location &location : locations_of(*row)) {
    std::optional<UnitPlace> unit = unit_at(model, location);
    if (unit) (unit->carried ? carried : carriers).push_back(std::move(*unit));
  }
  std::vector<UnitPlace> units;
  for (const UnitPlace &carrier : carriers) {
    units.push_back(carrier);
    if (carrier.type() == LMAINTE_TYPE_FANTRAY) add_fans(*row, carrier, units);
    for (const UnitPlace &unit : carried) {
      if (unit.carrier() == carrier.name) units.push_back(unit);
    }
  }
  return units;
}

}  // namespace box
