// Kinds of units, a row each: where a kind's units lie in the databases.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace box {

inline constexpr std::size_t kNowhere = static_cast<std::size_t>(-1);

// The identity record of a unit, in the FRU database. The name's length is in the low six bits of a byte and the name
// follows it; a record without such a byte holds four characters and no length.
struct FruLayout {
  std::string_view record;  // pattern of its name; empty: the kind has no identity record
  std::size_t size = 0;
  std::size_t length_at = kNowhere;
  std::size_t name_at = 0;
  std::uint32_t first = 0;  // number of the first unit's record
};

struct Kind {
  std::string_view pattern;  // of its locations
  unsigned models;           // that write it down here: a bit per model code
  std::int32_t type;         // unit type code of the records
  std::string_view record;   // pattern of its name; of the current database
  std::size_t size;
  std::size_t first_at, stride;  // of the entries in a record
  std::uint32_t entries;         // in one record
  std::uint32_t first;           // place of the kind's first unit among all entries of all its records
  std::size_t words;             // with which an entry begins: two of unit id, one of status, and what follows
  std::size_t flag_at;           // flag byte, from the entry's beginning; kNowhere where the kind has none
  FruLayout fru;
};

std::span<const Kind> kinds();

// A fan's entry in the entry of its tray: a status word and, twelve bytes on, a flag byte.
inline constexpr std::size_t kMostFans = 3, kFansAt = 32, kFanStride = 56, kFanFlagAt = 12;

// In the entry of a power supply a byte, in that of a slot two words.
inline constexpr std::size_t kPsuInfoByte = 24, kSlotNumber = 16, kSlotPower = 20;
inline constexpr std::uint32_t kSlotsInRecord = 8;

}  // namespace box
