// Where a unit stands, by what was done with it.

#include "procedure/condition.h"

#include <gtest/gtest.h>

#include <vector>

#include "procedure/kinds.h"

namespace {

using lmainte::procedure::Condition;

// What may happen to a unit. D: it is taken out of operation, B: it is brought up.
enum Happening {
  kDetached,
  kDetachHung,
  kDetachRefused,
  kExchanged,
  kPassed,
  kTestFailed,
  kHalfPassed,
  kGood,
  kPutBack
};

void happen(Condition &condition, Happening what) {
  switch (what) {
    case kDetached:
      return condition.take_out_ended(LMAINTE_OK);
    case kDetachHung:
      return condition.take_out_ended(LMAINTE_FAILED);
    case kDetachRefused:
      return condition.take_out_ended(LMAINTE_DETACH_FAILED);
    case kExchanged:
      return condition.is_exchanged();
    case kPassed:
      return condition.bring_up_ended(LMAINTE_OK, true);
    case kTestFailed:
      return condition.bring_up_ended(LMAINTE_TEST_FAILED, false);
    case kHalfPassed:
      return condition.bring_up_ended(LMAINTE_FANSPEED_FAILED, true);
    case kGood:
      return condition.is_good();
    case kPutBack:
      return condition.is_put_back();
  }
}

struct Row {
  const char *says;
  std::vector<Happening> happenings;
  int32_t condition;
  bool may_run;
  int32_t reason;
};

TEST(UnitCondition, FollowsWhatIsDone) {
  const Row rows[] = {
      {"a unit that nobody touched", {}, LMAINTE_CONDITION_UNTOUCHED, true, 0},
      {"one that the server still uses", {kDetachRefused}, LMAINTE_CONDITION_UNTOUCHED, true, 0},
      {"one whose program was stopped at its limit", {kDetachHung}, LMAINTE_CONDITION_IN_DOUBT, true, 0},
      {"one that is out at the second try", {kDetachHung, kDetached}, LMAINTE_CONDITION_OUT, false, 0},
      {"one that is out", {kDetached}, LMAINTE_CONDITION_OUT, false, 0},
      {"one that is out and put back", {kDetached, kPutBack}, LMAINTE_CONDITION_UNTOUCHED, true, 0},
      {"one that is asked to leave its place", {kDetached, kExchanged}, LMAINTE_CONDITION_EXCHANGED, false, 0},
      {"a new one that passes is good only when it is said so",
       {kDetached, kExchanged, kPassed},
       LMAINTE_CONDITION_EXCHANGED,
       true,
       0},
      {"a new one that is good", {kDetached, kExchanged, kPassed, kGood}, LMAINTE_CONDITION_GOOD, true, 0},
      {"a new one that fails its test",
       {kDetached, kExchanged, kTestFailed},
       LMAINTE_CONDITION_REJECTED,
       false,
       LMAINTE_TEST_FAILED},
      {"one that is taken out again once it was good",
       {kDetached, kExchanged, kPassed, kGood, kDetached},
       LMAINTE_CONDITION_OUT,
       false,
       0},
      {"one that was good, and whose program was stopped at its limit",
       {kGood, kDetachHung},
       LMAINTE_CONDITION_IN_DOUBT,
       true,
       0},
      {"one that was good, and that the server still uses", {kGood, kDetachRefused}, LMAINTE_CONDITION_GOOD, true, 0},
      {"one that runs, but not as it should",
       {kDetached, kExchanged, kHalfPassed},
       LMAINTE_CONDITION_HALF_PASSED,
       true,
       LMAINTE_FANSPEED_FAILED},
      {"one that runs, not as it should, and is out again",
       {kDetached, kExchanged, kHalfPassed, kDetached},
       LMAINTE_CONDITION_REJECTED,
       false,
       LMAINTE_FANSPEED_FAILED},
      {"one that runs, and perhaps does not any more: it is as it was",
       {kDetached, kExchanged, kHalfPassed, kDetachHung},
       LMAINTE_CONDITION_HALF_PASSED,
       true,
       LMAINTE_FANSPEED_FAILED},
      {"a third unit, of which nothing is known yet",
       {kDetached, kExchanged, kTestFailed, kExchanged},
       LMAINTE_CONDITION_EXCHANGED,
       false,
       0},
      {"the unit that was there, brought up again and failed",
       {kDetached, kTestFailed},
       LMAINTE_CONDITION_REJECTED,
       false,
       LMAINTE_TEST_FAILED},
  };
  for (const Row &row : rows) {
    Condition condition(true);
    for (const Happening what : row.happenings) happen(condition, what);
    EXPECT_EQ(condition.value(), row.condition) << row.says;
    EXPECT_EQ(condition.may_run(), row.may_run) << row.says;
    EXPECT_EQ(condition.reason(), row.reason) << row.says;
  }
}

TEST(UnitCondition, IsInTheStatusWord) {
  const struct {
    uint32_t status;
    bool is_installed, is_faulted, is_healthy;
  } rows[] = {{0, false, false, false},         {0x80000000, true, false, true},  {0xA0000000, true, true, false},
              {0x90000000, true, false, false}, {0x20000000, false, true, false}, {0x80008000, true, false, true}};
  for (const auto &row : rows) {
    const lmainte::procedure::Unit unit{.status = row.status};
    EXPECT_EQ(unit.is_installed(), row.is_installed) << row.status;
    EXPECT_EQ(unit.is_faulted(), row.is_faulted) << row.status;
    EXPECT_EQ(unit.is_healthy(), row.is_healthy) << row.status;
  }
}

TEST(UnitCondition, OfAnEmptyPlaceIsUntouchedAndSafeToPull) {
  const Condition condition(false);
  EXPECT_EQ(condition.value(), LMAINTE_CONDITION_UNTOUCHED);
  EXPECT_FALSE(condition.may_run());
}

}  // namespace
