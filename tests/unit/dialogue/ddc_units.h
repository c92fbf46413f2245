// DDC units, whose state is their status word with the bits of the maintenance status: what makes each of their states.
#pragma once

#include "tests/unit/dialogue/show_test.h"

namespace doubles {

class DdcUnits : public ShowTest {
 protected:
  std::vector<BpUnitData> units(const std::vector<UnitRow> &rows) {
    std::vector<BpUnitData> some;
    for (const auto &row : rows) some.push_back(unit<BpUnitData>(row.name, row.status, row.condition));
    return some;
  }
  std::vector<BpUnitData> units_of_each_state() {
    return units({{"/DDC_A#0", 0x80000000, 0},
                  {"/DDC_A#1", 0x80000000, 0x10000000},
                  {"/DDC_A#2", 0x80000000, 0x20000000},
                  {"/DDC_A#3", 0, 0}});
  }
  std::vector<BpUnitData> units_for_every_reason() {
    return units({
        {"/all well", 0x80000000, 0x80000000},
        {"/bit 29", 0x80000000, 0x20000000},
        {"/bit 28", 0x80000000, 0x10000000},
        {"/both bits", 0x80000000, 0x30000000},
        {"/other bits", 0x80000000, 0xCFFFFFFF},
        {"/its own bits", 0xB0000000, 0x00000000},
        {"/all ones", 0xFFFFFFFF, 0xFFFFFFFF},
        {"/made all ones", 0xCFFFFFFF, 0x30000000},
        {"/ones, well", 0xFFFFFFFF, 0x00000000},
        {"/ones, bit 29", 0xFFFFFFFF, 0x20000000},
        {"/ones, bit 28", 0xFFFFFFFF, 0x10000000},
        {"/ones but one", 0xFFFFFFFE, 0x30000000},
        {"/absent", 0x00000000, 0x00000000},
        {"/absent, faulted", 0x00000000, 0xFFFFFFFF},
        {"/absent, ones", 0x7FFFFFFF, 0x30000000},
    });
  }
};

}  // namespace doubles
