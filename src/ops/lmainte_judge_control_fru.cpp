#include "include/lmainte.h"

#include "src/ops/operation.h"

namespace {

using trace_events::JudgeControlFru;

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::block_of<JudgeControlFru>();

constexpr lmainte::ModeLine kLines[] = {
    {LMAINTE_JUDGE_ADD, "-u %s -c add"},
    {LMAINTE_JUDGE_DELETE, "-u %s -c del"},
};

// The program refuses in two ways, and the caller is told which.
constexpr lmainte::StatusMeaning kMeanings[] = {
    {128, LMAINTE_FRU_REFUSED}, {203, LMAINTE_FRU_REFUSED}, {232, LMAINTE_FRU_REFUSED_2}};

constexpr lmainte::Operation kOperation = {LMAINTE_CMD_JUDGECTLFRU, kLines, kMeanings};

}  // namespace

int32_t lmainte_judge_control_fru(int32_t mode, int32_t time_limit, const UnitRecord *unit) {
  const lmainte::Call call(trace, kBlock);
  if (!lmainte::has_time(call, JudgeControlFru::kNoTimeLimit, time_limit)) return LMAINTE_FAILED;
  if (!lmainte::is_given(call, JudgeControlFru::kNoUnit, unit)) return LMAINTE_FAILED;
  call.point(JudgeControlFru::kUnit, unit->type, unit->number);
  const char *line = lmainte::find_line(call, kOperation, JudgeControlFru::kNoMode, mode);
  if (line == nullptr) return LMAINTE_FAILED;
  const int32_t status = lmainte_exec(kOperation.command_id, time_limit, line, unit->name);
  call.point(JudgeControlFru::kEnded, status);
  return lmainte::judge(call, kOperation, JudgeControlFru::kRefused, status);
}
