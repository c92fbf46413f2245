#include "include/lmainte.h"

#include "src/ops/operation.h"

namespace {

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::plain_block(0x054);

constexpr lmainte::StatusMeaning kMeanings[] = {{128, LMAINTE_FANSPEED_FAILED}, {225, LMAINTE_FANSPEED_FAILED}};

constexpr lmainte::Operation kOperation = {LMAINTE_CMD_CHKFANSPEED, {}, kMeanings};

}  // namespace

int32_t lmainte_check_fanspeed(int32_t time_limit, const char *unit_name) {
  const lmainte::Call call(trace, kBlock);
  if (!lmainte::is_ready(call, time_limit, unit_name)) return LMAINTE_FAILED;
  call.point(2, kOperation.command_id);
  return lmainte::judge(call, kOperation, 3, 3, lmainte_exec(kOperation.command_id, time_limit, "-u %s", unit_name));
}
