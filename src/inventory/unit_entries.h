// The units of one kind, each an entry of a record: unit id, status word, and with some kinds a flag byte.
#pragma once

#include <cstddef>
#include <cstdint>

#include "src/db/access_table.h"
#include "src/db/record_view.h"
#include "src/frame/trace.h"
#include "src/model/unit_status.h"

namespace lmainte {

// Where the large FRU records, those of 8192 bytes, have the length byte of their name.
inline constexpr size_t kIdentityNameByte = 6187;

inline uint32_t stored_status(const RecordView &entry) {
  return entry.word(2);
}

// What all records of the inventory begin with, out of a unit's entry: with the status word as it is stored, or another.
template <class Unit>
void fill_head(int32_t type, int32_t number, const RecordView &entry, uint32_t status, Unit &out) {
  out.type = type;
  out.number = number;
  out.unit_id[0] = entry.word(0);
  out.unit_id[1] = entry.word(1);
  out.status = static_cast<int32_t>(status);
}
template <class Unit>
void fill_head(int32_t type, int32_t number, const RecordView &entry, Unit &out) {
  fill_head(type, number, entry, stored_status(entry), out);
}

// Copies the name of an installed unit out of its FRU record. The name's length byte is at the offset. Returns false, and
// records this error, if an installed unit has no such record.
template <class Unit>
bool copy_name(const Call &call, const Error &no_record, const AccessTable &names, size_t length_offset, Unit &unit) {
  if (!is_installed(unit.status)) return true;
  const void *fru = names.find(unit.number);
  if (fru == nullptr) {
    call.error(no_record, unit.number);
    return false;
  }
  RecordView(fru).copy_name(length_offset, unit.fru_name);
  return true;
}

// A record that holds an entry with a flag byte for every unit of a kind.
class FlaggedEntries {
 public:
  constexpr FlaggedEntries(const void *record, int32_t record_size, int32_t entry_size)
      : record_(record), count_(record_size / entry_size), entry_size_(entry_size) {}

  bool are_missing() const { return record_ == nullptr; }
  bool has(int32_t number) const { return !are_missing() && number >= 0 && number < count_; }

  RecordView entry(int32_t number) const {
    return RecordView(record_).at(static_cast<size_t>(number) * static_cast<size_t>(entry_size_));
  }
  uint8_t flags(int32_t number) const { return entry(number).byte(kFlagByte); }
  uint32_t status(int32_t number) const { return merged_status(stored_status(entry(number)), flags(number)); }

  // A unit that is not installed may lack its FRU record.
  Absence absence_of_names() const { return {is_not_installed, this}; }

 private:
  static constexpr size_t kFlagByte = 20;

  static bool is_not_installed(const void *entries, int32_t number) {
    const auto &self = *static_cast<const FlaggedEntries *>(entries);
    return self.has(number) && !is_installed(self.status(number));
  }

  const void *record_;
  int32_t count_;
  int32_t entry_size_;
};

}  // namespace lmainte
