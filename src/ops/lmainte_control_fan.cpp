#include "include/lmainte.h"

#include "src/ops/operation.h"

namespace {

using trace_events::ControlFan;

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::block_of<ControlFan>();

constexpr lmainte::ModeLine kLines[] = {
    {LMAINTE_FAN_LOW, "-c low"},
    {LMAINTE_FAN_HIGH, "-c high"},
    {LMAINTE_FAN_FULL, "-c full"},
};

constexpr lmainte::StatusMeaning kMeanings[] = {{128, LMAINTE_FAN_FAILED}, {219, LMAINTE_FAN_FAILED}};

constexpr lmainte::Operation kOperation = {LMAINTE_CMD_CTLFAN, kLines, kMeanings};

int32_t run(int32_t time_limit, const char *unit_name, const char *speed) {
  if (unit_name == nullptr) return lmainte_exec(kOperation.command_id, time_limit, speed);
  return lmainte_exec(kOperation.command_id, time_limit, "-u %s %s", unit_name, speed);
}

}  // namespace

int32_t lmainte_control_fan(int32_t mode, int32_t time_limit, const char *unit_name) {
  const lmainte::Call call(trace, kBlock);
  if (!lmainte::has_time(call, ControlFan::kNoTimeLimit, time_limit)) return LMAINTE_FAILED;
  call.point(ControlFan::kCommand, kOperation.command_id, mode);
  const char *speed = lmainte::find_line(call, kOperation, ControlFan::kNoMode, mode);
  if (speed == nullptr) return LMAINTE_FAILED;
  if (mode == LMAINTE_FAN_FULL && unit_name == nullptr) {
    call.error(ControlFan::kNeedsUnit, mode);
    return LMAINTE_FAILED;
  }
  const int32_t status = run(time_limit, unit_name, speed);
  call.point(ControlFan::kEnded, status);
  return lmainte::judge(call, kOperation, ControlFan::kRefused, status, mode);
}
