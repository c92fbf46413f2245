#include "include/lmainte.h"

#include "src/ops/operation.h"

namespace {

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::plain_block(0x030);

constexpr lmainte::ModeLine kLines[] = {
    {LMAINTE_REPORT_START, "-s"},
    {LMAINTE_REPORT_END, "-e"},
};

// The other way round than elsewhere: every status says that the report failed, but for these two.
constexpr lmainte::StatusMeaning kMeanings[] = {{8, LMAINTE_FAILED}, {LMAINTE_NOT_RUN, LMAINTE_FAILED}};

constexpr lmainte::Operation kOperation = {LMAINTE_CMD_VANTAMAINTE, kLines, kMeanings, LMAINTE_REPORT_FAILED};

}  // namespace

int32_t lmainte_report_vanta(int32_t mode, int32_t time_limit) {
  const lmainte::Call call(trace, kBlock);
  return lmainte::operate(call, kOperation, mode, time_limit);
}
