#include "include/lmainte.h"

#include <cstdio>

#include "src/ops/operation.h"

namespace {

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::second_block(0x01A);

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
  if (!lmainte::is_ready(call, time_limit, unit)) return LMAINTE_FAILED;
  lmainte::record_board(call, kOperation, *unit);
  const char *line = line_of(division, mirror);
  if (line == nullptr) {
    call.error(3, division, mirror);
    return LMAINTE_FAILED;
  }
  const long board = unit->number;
  return lmainte::judge(call, kOperation, 4, 4, lmainte_exec(kOperation.command_id, time_limit, line, board));
}
