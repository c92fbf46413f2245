#include "host/spbox/text.h"

#include <algorithm>
#include <cstdio>
#include <ctime>

#include "host/base/shown.h"

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

}  // namespace

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
    for (std::string &cell : line) cell = base::shown(cell);
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
