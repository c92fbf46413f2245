#include "include/lmainte.h"

#include "src/ops/operation.h"

namespace {

using trace_events::CheckFanspeed;

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::block_of<CheckFanspeed>();

constexpr lmainte::StatusMeaning kMeanings[] = {{128, LMAINTE_FANSPEED_FAILED}, {225, LMAINTE_FANSPEED_FAILED}};

constexpr lmainte::Operation kOperation = {LMAINTE_CMD_CHKFANSPEED, {}, kMeanings};

}  // namespace

int32_t lmainte_check_fanspeed(int32_t time_limit, const char *unit_name) {
  const lmainte::Call call(trace, kBlock);
  if (!lmainte::has_time(call, CheckFanspeed::kNoTimeLimit, time_limit)) return LMAINTE_FAILED;
  if (!lmainte::is_given(call, CheckFanspeed::kNoUnit, unit_name)) return LMAINTE_FAILED;
  call.point(CheckFanspeed::kCommand, kOperation.command_id);
  const int32_t status = lmainte_exec(kOperation.command_id, time_limit, "-u %s", unit_name);
  call.point(CheckFanspeed::kEnded, status);
  return lmainte::judge(call, kOperation, CheckFanspeed::kRefused, status);
}
