#include "include/lmainte.h"

#include "src/ops/operation.h"

namespace {

using trace_events::ClearStatus;

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::block_of<ClearStatus>();

constexpr lmainte::StatusMeaning kMeanings[] = {{128, LMAINTE_STATUS_NOT_CLEARED}, {220, LMAINTE_STATUS_NOT_CLEARED}};

constexpr lmainte::Operation kOperation = {LMAINTE_CMD_CLEARPCI, {}, kMeanings};

}  // namespace

int32_t lmainte_clear_status(int32_t time_limit, const ClearRequest *request) {
  const lmainte::Call call(trace, kBlock);
  if (!lmainte::has_time(call, ClearStatus::kNoTimeLimit, time_limit)) return LMAINTE_FAILED;
  if (!lmainte::is_given(call, ClearStatus::kNoUnit, request)) return LMAINTE_FAILED;
  call.point(ClearStatus::kUnit, request->unit_id[0], request->unit_id[1]);
  // The request's line itself is the runner's format.
  const int32_t status = lmainte_exec(kOperation.command_id, time_limit, request->arguments);
  call.point(ClearStatus::kEnded, status);
  return lmainte::judge(call, kOperation, ClearStatus::kRefused, status);
}
