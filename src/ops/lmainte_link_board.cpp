#include "include/lmainte.h"

#include <cstdio>

#include "src/ops/operation.h"

namespace {

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::second_block(0x01E);

constexpr lmainte::ModeLine kDirections[] = {{LMAINTE_LINK_UP, "up"}, {LMAINTE_LINK_DOWN, "down"}};

constexpr lmainte::StatusMeaning kMeanings[] = {{128, LMAINTE_LINK_FAILED}, {226, LMAINTE_LINK_FAILED}};

constexpr lmainte::Operation kOperation = {LMAINTE_CMD_LINKBOARD, kDirections, kMeanings};

}  // namespace

int32_t lmainte_link_board(int32_t mode, int32_t time_limit, const UnitRecord *unit) {
  const lmainte::Call call(trace, kBlock);
  if (!lmainte::is_ready(call, time_limit, unit)) return LMAINTE_FAILED;
  lmainte::record_board(call, kOperation, *unit);
  if (unit->type != LMAINTE_TYPE_CMU && unit->type != LMAINTE_TYPE_IOU) {
    call.error(3, unit->type);
    return LMAINTE_FAILED;
  }
  const char *direction = lmainte::find_line(call, kOperation, 4, mode);
  if (direction == nullptr) return LMAINTE_FAILED;
  char line[128];
  if (snprintf(line, sizeof line, "-u %s -c %s", unit->name, direction) < 0) line[0] = '\0';
  // The line itself is the runner's format: a percent sign in a unit's name is a conversion there.
  return lmainte::judge(call, kOperation, 4, 5, lmainte_exec(kOperation.command_id, time_limit, line));
}
