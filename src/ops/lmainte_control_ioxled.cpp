#include "include/lmainte.h"

#include "src/ops/operation.h"

namespace {

constexpr lmainte::ModeLine kLines[] = {
    {LMAINTE_LED_ON, "-u %s -c on"},
    {LMAINTE_LED_OFF, "-u %s -c off"},
    {LMAINTE_LED_BLINK, "-u %s -c blink"},
};

constexpr lmainte::StatusMeaning kMeanings[] = {{128, LMAINTE_IOXLED_FAILED}};

constexpr lmainte::Operation kOperation = {LMAINTE_CMD_IOADM, kLines, kMeanings};

}  // namespace

int32_t lmainte_control_ioxled(int32_t mode, int32_t time_limit, const UnitRecord *unit) {
  return lmainte::operate_on_expansion(kOperation, mode, time_limit, unit);
}
