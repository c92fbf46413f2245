#include "include/lmainte.h"

#include <cstdio>

#include "src/ops/operation.h"

namespace {

using trace_events::LinkBoard;

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::block_of<LinkBoard>();

constexpr lmainte::ModeLine kDirections[] = {{LMAINTE_LINK_UP, "up"}, {LMAINTE_LINK_DOWN, "down"}};

constexpr lmainte::StatusMeaning kMeanings[] = {{128, LMAINTE_LINK_FAILED}, {226, LMAINTE_LINK_FAILED}};

constexpr lmainte::Operation kOperation = {LMAINTE_CMD_LINKBOARD, kDirections, kMeanings};

}  // namespace

int32_t lmainte_link_board(int32_t mode, int32_t time_limit, const UnitRecord *unit) {
  const lmainte::Call call(trace, kBlock);
  if (!lmainte::has_time(call, LinkBoard::kNoTimeLimit, time_limit)) return LMAINTE_FAILED;
  if (!lmainte::is_given(call, LinkBoard::kNoUnit, unit)) return LMAINTE_FAILED;
  call.point(LinkBoard::kUnit, unit->type, unit->number);
  call.point(LinkBoard::kCommand, kOperation.command_id);
  if (unit->type != LMAINTE_TYPE_CMU && unit->type != LMAINTE_TYPE_IOU) {
    call.error(LinkBoard::kNoBoard, unit->type);
    return LMAINTE_FAILED;
  }
  const char *direction = lmainte::find_line(call, kOperation, LinkBoard::kNoMode, mode);
  if (direction == nullptr) return LMAINTE_FAILED;
  char line[128];
  if (snprintf(line, sizeof line, "-u %s -c %s", unit->name, direction) < 0) line[0] = '\0';
  // The line itself is the runner's format: a percent sign in a unit's name is a conversion there.
  const int32_t status = lmainte_exec(kOperation.command_id, time_limit, line);
  call.point(LinkBoard::kEnded, status);
  return lmainte::judge(call, kOperation, LinkBoard::kRefused, status);
}
