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

// So many characters of a text, or all.
std::string_view front_of(std::string_view text, std::size_t characters) {
  std::size_t end = 0;
  for (; characters > 0 && end < text.size(); --characters) {
    end += std::max<std::size_t>(base::character_size(text.substr(end)), 1);
  }
  return text.substr(0, end);
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

std::string wrapped(const std::string &line, std::size_t width, std::size_t indent) {
  std::string text;
  std::string_view rest = line;
  for (std::size_t column = 0; width != kNoWidth; column = indent) {
    const std::string_view fits = front_of(rest, width > column ? width - column : 1);
    if (fits.size() == rest.size()) break;
    // Between two cells or, without any, between two words; but not in what stands before the place below which they go on.
    std::size_t end = fits.size();
    for (const char *between : {" ", "  "}) {
      const std::size_t at = rest.substr(0, end + 1).rfind(between, end);
      if (at != std::string_view::npos && at > indent - column) end = at;
    }
    text += rest.substr(0, end);
    text.erase(text.find_last_not_of(' ') + 1);
    text += '\n' + std::string(indent, ' ');
    rest.remove_prefix(std::min(rest.find_first_not_of(' ', end), rest.size()));
  }
  return text += rest;
}

std::vector<std::string> aligned_lines(std::vector<std::vector<std::string>> lines, std::size_t width,
                                       std::size_t below) {
  for (auto &line : lines) {
    for (std::string &cell : line) cell = base::shown(cell);
  }
  std::vector<std::size_t> widths;
  for (const auto &line : lines) {
    widths.resize(std::max(widths.size(), line.size()));
    for (std::size_t i = 0; i + 1 < line.size(); ++i) widths[i] = std::max(widths[i], line[i].size());
  }
  std::size_t indent = 0;
  for (std::size_t i = 0; i < std::min(below, widths.size()); ++i) indent += widths[i] + 2;
  std::vector<std::string> texts;
  for (const auto &line : lines) {
    std::string out;
    for (std::size_t i = 0; i < line.size(); ++i) {
      out += line[i];
      if (i + 1 < line.size()) out.append(widths[i] - line[i].size() + 2, ' ');
    }
    out.erase(out.find_last_not_of(' ') + 1);
    texts.push_back(wrapped(out, width, indent));
  }
  return texts;
}

std::string aligned(std::vector<std::vector<std::string>> lines) {
  std::string text;
  for (const std::string &line : aligned_lines(std::move(lines))) text += line + '\n';
  return text;
}

}  // namespace spbox
