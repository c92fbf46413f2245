// A database record, read by its words, bytes and names: never through a struct laid over it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace lmainte {

class RecordView {
 public:
  explicit RecordView(const void *record) : bytes_(static_cast<const uint8_t *>(record)) {}

  // Word n, in the machine's byte order.
  uint32_t word(size_t n) const {
    uint32_t value;
    memcpy(&value, bytes_ + n * sizeof value, sizeof value);
    return value;
  }

  uint8_t byte(size_t offset) const { return bytes_[offset]; }

  // The part of the record that begins at an offset: an entry of a record that holds many.
  RecordView at(size_t offset) const { return RecordView(bytes_ + offset); }

  // Copies the FRU name whose length byte is at an offset, as long as it is: no terminator, the rest of `name` as it
  // was.
  void copy_name(size_t length_offset, char *name) const {
    size_t length = bytes_[length_offset] & kNameLengthBits;
    if (length > kLongestName) length = kLongestName;
    memcpy(name, bytes_ + length_offset + 1, length);
  }

 private:
  static constexpr size_t kNameLengthBits = 0x3F;
  static constexpr size_t kLongestName = 18;

  const uint8_t *bytes_;
};

}  // namespace lmainte
