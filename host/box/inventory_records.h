// The contents of records: words by offset, status words, FRU names, and the identity record of a new unit.
#pragma once

#include <cstdint>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <string>

#include "host/box/database.h"
#include "host/box/inventory_kinds.h"

namespace box {

inline std::uint32_t word_at(const Bytes &record, std::size_t at) {
  std::uint32_t word = 0;
  if (at + sizeof word > record.size()) throw std::out_of_range("a word past the end of a record");
  std::memcpy(&word, record.data() + at, sizeof word);
  return word;
}

inline void put_word(Bytes &record, std::size_t at, std::uint32_t word) {
  if (at + sizeof word > record.size()) throw std::out_of_range("a word past the end of a record");
  std::memcpy(record.data() + at, &word, sizeof word);
}

// A unit's status word, with the flag byte merged in where its kind has one.
std::uint32_t status_in(const UnitEntry &entry, const Bytes &record);

// The FRU name in an identity record, as a command reads it; none where the record is too short for it.
std::optional<std::string> fru_name_in(const FruLayout &fru, const Bytes &record);

// The identity record of a unit fresh from the store, for a unit that has one.
Bytes fru_record_of(const UnitEntry &entry);

}  // namespace box
