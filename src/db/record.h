// One record of a unit, read from the database and freed with its owner.
#pragma once

#include <cstdint>
#include <cstdlib>

#include "include/lmainte.h"
#include "src/db/record_view.h"

namespace lmainte {

class Record {
 public:
  Record() = default;
  Record(const Record &) = delete;
  Record &operator=(const Record &) = delete;
  ~Record() { free(data_); }

  // Reads the record of a database that is open and locked. False when the read fails, or hands over nothing.
  bool read(uint32_t db_id, int32_t model, int32_t unit_type, int32_t unit_no) {
    const uint32_t result =
        lmainte_scdb_get(db_id, static_cast<uint32_t>(model), unit_type, static_cast<uint32_t>(unit_no), &data_);
    return result == LMAINTE_OK && data_ != nullptr;
  }

  RecordView view() const { return RecordView(data_); }

 private:
  void *data_ = nullptr;
};

}  // namespace lmainte
