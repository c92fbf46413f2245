// Shows the lists of I/O expansion units: expansion FUNCTION. No database holds these units, and a box names none of them:
// units that it does name stand in for them.

#include <array>

#include "lmainte.h"
#include "tests/end_to_end/rows.h"

namespace {

using end_to_end::Row;

constexpr uint32_t kNormal = LMAINTE_STATUS_INSTALLED;
constexpr uint32_t kFaulted = LMAINTE_STATUS_INSTALLED | LMAINTE_STATUS_FAULTED;
constexpr uint32_t kDegraded = LMAINTE_STATUS_INSTALLED | LMAINTE_STATUS_DEGRADED;
constexpr uint32_t kAbsent = 0;
constexpr uint32_t kOn = 0x40000000;
constexpr uint32_t kOff = 0;

const ListLine kLines[] = {
    {LMAINTE_LINE_HEAD, "Head\n", 0, {}}, {LMAINTE_LINE_FOOT, "Foot\n", 0, {}}, {LMAINTE_LINE_END, nullptr, 0, {}}};

void identify(const char *path, uint32_t *unit_id) {
  lmainte_unit_position at{};
  if (lmainte_get_unit_position_id(LMAINTE_POSITION_UNIT, path, &at) != LMAINTE_OK) return;
  unit_id[0] = uint32_t{at.type} << 24 | uint32_t{at.count} << 16 | uint32_t{at.id[0]} << 8 | at.id[1];
  unit_id[1] = uint32_t{at.id[2]} << 24 | uint32_t{at.id[3]} << 16 | uint32_t{at.id[4]} << 8 | at.id[5];
}

void fill_unit(const char *path, uint32_t status, IouData &unit) {
  identify(path, unit.unit_id);
  unit.status = static_cast<int32_t>(status);
  unit.parts_status = static_cast<int32_t>(status);
}

void fill_boat(const char *path, uint32_t status, IoxBoatData &boat) {
  identify(path, boat.unit_id);
  boat.status = static_cast<int32_t>(status);
  boat.mainte_status = static_cast<int32_t>(status);
}

// A slot: unit id in words 2 and 3, status in 4, number in 6, power in 7.
void fill_slot(const char *path, uint32_t status, uint32_t number, uint32_t power, uint32_t *slot) {
  identify(path, slot + 2);
  slot[4] = status;
  slot[6] = number;
  slot[7] = power;
}

int32_t iounit(char ** /*words*/) {
  static std::array<SbData, 2> boards{};
  static std::array<IoxListData, 2> units{};
  fill_unit("/IOU#0", kNormal, boards[0].iou);
  fill_unit("/IOU#1", kAbsent, boards[1].iou);
  fill_boat("/IOU#2/DDC#0", kNormal, units[0].boat[0]);
  fill_boat("/IOU#2/DDC#1", kDegraded, units[0].boat[1]);
  fill_boat("/IOU#3/DDC#12", kFaulted, units[1].boat[0]);
  fill_boat("/IOU#3/DDC#13", kAbsent, units[1].boat[1]);
  return lmainte_show_iounit_list(0, 2, 2, boards.data(), units.data(), kLines);
}

int32_t ioupci(char ** /*words*/) {
  static SbData board{};
  fill_slot("/IOU#0/PCI#0", kNormal, 10, kOn, board.iou.reserved);
  fill_slot("/IOU#0/PCI#1", kAbsent, 11, kOn, board.iou.reserved + 10);
  fill_slot("/IOU#0/PCI#7", kFaulted, 17, kOff, board.iou.reserved + 70);
  return lmainte_show_ioupci_list(0, 8, &board, kLines);
}

// The slots begin at word 11 of the boat, that is word 5 of those behind its head.
int32_t ioxpci(char ** /*words*/) {
  static IoxBoatData boat{};
  fill_boat("/IOU#1/DDC#5", kNormal, boat);
  fill_slot("/IOU#1/PCI#0", kAbsent, 4, kOff, boat.word + 5);
  fill_slot("/IOU#1/PCI#1", kNormal, 5, kOn, boat.word + 5 + 10);
  fill_slot("/IOU#1/PCI#6", kNormal, 6, kOff, boat.word + 5 + 60);
  return lmainte_show_ioxpci_list(0, 7, &boat, kLines);
}

int32_t iox(char ** /*words*/) {
  return lmainte_show_iox_list(0, nullptr, kLines);
}
int32_t ioxpsu(char ** /*words*/) {
  return lmainte_show_ioxpsu_list(0, nullptr, kLines);
}
int32_t ioxpsu_status(char ** /*words*/) {
  return lmainte_show_ioxpsu_status(0, kLines);
}

constexpr std::array<Row, 6> kRows{{{"iounit", 0, iounit},
                                    {"ioupci", 0, ioupci},
                                    {"ioxpci", 0, ioxpci},
                                    {"iox", 0, iox},
                                    {"ioxpsu", 0, ioxpsu},
                                    {"ioxpsu_status", 0, ioxpsu_status}}};

}  // namespace

int main(int argc, char **argv) {
  const auto *row = end_to_end::row_of(kRows, argc, argv);
  return row == nullptr ? 1 : row->call(argv + 2);
}
