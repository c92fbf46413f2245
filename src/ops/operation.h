// A maintenance operation as a row: its control program, the argument line of each mode, what each exit status means.
#pragma once

#include <cstdint>
#include <span>

#include "include/lmainte.h"
#include "src/frame/trace.h"
#include "trace_events/ops.h"

namespace lmainte {

// The argument line of a mode: a format for lmainte_exec. Its value, if it has one, is the unit's name.
struct ModeLine {
  int32_t mode;
  const char *line;
};

// What one exit status means.
struct StatusMeaning {
  int32_t status;
  int32_t result;
};

struct Operation {
  int32_t command_id;
  std::span<const ModeLine> lines;
  std::span<const StatusMeaning> meanings;
  int32_t otherwise = LMAINTE_FAILED;  // the result for all other statuses but 0

  constexpr const char *line_of(int32_t mode) const {
    for (const ModeLine &row : lines)
      if (row.mode == mode) return row.line;
    return nullptr;
  }

  constexpr int32_t meaning_of(int32_t status) const {
    if (status == 0) return LMAINTE_OK;
    for (const StatusMeaning &row : meanings)
      if (row.status == status) return row.result;
    return otherwise;
  }
};

// Returns what an exit status means. If it means a failure, records it as this error. The errors of some operations also
// carry the mode, before the status.
template <class... Mode>
int32_t judge(const Call &call, const Operation &operation, const Error &refused, int32_t status, Mode... mode) {
  const int32_t result = operation.meaning_of(status);
  if (result != LMAINTE_OK) call.error(refused, mode..., status);
  return result;
}

// Whether there is time for the operation. Records this error if not.
[[gnu::always_inline]] inline bool has_time(const Call &call, Error no_time_limit, int32_t time_limit) {
  if (time_limit <= 0) call.error(no_time_limit);
  return time_limit > 0;
}

// The argument line of a mode. Returns null, and records this error, if the operation does not have the mode.
const char *find_line(const Call &call, const Operation &operation, const Error &no_mode, int32_t mode);

// An operation on the whole system.
struct SystemEvents {
  Point command, ended;
  Error no_time_limit, no_mode, refused;
};
int32_t operate(const Call &call, const SystemEvents &events, const Operation &operation, int32_t mode,
                int32_t time_limit);

// An operation on a unit.
struct UnitEvents {
  Point command, unit, ended;
  Error no_time_limit, no_unit, no_mode, refused;
};
int32_t operate_on_unit(const Call &call, const UnitEvents &events, const Operation &operation, int32_t mode,
                        int32_t time_limit, const UnitRecord *unit);

// An operation without modes on a field-replaceable unit. It records the unit alone, and the unit's name is the argument
// line.
struct FruEvents {
  Point unit, ended;
  Error no_time_limit, no_unit, refused;
};
int32_t operate_on_fru(const Call &call, const FruEvents &events, const Operation &operation, int32_t time_limit,
                       const UnitRecord *unit);

// An operation on an I/O expansion unit. It leaves no trace, and hands a negative time limit to the runner.
int32_t operate_on_expansion(const Operation &operation, int32_t mode, int32_t time_limit, const UnitRecord *unit);

}  // namespace lmainte
