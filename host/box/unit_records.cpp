#include "host/box/unit_records.h"

#include "host/box/records.h"
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

// In identity records of 8192 bytes, and in small ones.
constexpr FruLayout board_fru(const RecordLayout &record, std::uint32_t first = 0) {
  return {record.name, record.size, 6187, 6188, first};
}
constexpr FruLayout small_fru(const RecordLayout &record, std::size_t length_at, std::size_t name_at) {
  return {record.name, record.size, length_at, name_at};
}
constexpr FruLayout kCmuFru = board_fru(kFruCmu);
constexpr FruLayout kCpuFru = board_fru(kFruCpum);
constexpr FruLayout kIouQbFru = board_fru(kFruIouQb);
constexpr FruLayout kIouQeFru = board_fru(kFruIouQe);
constexpr FruLayout kEmgbuFru = board_fru(kFruEmgbu);
constexpr FruLayout kEmgbrFru = board_fru(kFruEmgbu, 2);
constexpr FruLayout kBpFru = board_fru(kFruBp);
constexpr FruLayout kDimmFru = small_fru(kFruDimm, kNowhere, 95);
constexpr FruLayout kPsuQbFru = small_fru(kFruPsuQb, 79, 80);
constexpr FruLayout kPsuQeFru = small_fru(kFruPsuQe, 79, 80);
constexpr FruLayout kFanFru = small_fru(kFruFan, 43, 44);
constexpr FruLayout kDdcFru = small_fru(kFruDdc, 64, 65);
constexpr FruLayout kNoFru{};

// Where a kind's entries lie in its records.
struct Shape {
  std::int32_t type;
  RecordLayout record;
  std::size_t first_at, stride;
  std::uint32_t entries;
  std::size_t words, flag_at;
};
constexpr Shape kOpnl{LMAINTE_TYPE_OPNL, kCurrentPanel, 0, 0, 1, 3, kNowhere};
constexpr Shape kCmu{LMAINTE_TYPE_CMU, kCurrentCmu, 0, 0, 1, 12, kNowhere};
constexpr Shape kCpum{LMAINTE_TYPE_CPUM, kCurrentCpum, 0, 744, kCpumsOfBoard, 186, kNowhere};
constexpr Shape kDimm{LMAINTE_TYPE_DIMM, kCurrentDimm, 0, 56, kDimmsOfBoard, 14, kNowhere};
constexpr Shape kIou{LMAINTE_TYPE_IOU, kCurrentIou, 0, 0, 1, 3, kNowhere};
// A slot has its number and its power in the words behind the status.
constexpr Shape kPci{LMAINTE_TYPE_PCI, kCurrentIou, 56, 40, kSlotsInRecord, 6, kNowhere};
constexpr Shape kEmgbu{LMAINTE_TYPE_EMGBU, kCurrentEmgbu, 0, 80, 2, 20, kNowhere};
constexpr Shape kEmgbr{LMAINTE_TYPE_EMGBR, kCurrentEmgbr, 0, 24, 2, 6, kNowhere};
constexpr Shape kPsu{LMAINTE_TYPE_PSU, kCurrentPsu, 0, 56, 60, 3, 20};
constexpr Shape kFan{LMAINTE_TYPE_FANTRAY, kCurrentFantray, 0, 216, 32, 3, 20};
constexpr Shape kBp{LMAINTE_TYPE_BP, kCurrentBp, 0, 0, 1, 3, kNowhere};
constexpr Shape kDdc{LMAINTE_TYPE_DDC, kCurrentBp, 456, 40, 2, 10, kNowhere};

constexpr Kind kind(std::string_view pattern, unsigned models, const Shape &shape, const FruLayout &fru,
                    std::uint32_t first = 0) {
  return {pattern,      models,        shape.type, shape.record.name, shape.record.size, shape.first_at,
          shape.stride, shape.entries, first,      shape.words,       shape.flag_at,     fru};
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

}  // namespace box
