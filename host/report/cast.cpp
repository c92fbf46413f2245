#include "host/report/cast.h"

#include <array>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "host/base/shown.h"

namespace report {
namespace {

using std::chrono::milliseconds;

std::string json_text(std::string_view text) {
  return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

// How many bytes at the end are the front of a character that goes on.
std::size_t begun_at_end(std::string_view bytes) {
  constexpr std::size_t kLongest = 4;
  for (std::size_t back = 1; back < kLongest && back <= bytes.size(); ++back) {
    const auto byte = static_cast<unsigned char>(bytes[bytes.size() - back]);
    if ((byte & 0xC0U) == 0x80U) continue;
    const std::size_t wanted = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : byte >= 0xC0 ? 2 : 1;
    return wanted > back ? back : 0;
  }
  return 0;
}

}  // namespace

void Cast::event(milliseconds time, const char *kind, std::string_view data) {
  std::array<char, 32> seconds{};
  std::snprintf(seconds.data(), seconds.size(), R"([%.3f, ")", static_cast<double>(time.count()) / 1000);
  events_ += std::string(seconds.data()) + kind + R"(", )" + json_text(data) + "]\n";
}

void Cast::wrote(milliseconds time, std::string_view bytes) {
  const std::string whole = cut_ + std::string(bytes);
  const std::size_t begun = begun_at_end(whole);
  cut_ = whole.substr(whole.size() - begun);
  if (whole.size() > begun) event(time, "o", std::string_view(whole).substr(0, whole.size() - begun));
}

void Cast::marks(milliseconds time, std::string_view label) {
  event(time, "m", base::shown(label));
}

void Cast::resized(milliseconds time, terminal::Size size) {
  event(time, "r", std::to_string(size.columns) + "x" + std::to_string(size.rows));
}

std::string Cast::text() const {
  return R"({"version": 2, "width": )" + std::to_string(size_.columns) + R"(, "height": )" +
         std::to_string(size_.rows) + R"(, "title": )" + json_text(base::shown(title_)) +
         ", \"env\": {\"TERM\": \"xterm-256color\"}}\n" + events_;
}

}  // namespace report
