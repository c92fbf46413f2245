#include "include/lmainte.h"

#include "src/ops/operation.h"

namespace {

constexpr lmainte::ModeLine kLines[] = {
    {LMAINTE_POWER_ON, "poweron %s"},
    {LMAINTE_POWER_OFF, "poweroff %s"},
};

constexpr lmainte::StatusMeaning kMeanings[] = {{128, LMAINTE_IOXPOWER_FAILED}};

constexpr lmainte::Operation kOperation = {LMAINTE_CMD_IOADM, kLines, kMeanings};

}  // namespace

int32_t lmainte_control_ioxpower(int32_t mode, int32_t time_limit, const UnitRecord *unit) {
  return lmainte::operate_on_expansion(kOperation, mode, time_limit, unit);
}
