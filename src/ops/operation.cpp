#include "src/ops/operation.h"

namespace lmainte {

const char *find_line(const Call &call, const Operation &operation, const Error &no_mode, int32_t mode) {
  const char *line = operation.line_of(mode);
  if (line == nullptr) call.error(no_mode, mode);
  return line;
}

int32_t operate(const Call &call, const SystemEvents &events, const Operation &operation, int32_t mode,
                int32_t time_limit) {
  if (!has_time(call, events.no_time_limit, time_limit)) return LMAINTE_FAILED;
  call.point(events.command, operation.command_id, mode);
  const char *line = find_line(call, operation, events.no_mode, mode);
  if (line == nullptr) return LMAINTE_FAILED;
  const int32_t status = lmainte_exec(operation.command_id, time_limit, line);
  call.point(events.ended, status);
  return judge(call, operation, events.refused, status, mode);
}

int32_t operate_on_unit(const Call &call, const UnitEvents &events, const Operation &operation, int32_t mode,
                        int32_t time_limit, const UnitRecord *unit) {
  if (!has_time(call, events.no_time_limit, time_limit)) return LMAINTE_FAILED;
  if (!is_given(call, events.no_unit, unit)) return LMAINTE_FAILED;
  call.point(events.command, operation.command_id, mode);
  call.point(events.unit, unit->type, unit->number);
  const char *line = find_line(call, operation, events.no_mode, mode);
  if (line == nullptr) return LMAINTE_FAILED;
  const int32_t status = lmainte_exec(operation.command_id, time_limit, line, unit->name);
  call.point(events.ended, status);
  return judge(call, operation, events.refused, status, mode);
}

int32_t operate_on_fru(const Call &call, const FruEvents &events, const Operation &operation, int32_t time_limit,
                       const UnitRecord *unit) {
  if (!has_time(call, events.no_time_limit, time_limit)) return LMAINTE_FAILED;
  if (!is_given(call, events.no_unit, unit)) return LMAINTE_FAILED;
  call.point(events.unit, unit->type, unit->number);
  const int32_t status = lmainte_exec(operation.command_id, time_limit, "-u %s", unit->name);
  call.point(events.ended, status);
  return judge(call, operation, events.refused, status);
}

int32_t operate_on_expansion(const Operation &operation, int32_t mode, int32_t time_limit, const UnitRecord *unit) {
  const char *line = operation.line_of(mode);
  if (time_limit == 0 || unit == nullptr || line == nullptr) return LMAINTE_FAILED;
  return operation.meaning_of(lmainte_exec(operation.command_id, time_limit, line, unit->name));
}

}  // namespace lmainte
