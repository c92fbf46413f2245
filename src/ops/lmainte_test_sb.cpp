#include "include/lmainte.h"

#include "src/ops/operation.h"

namespace {

using trace_events::TestSb;

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::block_of<TestSb>();

// Unlike elsewhere, every other status says that the test failed. Only these say nothing of the board.
constexpr lmainte::StatusMeaning kMeanings[] = {
    {1, LMAINTE_FAILED}, {3, LMAINTE_FAILED}, {8, LMAINTE_FAILED}, {LMAINTE_NOT_RUN, LMAINTE_FAILED}};

constexpr lmainte::Operation kOperation = {LMAINTE_CMD_TESTSB, {}, kMeanings, LMAINTE_TEST_FAILED};

}  // namespace

int32_t lmainte_test_sb(int32_t time_limit, const UnitRecord *unit) {
  const lmainte::Call call(trace, kBlock);
  if (!lmainte::has_time(call, TestSb::kNoTimeLimit, time_limit)) return LMAINTE_FAILED;
  if (!lmainte::is_given(call, TestSb::kNoUnit, unit)) return LMAINTE_FAILED;
  call.point(TestSb::kUnit, unit->type, unit->number);
  call.point(TestSb::kCommand, kOperation.command_id);
  const long board = unit->number;
  const int32_t status = lmainte_exec(kOperation.command_id, time_limit, "-q -y %ld", board);
  call.point(TestSb::kEnded, status);
  return lmainte::judge(call, kOperation, TestSb::kRefused, status);
}
