#include "host/box/seal.h"

#include <unistd.h>

#include <algorithm>
#include <cstring>

namespace box {
namespace {

void add(std::uint64_t word, std::uint64_t &sum) {
  sum = (sum ^ word) * 0x9E3779B97F4A7C15;
  sum ^= sum >> 32U;
}

void add(std::span<const std::uint8_t> bytes, std::uint64_t &sum) {
  while (!bytes.empty()) {
    std::uint64_t word = 0;
    const std::size_t size = std::min(sizeof word, bytes.size());
    std::memcpy(&word, bytes.data(), size);
    add(word, sum);
    bytes = bytes.subspan(size);
  }
}

}  // namespace

std::uint64_t sum_of(std::string_view key, std::span<const std::uint8_t> record) {
  std::uint64_t sum = 0;
  add(key.size(), sum);
  add(record.size(), sum);
  add({reinterpret_cast<const std::uint8_t *>(key.data()), key.size()}, sum);
  add(record, sum);
  return sum;
}

std::optional<std::uint64_t> last_save_in(std::span<const std::uint8_t> first_page) {
  LastSave found;
  if (first_page.size() < kLastSaveAt + sizeof found) return std::nullopt;
  std::memcpy(&found, first_page.data() + kLastSaveAt, sizeof found);
  if (found.magic != LastSave().magic) return std::nullopt;
  return found.save;
}

void note_last_save(int data_file, std::uint64_t save) {
  const LastSave noted{.save = save};
  [[maybe_unused]] const ssize_t an_earlier_one_stays = pwrite(data_file, &noted, sizeof noted, kLastSaveAt);
}

}  // namespace box
