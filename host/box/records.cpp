#include "host/box/records.h"

#include <algorithm>

namespace box {

std::string numbered(std::string_view pattern, std::uint32_t number) {
  const std::size_t at = pattern.find('%');
  if (at == std::string_view::npos) return std::string(pattern);
  std::string digits = std::to_string(number);
  const auto width = static_cast<std::size_t>(pattern[at + 2] - '0');
  if (digits.size() < width) digits.insert(0, width - digits.size(), '0');
  return std::string(pattern.substr(0, at)) + digits + std::string(pattern.substr(at + 4));
}

bool stands_for(std::string_view pattern, std::string_view name) {
  const std::size_t at = pattern.find('%');
  if (at == std::string_view::npos) return pattern == name;
  if (!name.starts_with(pattern.substr(0, at)) || name.size() == at) return false;
  return std::all_of(name.begin() + static_cast<std::ptrdiff_t>(at), name.end(),
                     [](char character) { return character >= '0' && character <= '9'; });
}

}  // namespace box
