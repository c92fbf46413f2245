#include "include/lmainte.h"

#include "src/ops/operation.h"

namespace {

using trace_events::DetachFru;

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::block_of<DetachFru>();

constexpr lmainte::FruEvents kEvents = {
    .unit = DetachFru::kUnit,
    .ended = DetachFru::kEnded,
    .no_time_limit = DetachFru::kNoTimeLimit,
    .no_unit = DetachFru::kNoUnit,
    .refused = DetachFru::kRefused,
};

constexpr lmainte::StatusMeaning kMeanings[] = {{128, LMAINTE_DETACH_FAILED}, {205, LMAINTE_DETACH_FAILED}};

constexpr lmainte::Operation kOperation = {LMAINTE_CMD_DETACHFRU, {}, kMeanings};

}  // namespace

int32_t lmainte_detach_fru(int32_t time_limit, const UnitRecord *unit) {
  const lmainte::Call call(trace, kBlock);
  return lmainte::operate_on_fru(call, kEvents, kOperation, time_limit, unit);
}
