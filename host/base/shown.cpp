#include "host/base/shown.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace base {
namespace {

enum class LineEnds { kEscaped, kKept };

std::string shown_with(LineEnds line_ends, std::string_view text) {
  std::string result;
  result.reserve(text.size());
  while (!text.empty()) {
    const bool is_kept = text[0] == '\n' && line_ends == LineEnds::kKept;
    const std::size_t size = is_kept ? 1 : character_size(text);
    result += size == 0 ? escape_of(text[0]) : text.substr(0, size);
    text.remove_prefix(std::max<std::size_t>(size, 1));
  }
  return result;
}

// What has no form of its own, and changes the order or the look of the text beside it.
bool is_format(std::uint32_t code) {
  constexpr struct {
    std::uint32_t first, last;
  } kRows[] = {{0xAD, 0xAD},     {0x61C, 0x61C},   {0x180E, 0x180E}, {0x200B, 0x200F},  {0x2028, 0x202E},
               {0x2060, 0x206F}, {0xFEFF, 0xFEFF}, {0xFFF9, 0xFFFB}, {0xE0000, 0xE007F}};
  return std::ranges::any_of(kRows, [code](const auto &row) { return row.first <= code && code <= row.last; });
}

}  // namespace

std::size_t character_size(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(i < text.size() ? text[i] : 0); };
  if (byte(0) < 0x80) return byte(0) >= ' ' && byte(0) != 0x7F ? 1 : 0;
  const std::size_t size = byte(0) >= 0xF0 ? 4 : byte(0) >= 0xE0 ? 3 : 2;
  std::uint32_t code = byte(0) & (0x7FU >> size);
  for (std::size_t i = 1; i < size; ++i) {
    if ((byte(i) & 0xC0U) != 0x80) return 0;
    code = code << 6U | (byte(i) & 0x3FU);
  }
  constexpr std::array<std::uint32_t, 5> kFirst{0, 0, 0xA0, 0x800, 0x10000};  // those before are controls, or too long
  const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
  const bool is_one = byte(0) >= 0xC0 && byte(0) < 0xF8 && code >= kFirst.at(size) && code <= 0x10FFFF && !surrogate;
  return is_one && !is_format(code) ? size : 0;
}

std::string escape_of(char byte) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  const auto value = static_cast<unsigned char>(byte);
  return {'\\', 'x', kDigits[value >> 4U], kDigits[value & 15U]};
}

std::string shown(std::string_view text) {
  return shown_with(LineEnds::kEscaped, text);
}

std::string shown_lines(std::string_view text) {
  return shown_with(LineEnds::kKept, text);
}

}  // namespace base
