#include "include/lmainte.h"

#include "src/ops/operation.h"

namespace {

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::plain_block(0x031);

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
  if (time_limit <= 0) {
    call.error(1);
    return LMAINTE_FAILED;
  }
  call.point(2, kOperation.command_id, mode);
  const char *speed = lmainte::find_line(call, kOperation, 2, mode);
  if (speed == nullptr) return LMAINTE_FAILED;
  if (mode == LMAINTE_FAN_FULL && unit_name == nullptr) {
    call.error(3, mode);
    return LMAINTE_FAILED;
  }
  return lmainte::judge(call, kOperation, 3, 4, run(time_limit, unit_name, speed), mode);
}
