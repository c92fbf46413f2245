#include "host/box/unit_records.h"

#include <algorithm>

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
};

constexpr FruLayout board_fru(std::string_view record, std::uint32_t first = 0) {
  return {record, 8192, 6187, 6188, first};
}
constexpr FruLayout kCmuFru = board_fru("fru_cmu_info_%02d");
constexpr FruLayout kCpuFru = board_fru("fru_cpu_info_%02d");
constexpr FruLayout kIouQbFru = board_fru("fru_iou_qb_info_%02d");
constexpr FruLayout kIouQeFru = board_fru("fru_iou_qe_info_%02d");
constexpr FruLayout kEmgbuFru = board_fru("fru_emgbu_info_%02d");
constexpr FruLayout kEmgbrFru = board_fru("fru_emgbu_info_%02d", 2);
constexpr FruLayout kBpFru = board_fru("fru_bpa_info");
constexpr FruLayout kDimmFru{"fru_dimm_info_%03d", 256, kNowhere, 95};
constexpr FruLayout kPsuQbFru{"fru_psu_qb_info_%02d", 320, 79, 80};
constexpr FruLayout kPsuQeFru{"fru_psu_qe_info_%02d", 320, 79, 80};
constexpr FruLayout kFanFru{"fru_fan_qe_info_%02d", 256, 43, 44};
constexpr FruLayout kDdcFru{"fru_ddca_info_%02d", 320, 64, 65};
constexpr FruLayout kNoFru{};

// Where a kind's entries lie in its records.
struct Shape {
  std::int32_t type;
  std::string_view record;
  std::size_t size, first_at, stride;
  std::uint32_t entries;
  std::size_t words, flag_at;
};
constexpr Shape kOpnl{LMAINTE_TYPE_OPNL, "current_panel_info", 64, 0, 0, 1, 3, kNowhere};
constexpr Shape kCmu{LMAINTE_TYPE_CMU, "current_cmu_info_%02d", 1760, 0, 0, 1, 12, kNowhere};
constexpr Shape kCpum{LMAINTE_TYPE_CPUM, "current_cpu_module_info_%02d", 2976, 0, 744, 4, 186, kNowhere};
constexpr Shape kDimm{LMAINTE_TYPE_DIMM, "current_dimm_info_%02d", 1792, 0, 56, 32, 14, kNowhere};
constexpr Shape kIou{LMAINTE_TYPE_IOU, "current_iou_info_%02d", 2016, 0, 0, 1, 3, kNowhere};
// A slot has its number and its power in the words behind the status. The record has room for eight slots.
constexpr Shape kPci{LMAINTE_TYPE_PCI, "current_iou_info_%02d", 2016, 56, 40, 8, 6, kNowhere};
constexpr Shape kEmgbu{LMAINTE_TYPE_EMGBU, "current_mgb_info", 160, 0, 80, 2, 20, kNowhere};
constexpr Shape kEmgbr{LMAINTE_TYPE_EMGBR, "current_mgbr_info", 48, 0, 24, 2, 6, kNowhere};
constexpr Shape kPsu{LMAINTE_TYPE_PSU, "current_psu_info", 3360, 0, 56, 60, 3, 20};
constexpr Shape kFan{LMAINTE_TYPE_FANTRAY, "current_fantray_info", 6912, 0, 216, 32, 3, 20};
constexpr Shape kBp{LMAINTE_TYPE_BP, "current_bp32_info", 1008, 0, 0, 1, 3, kNowhere};
constexpr Shape kDdc{LMAINTE_TYPE_DDC, "current_bp32_info", 1008, 456, 40, 2, 10, kNowhere};

constexpr Kind kind(std::string_view pattern, unsigned models, const Shape &shape, const FruLayout &fru,
                    std::uint32_t first = 0) {
  return {pattern,      models,        shape.type, shape.record, shape.size,    shape.first_at,
          shape.stride, shape.entries, first,      shape.words,  shape.flag_at, fru};
}

// The boards of the entry and mid-range models stand in the records of board 0; qb2's one board fills two of them. What
// the entry model has on its board and no unit of its own (I/O, service processor) is written down with the board.
constexpr Kind kKinds[] = {
    kind("/CMU#", kQe, kCmu, kCmuFru),
    kind("/MBU_A", kQa | kQb1, kCmu, kCmuFru),
    kind("/MBU_B", kQb2, kCmu, kCmuFru),
    kind("/MBU_B", kQb2, kCmu, kCmuFru, 1),
    kind("/CMU#/CPUM#", kQe, kCpum, kCpuFru),
    kind("/MBU_A/CPUM#", kQb1, kCpum, kCpuFru),
    kind("/MBU_B/CPUM#", kQb2, kCpum, kCpuFru),
    kind("/CMU#/MEM#", kQe, kDimm, kDimmFru),
    kind("/MBU_A/MEM#", kQa, kDimm, kDimmFru),
    kind("/MBU_A/MEMB#/MEM#", kQb1, kDimm, kDimmFru),
    kind("/MBU_B/MEMB#/MEM#", kQb2, kDimm, kDimmFru),
    kind("/IOU#", kQe, kIou, kIouQeFru),
    kind("/IOU#", kQb, kIou, kIouQbFru),
    kind("/MBU_A", kQa, kIou, kIouQbFru),
    kind("/IOU#/PCI#", kQb | kQe, kPci, kNoFru),
    kind("/MBU_A/PCI#", kQa, kPci, kNoFru),
    kind("/EMGBU_B#", kQe, kEmgbu, kEmgbuFru),
    kind("/EMGBU", kQb, kEmgbu, kEmgbuFru),
    kind("/MBU_A", kQa, kEmgbu, kEmgbuFru),
    kind("/EMGBU_C#", kQe3, kEmgbr, kEmgbrFru),
    kind("/PSU#", kQb, kPsu, kPsuQbFru),
    kind("/PSU#", kQa | kQe, kPsu, kPsuQeFru),
    kind("/FAN_A#", kQa | kQb, kFan, kNoFru),
    kind("/FAN_B#", kQb1, kFan, kNoFru),
    kind("/FAN_A#", kQe, kFan, kFanFru),
    kind("/FAN_B#", kQe1, kFan, kFanFru),
    kind("/BP_A#", kQe1, kBp, kBpFru),
    kind("/DDC_A#", kQe1, kDdc, kDdcFru),
    kind("/OPNL", kQa | kQb, kOpnl, kNoFru),
    kind("/OPNL#", kQe, kOpnl, kNoFru),
};

}  // namespace

std::span<const Kind> kinds() {
  return kKinds;
}

std::string numbered(std::string_view pattern, std::uint32_t number) {
  const std::size_t at = pattern.find('%');
  if (at == std::string_view::npos) return std::string(pattern);
  std::string digits = std::to_string(number);
  const auto width = static_cast<std::size_t>(pattern[at + 2] - '0');
  if (digits.size() < width) digits.insert(0, width - digits.size(), '0');
  return std::string(pattern.substr(0, at)) + digits + std::string(pattern.substr(at + 4));
}

bool stands_for(std::string_view pattern, std::string_view name) {
  const std::size_t at = pattern.find('%');
  if (at == std::string_view::npos) return pattern == name;
  if (!name.starts_with(pattern.substr(0, at)) || name.size() == at) return false;
  return std::all_of(name.begin() + static_cast<std::ptrdiff_t>(at), name.end(),
                     [](char character) { return character >= '0' && character <= '9'; });
}

}  // namespace box
