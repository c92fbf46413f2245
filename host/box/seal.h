// What tells whether the records of the data file are those that were saved. It is saved with them.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace box {

// A record of its own in the file, behind those of the databases.
struct Seal {
  std::uint64_t save = 0;  // the number of the save
  std::uint64_t sum = 0;   // of the sums of all other records
};
inline constexpr std::string_view kSealKey = "7seal";

// Any bit that changes in a record changes its sum.
std::uint64_t sum_of(std::string_view key, std::span<const std::uint8_t> record);

// The number of the last save stands in the first page once more, where LMDB writes nothing. LMDB takes the record of a save
// for the older one where its number is damaged, and what was saved last would be gone without a word. It is written behind
// each save, so that after a crash it may be the number of an earlier one.
inline constexpr off_t kLastSaveAt = 2048;
struct LastSave {
  std::uint64_t magic = 0x31454C4153584253;  // "SBXSALE1" in little-endian order
  std::uint64_t save = 0;
};
// None where there is none, or its bytes are damaged.
std::optional<std::uint64_t> last_save_in(std::span<const std::uint8_t> first_page);
void note_last_save(int data_file, std::uint64_t save);

}  // namespace box
