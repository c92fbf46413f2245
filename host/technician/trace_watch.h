// What the library of a box records from a moment on, record by record.
#pragma once

#include <cstdint>

#include "host/box/place.h"
#include "host/technician/trace_condition.h"

namespace technician {

class TraceWatch {
 public:
  // Records that are older than now do not count.
  explicit TraceWatch(box::Place place);

  // Whether an event was recorded later than the one that was found last.
  bool has_come(const TraceCondition &condition);

 private:
  box::Place place_;
  std::uint64_t next_ = 0;  // number of the first record that has_come looks at next
};

}  // namespace technician
