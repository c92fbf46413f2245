// A maintenance operation as a row: its control program, the argument line of each mode, what each exit status means.
#pragma once

#include <cstdint>
#include <span>

#include "include/lmainte.h"
#include "src/frame/trace.h"

namespace lmainte {

// The argument line of a mode: a format for lmainte_exec, with the unit's name as its value where it has one.
struct ModeLine {
  int32_t mode;
  const char *line;
};

// An exit status that means something of its own.
struct StatusMeaning {
  int32_t status;
  int32_t result;
};

struct Operation {
  int32_t command_id;
  std::span<const ModeLine> lines;
  std::span<const StatusMeaning> meanings;
  int32_t otherwise = LMAINTE_FAILED;  // of every exit status but 0 that has no meaning of its own

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

// Records an exit status at a point, and where it means a failure as an error too: after the mode, for the operations
// whose error tells it. Returns what the status means.
template <class... Mode>
int32_t judge(const Call &call, const Operation &operation, Point status_point, Point error_point, int32_t status,
              Mode... mode) {
  call.point(status_point, status);
  const int32_t result = operation.meaning_of(status);
  if (result != LMAINTE_OK) call.error(error_point, mode..., status);
  return result;
}

// Checks what every operation on a unit needs, as the block's errors 1 and 2.
bool is_ready(const Call &call, int32_t time_limit, const void *unit);

// The argument line of a mode. Null, with this error, where the operation has none.
const char *find_line(const Call &call, const Operation &operation, Point error_point, int32_t mode);

// Records the unit and the control program of an operation on a system board, as the block's points 2 and 3.
void record_board(const Call &call, const Operation &operation, const UnitRecord &unit);

// An operation on the whole system, and one on a unit.
int32_t operate(const Call &call, const Operation &operation, int32_t mode, int32_t time_limit);
int32_t operate_on_unit(const Call &call, const Operation &operation, int32_t mode, int32_t time_limit,
                        const UnitRecord *unit);

// An operation without modes on a field-replaceable unit: the unit alone is recorded, its name is the argument line.
int32_t operate_on_fru(const Call &call, const Operation &operation, int32_t time_limit, const UnitRecord *unit);

// An operation on an I/O expansion unit. These leave no trace, and hand a negative time limit to the runner.
int32_t operate_on_expansion(const Operation &operation, int32_t mode, int32_t time_limit, const UnitRecord *unit);

}  // namespace lmainte
