#include "include/lmainte.h"

#include "src/ops/operation.h"

namespace {

using trace_events::TestFru;

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::block_of<TestFru>();

constexpr lmainte::FruEvents kEvents = {
    .unit = TestFru::kUnit,
    .ended = TestFru::kEnded,
    .no_time_limit = TestFru::kNoTimeLimit,
    .no_unit = TestFru::kNoUnit,
    .refused = TestFru::kRefused,
};

constexpr lmainte::StatusMeaning kMeanings[] = {{128, LMAINTE_TEST_FAILED}, {208, LMAINTE_TEST_FAILED}};

constexpr lmainte::Operation kOperation = {LMAINTE_CMD_TESTFRU, {}, kMeanings};

}  // namespace

int32_t lmainte_test_fru(int32_t time_limit, const UnitRecord *unit) {
  const lmainte::Call call(trace, kBlock);
  return lmainte::operate_on_fru(call, kEvents, kOperation, time_limit, unit);
}
