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

std::uint32_t status_in(const UnitEntry &entry, const Bytes &record) {
  const std::uint32_t status = word_at(record, entry.status_at);
  const std::uint8_t flags = entry.flag_at == kNowhere ? std::uint8_t{0} : record.at(entry.flag_at);
  if (flags & LMAINTE_FLAG_FAULTED) return status | LMAINTE_STATUS_FAULTED;
  if (flags & LMAINTE_FLAG_DEGRADED) return status | LMAINTE_STATUS_DEGRADED;
  return status;
}

}  // namespace box
