#include "include/lmainte.h"

#include "src/ops/operation.h"

namespace {

using trace_events::ControlLed;

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::block_of<ControlLed>();

constexpr lmainte::UnitEvents kEvents = {
    .command = ControlLed::kCommand,
    .unit = ControlLed::kUnit,
    .ended = ControlLed::kEnded,
    .no_time_limit = ControlLed::kNoTimeLimit,
    .no_unit = ControlLed::kNoUnit,
    .no_mode = ControlLed::kNoMode,
    .refused = ControlLed::kRefused,
};

constexpr lmainte::ModeLine kLines[] = {
    {LMAINTE_LED_ON, "-u %s -c on"},
    {LMAINTE_LED_OFF, "-u %s -c off"},
    {LMAINTE_LED_BLINK, "-u %s -c blink"},
    {LMAINTE_LED_SYNC, "-u %s -c sync"},
};

constexpr lmainte::StatusMeaning kMeanings[] = {{128, LMAINTE_LED_FAILED}, {206, LMAINTE_LED_FAILED}};

constexpr lmainte::Operation kOperation = {LMAINTE_CMD_CTLLED, kLines, kMeanings};

}  // namespace

int32_t lmainte_control_led(int32_t mode, int32_t time_limit, const UnitRecord *unit) {
  const lmainte::Call call(trace, kBlock);
  return lmainte::operate_on_unit(call, kEvents, kOperation, mode, time_limit, unit);
}
