// A run of records for the length of a block: made, fetched, looked up by index, and freed with all its records.
#pragma once

#include "include/lmainte.h"
#include "src/db/record_view.h"

namespace lmainte {

// Which records of a run may be missing without failing the fetch: those of units that are not installed.
struct Absence {
  bool (*is_tolerated)(const void *context, int32_t index) = nullptr;
  const void *context = nullptr;
};

class AccessTable {
 public:
  AccessTable(int32_t first, int32_t count, int32_t size, const char *name)
      : entries_(lmainte_db_make_access_table(first, count, size, name)) {}
  AccessTable(const AccessTable &) = delete;
  AccessTable &operator=(const AccessTable &) = delete;
  ~AccessTable() {
    if (entries_ != nullptr) lmainte_db_free_access_table(entries_);
  }

  // True once the table could be made and every record was read, but for tolerated absences.
  bool fetch(uint32_t db_id, const Absence &absence = {});

  // The record of an index, or null where the table has none.
  const void *find(int32_t index) const {
    for (const lmainte_access_entry *entry = entries_; entry->index >= 0; ++entry)
      if (entry->index == index) return entry->data;
    return nullptr;
  }

 private:
  lmainte_access_entry *entries_;
};

}  // namespace lmainte
