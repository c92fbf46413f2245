#include "include/lmainte.h"

#include "src/ops/operation.h"

namespace {

using trace_events::SetMainteflag;

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::block_of<SetMainteflag>();

constexpr lmainte::UnitEvents kEvents = {
    .command = SetMainteflag::kCommand,
    .unit = SetMainteflag::kUnit,
    .ended = SetMainteflag::kEnded,
    .no_time_limit = SetMainteflag::kNoTimeLimit,
    .no_unit = SetMainteflag::kNoUnit,
    .no_mode = SetMainteflag::kNoMode,
    .refused = SetMainteflag::kRefused,
};

constexpr lmainte::ModeLine kLines[] = {
    {LMAINTE_FLAG_START, "-u %s -c start"},
    {LMAINTE_FLAG_END, "-u %s -c end"},
};

constexpr lmainte::StatusMeaning kMeanings[] = {{128, LMAINTE_BUSY}, {204, LMAINTE_FLAG_REFUSED}};

constexpr lmainte::Operation kOperation = {LMAINTE_CMD_SETMAINTEFLAG, kLines, kMeanings};

}  // namespace

int32_t lmainte_set_mainteflag(int32_t mode, int32_t time_limit, const UnitRecord *unit) {
  const lmainte::Call call(trace, kBlock);
  return lmainte::operate_on_unit(call, kEvents, kOperation, mode, time_limit, unit);
}
