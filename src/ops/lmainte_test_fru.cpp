#include "include/lmainte.h"

#include "src/ops/operation.h"

namespace {

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::plain_block(0x036);

// The operation has this one mode.
constexpr int32_t kMode = 0;

constexpr lmainte::ModeLine kLines[] = {{kMode, "-u %s"}};

constexpr lmainte::StatusMeaning kMeanings[] = {{128, LMAINTE_TEST_FAILED}, {208, LMAINTE_TEST_FAILED}};

constexpr lmainte::Operation kOperation = {LMAINTE_CMD_TESTFRU, kLines, kMeanings};

}  // namespace

int32_t lmainte_test_fru(int32_t time_limit, const UnitRecord *unit) {
  const lmainte::Call call(trace, kBlock);
  return lmainte::operate_on_fru(call, kOperation, kMode, time_limit, unit);
}
