#include "include/lmainte.h"

#include "src/ops/operation.h"

namespace {

using trace_events::ControlMainte;

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::block_of<ControlMainte>();

constexpr lmainte::SystemEvents kEvents = {
    .command = ControlMainte::kCommand,
    .ended = ControlMainte::kEnded,
    .no_time_limit = ControlMainte::kNoTimeLimit,
    .no_mode = ControlMainte::kNoMode,
    .refused = ControlMainte::kRefused,
};

constexpr lmainte::ModeLine kLines[] = {
    {LMAINTE_MAINTE_LOCK, "-c lock"},
    {LMAINTE_MAINTE_UNLOCK, "-c unlock"},
};

constexpr lmainte::StatusMeaning kMeanings[] = {{128, LMAINTE_BUSY}, {200, LMAINTE_MODE_REFUSED}};

constexpr lmainte::Operation kOperation = {LMAINTE_CMD_CTLMAINTE, kLines, kMeanings};

}  // namespace

int32_t lmainte_control_mainte(int32_t mode, int32_t time_limit) {
  const lmainte::Call call(trace, kBlock);
  return lmainte::operate(call, kEvents, kOperation, mode, time_limit);
}
