// A run of records for the length of a block: made, fetched, looked up by index, and freed with all its records.
#pragma once

#include "include/lmainte.h"
#include "src/db/record_shape.h"
#include "src/db/record_view.h"

namespace lmainte {

// Which records of a run may be missing: those of units that are not installed. The fetch does not fail for them.
struct Absence {
  bool (*is_tolerated)(const void *context, int32_t index) = nullptr;
  const void *context = nullptr;
};

class AccessTable {
 public:
  AccessTable(int32_t first, int32_t count, const RecordShape &shape)
      : entries_(lmainte_db_make_access_table(first, count, shape.size, shape.name)), first_(first), count_(count) {}
  AccessTable(const AccessTable &) = delete;
  AccessTable &operator=(const AccessTable &) = delete;
  ~AccessTable() {
    if (entries_ != nullptr) lmainte_db_free_access_table(entries_);
  }

  // True if the table was made and every record was read. Tolerated absences do not count.
  bool fetch(uint32_t db_id, const Absence &absence = {});

  // The record of an index, or null where the fetched table has none: the entries stand in the order of their indices.
  const void *find(int32_t index) const {
    const int64_t place = int64_t{index} - first_;
    return place >= 0 && place < count_ ? entries_[place].data : nullptr;
  }

 private:
  lmainte_access_entry *entries_;
  int32_t first_;
  int32_t count_;
};

}  // namespace lmainte
