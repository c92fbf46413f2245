#include "include/lmainte.h"

#include "src/ops/operation.h"

namespace {

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::plain_block(0x047);

constexpr lmainte::StatusMeaning kMeanings[] = {{128, LMAINTE_STATUS_NOT_CLEARED}, {220, LMAINTE_STATUS_NOT_CLEARED}};

constexpr lmainte::Operation kOperation = {LMAINTE_CMD_CLEARPCI, {}, kMeanings};

}  // namespace

int32_t lmainte_clear_status(int32_t time_limit, const ClearRequest *request) {
  const lmainte::Call call(trace, kBlock);
  if (!lmainte::is_ready(call, time_limit, request)) return LMAINTE_FAILED;
  call.point(2, request->unit_id[0], request->unit_id[1]);
  // The request's line itself is the runner's format.
  const int32_t status = lmainte_exec(kOperation.command_id, time_limit, request->arguments);
  return lmainte::judge(call, kOperation, 3, 3, status);
}
