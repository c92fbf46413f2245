// Every operation as a row: what it runs, what it records, what the exit statuses mean.
#pragma once

#include <functional>
#include <map>
#include <ostream>
#include <string>
#include <vector>

#include "include/lmainte.h"

namespace doubles {

// Everything about a unit that an operation must not read is 0x5A.
UnitRecord a_unit(int32_t type, int32_t number, const char *name);
ClearRequest a_request(const char *arguments);

struct Operation {
  std::string name;
  std::function<int32_t(int32_t mode, int32_t time_limit)> call;
  std::string path;
  std::map<int32_t, std::string> lines;  // arguments by mode, one a line
  std::map<int32_t, int32_t> meanings;   // results of exit statuses, 0 among them
  int32_t otherwise;                     // of every other status

  // Its records: the entry, 0 for those without a trace; the points before the program runs, by number and values;
  // and the point and the error of the exit status. M stands for the mode, S for the status.
  uint32_t entry;
  std::vector<std::string> opening;
  std::string status_point;
  std::string status_error;
  std::string mode_error;  // empty for an operation without modes, or with refusals of its own
  std::vector<int32_t> refused_modes;
};

const std::vector<Operation> &operations();

// The unit of the operations on a unit, the system board of those on a board, and the request of the one on a slot.
const UnitRecord &the_unit();
const UnitRecord &the_board();
const ClearRequest &the_request();

inline void PrintTo(const Operation &operation, std::ostream *out) {
  *out << operation.name;
}

}  // namespace doubles
