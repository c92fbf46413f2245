#include "include/lmainte.h"

#include "src/ops/operation.h"

namespace {

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::second_block(0x01C);

// The other way round than elsewhere: every status says that the test failed, but for these.
constexpr lmainte::StatusMeaning kMeanings[] = {
    {1, LMAINTE_FAILED}, {3, LMAINTE_FAILED}, {8, LMAINTE_FAILED}, {LMAINTE_NOT_RUN, LMAINTE_FAILED}};

constexpr lmainte::Operation kOperation = {LMAINTE_CMD_TESTSB, {}, kMeanings, LMAINTE_TEST_FAILED};

}  // namespace

int32_t lmainte_test_sb(int32_t time_limit, const UnitRecord *unit) {
  const lmainte::Call call(trace, kBlock);
  if (!lmainte::is_ready(call, time_limit, unit)) return LMAINTE_FAILED;
  lmainte::record_board(call, kOperation, *unit);
  const long board = unit->number;
  return lmainte::judge(call, kOperation, 4, 3, lmainte_exec(kOperation.command_id, time_limit, "-q -y %ld", board));
}
