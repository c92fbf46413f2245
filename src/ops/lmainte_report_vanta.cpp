#include "include/lmainte.h"

#include "src/ops/operation.h"

namespace {

using trace_events::ReportVanta;

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::block_of<ReportVanta>();

constexpr lmainte::SystemEvents kEvents = {
    .command = ReportVanta::kCommand,
    .ended = ReportVanta::kEnded,
    .no_time_limit = ReportVanta::kNoTimeLimit,
    .no_mode = ReportVanta::kNoMode,
    .refused = ReportVanta::kRefused,
};

constexpr lmainte::ModeLine kLines[] = {
    {LMAINTE_REPORT_START, "-s"},
    {LMAINTE_REPORT_END, "-e"},
};

// Unlike elsewhere, every other status says that the report failed. Only these two say nothing of the report.
constexpr lmainte::StatusMeaning kMeanings[] = {{8, LMAINTE_FAILED}, {LMAINTE_NOT_RUN, LMAINTE_FAILED}};

constexpr lmainte::Operation kOperation = {LMAINTE_CMD_VANTAMAINTE, kLines, kMeanings, LMAINTE_REPORT_FAILED};

}  // namespace

int32_t lmainte_report_vanta(int32_t mode, int32_t time_limit) {
  const lmainte::Call call(trace, kBlock);
  return lmainte::operate(call, kEvents, kOperation, mode, time_limit);
}
