// Units whose state has two sources, a status word and a flag byte: what makes each of their states.
#pragma once

#include "tests/unit/dialogue/show_test.h"

namespace doubles {

inline constexpr UnitRow kFlaggedStates[] = {
    {"/all well", 0x80000000, 0x80000000, 0x00},       {"/bit 29", 0x80000000, 0x20000000, 0x00},
    {"/bit 28", 0x80000000, 0x10000000, 0x00},         {"/both bits", 0x80000000, 0x30000000, 0x00},
    {"/other bits", 0x80000000, 0xCFFFFFFF, 0x00},     {"/flag 20", 0x80000000, 0x00000000, 0x20},
    {"/flag 10", 0x80000000, 0x00000000, 0x10},        {"/both flags", 0x80000000, 0x00000000, 0x30},
    {"/other flags", 0x80000000, 0x00000000, 0xCF},    {"/28 and flag 20", 0x80000000, 0x10000000, 0x20},
    {"/29 and flag 10", 0x80000000, 0x20000000, 0x10}, {"/its own bits", 0xB0000000, 0x00000000, 0x00},
    {"/all ones", 0xFFFFFFFF, 0x80000000, 0x00},       {"/all ones, 29", 0xFFFFFFFF, 0x20000000, 0x00},
    {"/absent", 0x00000000, 0x00000000, 0x00},         {"/absent, faulted", 0x7FFFFFFF, 0xFFFFFFFF, 0x00},
    {"/absent, flags", 0x00000000, 0x80000000, 0xFF},
};

// A test of units of one kind that have flags: power supplies, fan trays.
template <class Unit>
class FlaggedUnits : public ShowTest {
 protected:
  std::vector<Unit> units(const std::vector<UnitRow> &rows) {
    std::vector<Unit> some;
    for (const auto &row : rows) {
      some.push_back(unit<Unit>(row.name, row.status, row.condition));
      some.back().flags = row.flags;
    }
    return some;
  }
  std::vector<Unit> units_of_each_state(const std::vector<const char *> &locations) {
    return units({{locations[0], 0x80000000, 0, 0},
                  {locations[1], 0x80000000, 0, 0x10},
                  {locations[2], 0x80000000, 0x20000000, 0},
                  {locations[3], 0, 0, 0}});
  }
  std::vector<Unit> units_for_every_reason() { return units({std::begin(kFlaggedStates), std::end(kFlaggedStates)}); }
};

}  // namespace doubles
