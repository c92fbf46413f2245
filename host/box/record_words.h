// Which parts of a record are words, and change with the machine's byte order; all else is bytes and does not.
#pragma once

#include <bit>
#include <cstddef>
#include <string_view>
#include <vector>

#include "host/box/database.h"

namespace box {

// Where the words of a record begin, in ascending order; none for a record that is not known.
std::vector<std::size_t> words_of(std::string_view record);

// Turns the words of a record into the other byte order. A word that the record is too short for stays.
void swap_words(std::string_view record, Bytes &bytes);

// From the machine's byte order into that of the service processor, or back.
inline void swap_to_big_endian(std::string_view record, Bytes &bytes) {
  if (std::endian::native == std::endian::little) swap_words(record, bytes);
}

}  // namespace box
