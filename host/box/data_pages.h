// The pages of the data file, looked at before LMDB uses them. LMDB trusts what stands there: a wrong number of a page leads
// it out of the file, and a wrong word at the front to records that are long gone.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <stdexcept>
#include <string_view>

#include "host/box/seal.h"

namespace box {

using FileBytes = std::span<const std::uint8_t>;

// The file is damaged. The text is half a sentence: "page 37 is not as it was written."
class Damage : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The first two pages say where everything is: each save writes one of them, in turns.
struct Heads {
  std::size_t page = 0;         // bytes in a page
  std::uint64_t last_save = 0;  // its number
  std::uint64_t last_page = 0;
  std::size_t newest = 0;  // where the head of the last save lies
};

// Throws Damage where they do not fit together, or where the last save is lost. `file` has all its bytes.
Heads heads_of(FileBytes file);

// Looks at all that can be reached from the head of the last save. Throws Damage where LMDB would go astray, or where a record
// is not as it was saved. Returns what the next save goes on from; a file from before there were seals is only looked at.
Seal examine(FileBytes file, const Heads &heads);

}  // namespace box
