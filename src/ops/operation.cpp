#include "src/ops/operation.h"

namespace lmainte {

bool is_ready(const Call &call, int32_t time_limit, const void *unit) {
  if (time_limit <= 0) {
    call.error(1);
    return false;
  }
  if (unit == nullptr) call.error(2);
  return unit != nullptr;
}

const char *find_line(const Call &call, const Operation &operation, Point error_point, int32_t mode) {
  const char *line = operation.line_of(mode);
  if (line == nullptr) call.error(error_point, mode);
  return line;
}

void record_board(const Call &call, const Operation &operation, const UnitRecord &unit) {
  call.point(2, unit.type, unit.number);
  call.point(3, operation.command_id);
}

int32_t operate(const Call &call, const Operation &operation, int32_t mode, int32_t time_limit) {
  if (time_limit <= 0) {
    call.error(1);
    return LMAINTE_FAILED;
  }
  call.point(2, operation.command_id, mode);
  const char *line = find_line(call, operation, 2, mode);
  if (line == nullptr) return LMAINTE_FAILED;
  return judge(call, operation, 3, 3, lmainte_exec(operation.command_id, time_limit, line), mode);
}

int32_t operate_on_unit(const Call &call, const Operation &operation, int32_t mode, int32_t time_limit,
                        const UnitRecord *unit) {
  if (!is_ready(call, time_limit, unit)) return LMAINTE_FAILED;
  call.point(2, operation.command_id, mode);
  call.point(3, unit->type, unit->number);
  const char *line = find_line(call, operation, 3, mode);
  if (line == nullptr) return LMAINTE_FAILED;
  const int32_t status = lmainte_exec(operation.command_id, time_limit, line, unit->name);
  return judge(call, operation, 4, 4, status, mode);
}

int32_t operate_on_fru(const Call &call, const Operation &operation, int32_t time_limit, const UnitRecord *unit) {
  if (!is_ready(call, time_limit, unit)) return LMAINTE_FAILED;
  call.point(2, unit->type, unit->number);
  return judge(call, operation, 3, 3, lmainte_exec(operation.command_id, time_limit, "-u %s", unit->name));
}

int32_t operate_on_expansion(const Operation &operation, int32_t mode, int32_t time_limit, const UnitRecord *unit) {
  const char *line = operation.line_of(mode);
  if (time_limit == 0 || unit == nullptr || line == nullptr) return LMAINTE_FAILED;
  return operation.meaning_of(lmainte_exec(operation.command_id, time_limit, line, unit->name));
}

}  // namespace lmainte
