#include "host/box/inventory_kinds.h"

#include <algorithm>
#include <optional>

#include "include/lmainte.h"

namespace box {
namespace {

enum : unsigned {  // sets of models, a bit per model code
  kQb1 = 1u << LMAINTE_MODEL_QB1,
  kQb2 = 1u << LMAINTE_MODEL_QB2,
  kQe1 = 1u << LMAINTE_MODEL_QE1,
  kQe3 = 1u << LMAINTE_MODEL_QE3,
  kQa = 1u << LMAINTE_MODEL_QA,
  kQb = kQb1 | kQb2,
  kQe = kQe1 | 1u << LMAINTE_MODEL_QE2 | kQe3,
  kAll = kQa | kQb | kQe
};

constexpr FruLayout board_fru(std::string_view record, std::uint32_t first = 0) {
  return {record, 8192, 6187, 6188, first, false};
}
constexpr FruLayout kDimmFru{"fru_dimm_info_%03d", 256, kNowhere, 95, 0, false};
constexpr FruLayout kPsuQbFru{"fru_psu_qb_info_%02d", 320, 79, 80, 0, true};
constexpr FruLayout kPsuQeFru{"fru_psu_qe_info_%02d", 320, 79, 80, 0, true};
constexpr FruLayout kFanFru{"fru_fan_qe_info_%02d", 256, 43, 44, 0, true};
constexpr FruLayout kDdcFru{"fru_ddca_info_%02d", 320, 64, 65, 0, false};
constexpr FruLayout kNoFru{};

const lmainte_unit_code *location_table(std::uint32_t model) {
  constexpr std::array<const lmainte_unit_code *, 7> kTables{
      nullptr,
      convert_unit_code_qb1,
      convert_unit_code_qb2,
      convert_unit_code_qe1,
      convert_unit_code_qe2,
      convert_unit_code_qe3,
      convert_unit_code_qa,
  };
  return model < kTables.size() ? kTables[model] : nullptr;
}

struct Kind {
  std::string_view pattern;
  unsigned models;
  std::int32_t type;
  std::string_view record;
  std::size_t size;
  std::size_t first_at, stride;  // of the entries in a record
  std::uint32_t entries;         // in one record
  std::uint32_t first;           // place of the kind's first unit among all entries of all its records
  std::size_t flag_at;           // from the entry's beginning
  FruLayout fru;
};

// The boards of the entry and mid-range models stand in the records of board 0; qb2's one board fills two of them. What
// the entry model has on its board and no unit of its own (I/O, service processor) is written down with the board.
constexpr Kind kKinds[] = {
    {"/CMU#", kQe, 16, "current_cmu_info_%02d", 1760, 0, 0, 1, 0, kNowhere, board_fru("fru_cmu_info_%02d")},
    {"/MBU_A", kQa | kQb1, 16, "current_cmu_info_%02d", 1760, 0, 0, 1, 0, kNowhere, board_fru("fru_cmu_info_%02d")},
    {"/MBU_B", kQb2, 16, "current_cmu_info_%02d", 1760, 0, 0, 1, 0, kNowhere, board_fru("fru_cmu_info_%02d")},
    {"/MBU_B", kQb2, 16, "current_cmu_info_%02d", 1760, 0, 0, 1, 1, kNowhere, board_fru("fru_cmu_info_%02d")},
    {"/CMU#/CPUM#", kQe, 32, "current_cpu_module_info_%02d", 2976, 0, 744, 4, 0, kNowhere,
     board_fru("fru_cpu_info_%02d")},
    {"/MBU_A/CPUM#", kQb1, 32, "current_cpu_module_info_%02d", 2976, 0, 744, 4, 0, kNowhere,
     board_fru("fru_cpu_info_%02d")},
    {"/MBU_B/CPUM#", kQb2, 32, "current_cpu_module_info_%02d", 2976, 0, 744, 4, 0, kNowhere,
     board_fru("fru_cpu_info_%02d")},
    {"/CMU#/MEM#", kQe, 40, "current_dimm_info_%02d", 1792, 0, 56, 32, 0, kNowhere, kDimmFru},
    {"/MBU_A/MEM#", kQa, 40, "current_dimm_info_%02d", 1792, 0, 56, 32, 0, kNowhere, kDimmFru},
    {"/MBU_A/MEMB#/MEM#", kQb1, 40, "current_dimm_info_%02d", 1792, 0, 56, 32, 0, kNowhere, kDimmFru},
    {"/MBU_B/MEMB#/MEM#", kQb2, 40, "current_dimm_info_%02d", 1792, 0, 56, 32, 0, kNowhere, kDimmFru},
    {"/IOU#", kQe, 80, "current_iou_info_%02d", 2016, 0, 0, 1, 0, kNowhere, board_fru("fru_iou_qe_info_%02d")},
    {"/IOU#", kQb, 80, "current_iou_info_%02d", 2016, 0, 0, 1, 0, kNowhere, board_fru("fru_iou_qb_info_%02d")},
    {"/MBU_A", kQa, 80, "current_iou_info_%02d", 2016, 0, 0, 1, 0, kNowhere, board_fru("fru_iou_qb_info_%02d")},
    {"/EMGBU_B#", kQe, 128, "current_mgb_info", 160, 0, 80, 2, 0, kNowhere, board_fru("fru_emgbu_info_%02d")},
    {"/EMGBU", kQb, 128, "current_mgb_info", 160, 0, 80, 2, 0, kNowhere, board_fru("fru_emgbu_info_%02d")},
    {"/MBU_A", kQa, 128, "current_mgb_info", 160, 0, 80, 2, 0, kNowhere, board_fru("fru_emgbu_info_%02d")},
    {"/EMGBU_C#", kQe3, 130, "current_mgbr_info", 48, 0, 24, 2, 0, kNowhere, board_fru("fru_emgbu_info_%02d", 2)},
    {"/PSU#", kQb, 161, "current_psu_info", 3360, 0, 56, 60, 0, 20, kPsuQbFru},
    {"/PSU#", kQa | kQe, 161, "current_psu_info", 3360, 0, 56, 60, 0, 20, kPsuQeFru},
    {"/FAN_A#", kQa | kQb, 180, "current_fantray_info", 6912, 0, 216, 32, 0, 20, kNoFru},
    {"/FAN_B#", kQb1, 180, "current_fantray_info", 6912, 0, 216, 32, 0, 20, kNoFru},
    {"/FAN_A#", kQe, 180, "current_fantray_info", 6912, 0, 216, 32, 0, 20, kFanFru},
    {"/FAN_B#", kQe1, 180, "current_fantray_info", 6912, 0, 216, 32, 0, 20, kFanFru},
    {"/BP_A#", kQe1, 51, "current_bp32_info", 1008, 0, 0, 1, 0, kNowhere, board_fru("fru_bpa_info")},
    {"/DDC_A#", kQe1, 212, "current_bp32_info", 1008, 456, 40, 2, 0, kNowhere, kDdcFru},
    {"/OPNL", kQa | kQb, 2, "current_panel_info", 64, 0, 0, 1, 0, kNowhere, kNoFru},
    {"/OPNL#", kQe, 2, "current_panel_info", 64, 0, 0, 1, 0, kNowhere, kNoFru},
};

// A fan's entry in the entry of its tray: a status word and, twelve bytes on, a flag byte.
constexpr std::size_t kFansAt = 32, kFanStride = 56, kFanFlagAt = 12;

// Fans of each tray, by ranges of trays.
struct TrayFans {
  std::uint32_t model, first_tray, fans;
};
constexpr TrayFans kTrayFans[] = {
    {LMAINTE_MODEL_QA, 0, 1},  {LMAINTE_MODEL_QB1, 0, 1}, {LMAINTE_MODEL_QB2, 0, 1}, {LMAINTE_MODEL_QE1, 0, 2},
    {LMAINTE_MODEL_QE1, 2, 3}, {LMAINTE_MODEL_QE1, 6, 2}, {LMAINTE_MODEL_QE2, 0, 3}, {LMAINTE_MODEL_QE3, 0, 3},
};

std::uint32_t fans_of(std::uint32_t model, std::uint32_t tray) {
  std::uint32_t fans = 0;
  for (const TrayFans &row : kTrayFans) {
    if (row.model == model && row.first_tray <= tray) fans = row.fans;
  }
  return fans;
}

// A unit's place among the units of its kind. Memory modules count through the boards of their records, four memory
// boards to a record.
std::uint32_t ordinal(const Kind &kind, const lmainte_unit_code &row, std::string_view last, const UnitId &id) {
  const auto byte = [&](unsigned n) { return id[n / 4 ? 1 : 0] >> (24 - 8 * (n % 4)) & 0xFFu; };
  const std::uint32_t count = byte(1);
  if (count == 2) return byte(2) * kind.entries + byte(3);
  if (count == 3) return byte(3) / 4 * kind.entries + byte(4);
  for (const lmainte_unit_name *name = row.names; name && name->name[0]; ++name) {
    if (last == name->name) return name->id_fru;
  }
  return byte(2);
}

UnitEntry entry_of(const Kind &kind, std::uint32_t place) {
  const std::size_t at = kind.first_at + kind.stride * (place % kind.entries);
  return {.type = kind.type,
          .record = numbered(kind.record, place / kind.entries),
          .size = kind.size,
          .at = at,
          .status_at = at + 8,
          .flag_at = kind.flag_at == kNowhere ? kNowhere : at + kind.flag_at,
          .fru_record = kind.fru.record.empty() ? "" : numbered(kind.fru.record, kind.fru.first + place),
          .fru = kind.fru};
}

bool kind_is(const Kind &kind, std::uint32_t model, std::string_view pattern) {
  return (kind.models >> model & 1u) && kind.pattern == pattern;
}

class Walk {
 public:
  explicit Walk(std::uint32_t model) : model_(model) {}

  std::vector<UnitPlace> units() {
    for (const lmainte_unit_code *row = location_table(model_); row && row->pattern[0]; ++row) {
      const std::string_view pattern = row->pattern;
      if (pattern.find('/', 1) != std::string_view::npos) continue;
      for (const std::string &last : last_components(*row, pattern.substr(1))) add("", *row, last);
    }
    return std::move(units_);
  }

 private:
  // The last components that units of this row can have: by the row's own name table, or counted.
  static std::vector<std::string> last_components(const lmainte_unit_code &row, std::string_view last) {
    if (row.names) return named(row.names, last);
    if (!last.ends_with('#')) return {std::string(last)};
    const auto slashes = std::count(row.pattern, row.pattern + std::string_view(row.pattern).size(), '/');
    std::vector<std::string> result;
    for (unsigned n = 0; n < row.max[slashes - 1]; ++n) result.push_back(std::string(last) + std::to_string(n));
    return result;
  }

  static std::vector<std::string> named(const lmainte_unit_name *names, std::string_view last) {
    // A memory board's number is part of its modules' names.
    const std::string_view first =
        last.substr(0, last.find('#') == std::string_view::npos ? last.size() : last.find('#') + 1);
    std::vector<std::string> result;
    for (; names->name[0]; ++names) {
      if (std::string_view(names->name).starts_with(first)) result.emplace_back(names->name);
    }
    return result;
  }

  void add(const std::string &carrier, const lmainte_unit_code &row, const std::string &last) {
    UnitPlace unit{carrier + "/" + last, last, {}, !carrier.empty(), {}};
    const std::optional<UnitId> id = unit_id(model_, unit.name);
    if (!id) return;
    unit.id = *id;
    std::uint32_t place = 0;
    for (const Kind &kind : kKinds) {
      if (!kind_is(kind, model_, row.pattern)) continue;
      place = kind.first + ordinal(kind, row, last, *id);
      unit.entries.push_back(entry_of(kind, place));
    }
    if (unit.entries.empty()) return;
    units_.push_back(unit);
    if (unit.entries[0].type == LMAINTE_TYPE_FANTRAY) add_fans(unit, place);
    if (carrier.empty()) add_carried(unit.name, row.pattern);
  }

  void add_carried(const std::string &carrier, std::string_view pattern) {
    for (const lmainte_unit_code *row = location_table(model_); row && row->pattern[0]; ++row) {
      const std::string_view below = row->pattern;
      if (!below.starts_with(pattern) || below.size() <= pattern.size() || below[pattern.size()] != '/') continue;
      for (const std::string &last : last_components(*row, below.substr(pattern.size() + 1))) add(carrier, *row, last);
    }
  }

  void add_fans(const UnitPlace &tray, std::uint32_t place) {
    for (std::uint32_t fan = 0; fan < fans_of(model_, place); ++fan) {
      UnitEntry entry = tray.entries[0];
      entry.status_at = entry.at + kFansAt + kFanStride * fan;
      entry.flag_at = entry.status_at + kFanFlagAt;
      entry.at = kNowhere;
      entry.fru_record.clear();
      const std::string label = "FAN#" + std::to_string(fan);
      units_.push_back({tray.name + "/" + label, label, {}, true, {entry}});
    }
  }

  std::uint32_t model_;
  std::vector<UnitPlace> units_;
};

}  // namespace

std::vector<UnitPlace> places_of(std::uint32_t model) {
  return Walk(model).units();
}

std::uint32_t boards_of(std::uint32_t model) {
  constexpr std::array<std::uint32_t, 7> kBoards{0, 1, 2, 4, 8, 16, 1};
  return model < kBoards.size() ? kBoards[model] : 0;
}

std::string_view model_name(std::uint32_t model) {
  constexpr std::array<std::string_view, 7> kNames{"", "qb1", "qb2", "qe1", "qe2", "qe3", "qa"};
  return model < kNames.size() ? kNames[model] : "";
}

std::uint32_t model_code(std::string_view name) {
  for (std::uint32_t code = LMAINTE_MODEL_QB1; code <= LMAINTE_MODEL_QA; ++code) {
    if (model_name(code) == name) return code;
  }
  return LMAINTE_MODEL_NONE;
}

std::string numbered(std::string_view pattern, std::uint32_t number) {
  const std::size_t at = pattern.find('%');
  if (at == std::string_view::npos) return std::string(pattern);
  std::string digits = std::to_string(number);
  const auto width = static_cast<std::size_t>(pattern[at + 2] - '0');
  if (digits.size() < width) digits.insert(0, width - digits.size(), '0');
  return std::string(pattern.substr(0, at)) + digits + std::string(pattern.substr(at + 4));
}

}  // namespace box
