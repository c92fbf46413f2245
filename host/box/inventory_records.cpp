#include "host/box/inventory_records.h"

#include <algorithm>

namespace box {

std::optional<std::string> fru_name_in(const FruLayout &fru, const Bytes &record) {
  constexpr std::size_t kMost = 18, kUncounted = 4;
  std::size_t length = kUncounted;
  if (fru.length_at != kNowhere) {
    if (fru.length_at >= record.size()) return std::nullopt;
    length = std::min<std::size_t>(record[fru.length_at] & 0x3Fu, kMost);
  }
  if (fru.name_at + length > record.size()) return std::nullopt;
  const auto first = record.begin() + static_cast<std::ptrdiff_t>(fru.name_at);
  const std::string name(first, first + static_cast<std::ptrdiff_t>(length));
  return name.substr(0, name.find('\0'));
}

}  // namespace box
