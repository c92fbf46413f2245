#include "include/lmainte.h"

#include <cstdio>

#include "src/ops/operation.h"

namespace {

using trace_events::ClearXsb;

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::block_of<ClearXsb>();

constexpr lmainte::StatusMeaning kMeanings[] = {
    {6, LMAINTE_CLEAR_FAILED},   {7, LMAINTE_CLEAR_FAILED},   {128, LMAINTE_CLEAR_FAILED}, {131, LMAINTE_CLEAR_FAILED},
    {132, LMAINTE_CLEAR_FAILED}, {133, LMAINTE_CLEAR_FAILED}, {136, LMAINTE_CLEAR_FAILED}};

constexpr lmainte::Operation kOperation = {LMAINTE_CMD_DELETEBOARD, {}, kMeanings};

// The names of a board's extended system boards; a board that is divided gives up all four in one command.
bool name_xsbs(int32_t division, long board, char (&names)[128]) {
  if (division == 1)
    snprintf(names, sizeof names, "%02ld-0", board);
  else if (division == 4)
    snprintf(names, sizeof names, "%02ld-0 %02ld-1 %02ld-2 %02ld-3", board, board, board, board);
  return division == 1 || division == 4;
}

}  // namespace

int32_t lmainte_clear_xsb(int32_t division, int32_t time_limit, const UnitRecord *unit) {
  const lmainte::Call call(trace, kBlock);
  if (!lmainte::has_time(call, ClearXsb::kNoTimeLimit, time_limit)) return LMAINTE_FAILED;
  if (!lmainte::is_given(call, ClearXsb::kNoUnit, unit)) return LMAINTE_FAILED;
  call.point(ClearXsb::kUnit, unit->type, unit->number);
  call.point(ClearXsb::kCommand, kOperation.command_id);
  char names[128];
  if (!name_xsbs(division, unit->number, names)) {
    call.error(ClearXsb::kNoDivision, division);
    return LMAINTE_FAILED;
  }
  const int32_t status = lmainte_exec(kOperation.command_id, time_limit, "-q y -c unassign %s", names);
  call.point(ClearXsb::kEnded, status);
  return lmainte::judge(call, kOperation, ClearXsb::kRefused, status);
}
