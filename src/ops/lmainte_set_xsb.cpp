#include "include/lmainte.h"

#include <cstdio>

#include "src/ops/operation.h"

namespace {

using trace_events::SetXsb;

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::block_of<SetXsb>();

constexpr lmainte::StatusMeaning kMeanings[] = {
    {6, LMAINTE_SETUP_FAILED}, {136, LMAINTE_SETUP_FAILED}, {137, LMAINTE_SETUP_FAILED}};

constexpr lmainte::Operation kOperation = {LMAINTE_CMD_SETUPFRU, {}, kMeanings};

// Mirroring is offered for a board that stays whole only.
const char *line_of(int32_t division, int32_t mirror) {
  if (division == 1 && mirror == 1) return "-m y -x 1 sb %ld";
  if (division == 1 && mirror == 0) return "-m n -x 1 sb %ld";
  if (division == 4 && mirror == 0) return "-m n -x 4 sb %ld";
  return nullptr;
}

}  // namespace

int32_t lmainte_set_xsb(int32_t division, int32_t mirror, int32_t time_limit, const UnitRecord *unit) {
  const lmainte::Call call(trace, kBlock);
  if (!lmainte::has_time(call, SetXsb::kNoTimeLimit, time_limit)) return LMAINTE_FAILED;
  if (!lmainte::is_given(call, SetXsb::kNoUnit, unit)) return LMAINTE_FAILED;
  call.point(SetXsb::kUnit, unit->type, unit->number);
  call.point(SetXsb::kCommand, kOperation.command_id);
  const char *line = line_of(division, mirror);
  if (line == nullptr) {
    call.error(SetXsb::kNoDivision, division, mirror);
    return LMAINTE_FAILED;
  }
  const long board = unit->number;
  const int32_t status = lmainte_exec(kOperation.command_id, time_limit, line, board);
  call.point(SetXsb::kEnded, status);
  return lmainte::judge(call, kOperation, SetXsb::kRefused, status);
}
