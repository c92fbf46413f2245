#include "include/lmainte.h"

#include "src/ops/operation.h"

namespace {

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::plain_block(0x034);

constexpr lmainte::ModeLine kLines[] = {
    {LMAINTE_FLAG_START, "-u %s -c start"},
    {LMAINTE_FLAG_END, "-u %s -c end"},
};

constexpr lmainte::StatusMeaning kMeanings[] = {{128, LMAINTE_BUSY}, {204, LMAINTE_FLAG_REFUSED}};

constexpr lmainte::Operation kOperation = {LMAINTE_CMD_SETMAINTEFLAG, kLines, kMeanings};

}  // namespace

int32_t lmainte_set_mainteflag(int32_t mode, int32_t time_limit, const UnitRecord *unit) {
  const lmainte::Call call(trace, kBlock);
  return lmainte::operate_on_unit(call, kOperation, mode, time_limit, unit);
}
