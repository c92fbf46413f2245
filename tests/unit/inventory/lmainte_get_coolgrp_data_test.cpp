#include "tests/unit/inventory/reader_test.h"

namespace {

using doubles::Lines;
using doubles::machine;

class LmainteGetCoolgrpData : public doubles::ReaderTest<CoolgrpData, 1> {
 protected:
  // The low word of the unit's mask, 0 for a unit without a group.
  uint32_t mask(int32_t type, int32_t number, int32_t model) {
    wipe();
    const int32_t result = lmainte_get_coolgrp_data(type, number, model, out_);
    if (result != 0) {
      EXPECT_EQ(result, 8);
      EXPECT_TRUE(all_untouched());
      return 0;
    }
    EXPECT_EQ(out_[0].coolgrp_mask[0], 0u);
    return out_[0].coolgrp_mask[1];
  }
};

struct GroupRow {
  int32_t model;
  int32_t type;
  uint32_t masks[6];  // of the units 0 to 5
};

TEST_F(LmainteGetCoolgrpData, EveryUnitHasItsGroup) {
  constexpr GroupRow kRows[] = {
      {6, 161, {3, 3, 0, 0, 0, 0}},   {6, 180, {3, 3, 0, 0, 0, 0}},   {1, 161, {3, 3, 0, 0, 0, 0}},
      {1, 180, {3, 3, 12, 12, 0, 0}}, {2, 161, {3, 3, 12, 12, 0, 0}}, {2, 180, {3, 3, 12, 12, 0, 0}},
  };
  for (const auto &row : kRows)
    for (int32_t number = 0; number < 6; ++number)
      EXPECT_EQ(mask(row.type, number, row.model), row.masks[number])
          << "model " << row.model << ", unit " << number << " of type " << row.type;
  EXPECT_EQ(machine().calls, Lines{});
}

TEST_F(LmainteGetCoolgrpData, OtherUnitsHaveNone) {
  for (const int32_t model : {1, 2, 6}) {
    for (const int32_t type : {0, 2, 16, 128, 162, 176, 178, 212, -1, 417}) EXPECT_EQ(mask(type, 0, model), 0u) << type;
    for (const int32_t number : {-1, 4, 255, 256, INT32_MAX, INT32_MIN})
      for (const int32_t type : {161, 180, 0}) EXPECT_EQ(mask(type, number, model), 0u) << number;
  }
}

TEST_F(LmainteGetCoolgrpData, OtherModelsHaveNone) {
  for (const int32_t model : {0, 3, 4, 5, 7, -1, 257, INT32_MIN}) {
    machine().start();
    EXPECT_EQ(mask(161, 0, model), 0u) << model;
    EXPECT_EQ(doubles::trace(), (Lines{"100 110C0560", "805 110C1562 " + std::to_string(model), "100 110C0561"}));
  }
}

TEST_F(LmainteGetCoolgrpData, RefusesNull) {
  EXPECT_EQ(lmainte_get_coolgrp_data(161, 0, 6, nullptr), 8);
  EXPECT_EQ(lmainte_get_coolgrp_data(161, 0, 3, nullptr), 8);
  EXPECT_EQ(doubles::trace(),
            (Lines{"100 110C0560", "805 110C1561", "100 110C0561", "100 110C0560", "805 110C1561", "100 110C0561"}));
}

TEST_F(LmainteGetCoolgrpData, TraceThatFailsChangesNothing) {
  machine().trace_result = -1;
  EXPECT_EQ(mask(161, 3, 2), 12u);
  EXPECT_EQ(mask(161, 4, 2), 0u);
}

TEST_F(LmainteGetCoolgrpData, RecordsItsSteps) {
  mask(161, 3, 2);
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C0560", "100 110C0561"}));
  mask(161, 4, 2);
  EXPECT_EQ(doubles::trace(),
            (Lines{"100 110C0560", "100 110C0561", "100 110C0560", "805 110C1563 4", "100 110C0561"}));
}

}  // namespace
