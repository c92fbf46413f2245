#include "host/spbox/text.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>

namespace spbox {
namespace {

constexpr std::int64_t kSecond = 1000000000;

std::string formatted(const std::tm &time, const char *format) {
  char text[64] = {};
  const std::size_t length = std::strftime(text, sizeof text, format, &time);
  return {text, length};
}

std::tm local(std::int64_t time_ns) {
  const auto seconds = static_cast<std::time_t>(time_ns / kSecond);
  std::tm time{};
  localtime_r(&seconds, &time);
  return time;
}

std::string microseconds(std::int64_t time_ns) {
  char text[16] = {};
  std::snprintf(text, sizeof text, ".%06lld", static_cast<long long>(time_ns % kSecond / 1000));
  return text;
}

// How many bytes the UTF-8 character at the beginning takes; 0 where there is none that can be shown.
std::size_t shown_bytes(std::string_view text) {
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
  return byte(0) >= 0xC0 && code >= kFirst.at(size) && code <= 0x10FFFF && !surrogate ? size : 0;
}

}  // namespace

std::string printable(std::string_view text) {
  std::string shown;
  while (!text.empty()) {
    const std::size_t size = shown_bytes(text);
    if (size == 0) shown += "\\x" + hexadecimal(static_cast<unsigned char>(text[0]), 2).substr(2);
    shown += text.substr(0, size);
    text.remove_prefix(std::max<std::size_t>(size, 1));
  }
  return shown;
}

std::string hexadecimal(std::uint32_t number, int digits) {
  char text[16] = {};
  std::snprintf(text, sizeof text, "0x%0*X", digits, number);
  return text;
}

std::string time_of_day(std::int64_t time_ns) {
  return formatted(local(time_ns), "%H:%M:%S") + microseconds(time_ns);
}

std::string date_and_time(std::int64_t time_ns) {
  return formatted(local(time_ns), "%Y-%m-%d %H:%M:%S");
}

std::string utc(std::int64_t time_ns) {
  const auto seconds = static_cast<std::time_t>(time_ns / kSecond);
  std::tm time{};
  gmtime_r(&seconds, &time);
  return formatted(time, "%Y-%m-%dT%H:%M:%S") + microseconds(time_ns) + "Z";
}

std::string aligned(std::vector<std::vector<std::string>> lines) {
  for (auto &line : lines) {
    for (std::string &cell : line) cell = printable(cell);
  }
  std::vector<std::size_t> widths;
  for (const auto &line : lines) {
    widths.resize(std::max(widths.size(), line.size()));
    for (std::size_t i = 0; i + 1 < line.size(); ++i) widths[i] = std::max(widths[i], line[i].size());
  }
  std::string text;
  for (const auto &line : lines) {
    std::string out;
    for (std::size_t i = 0; i < line.size(); ++i) {
      out += line[i];
      if (i + 1 < line.size()) out.append(widths[i] - line[i].size() + 2, ' ');
    }
    out.erase(out.find_last_not_of(' ') + 1);
    text += out + '\n';
  }
  return text;
}

}  // namespace spbox
