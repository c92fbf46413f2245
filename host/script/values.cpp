#include "host/script/values.h"

#include <cmath>
#include <sstream>
#include <stdexcept>

#include "host/base/number.h"

namespace script {

std::chrono::milliseconds seconds_in(const std::string &word) {
  constexpr double kLongest = 86400;
  const auto seconds = base::number_in<double>(word);
  if (!seconds || !(*seconds >= 0) || *seconds > kLongest) {
    throw std::invalid_argument("\"" + word + "\" is not a number of seconds from 0 to 86400; write 3 or 0.5");
  }
  return std::chrono::milliseconds(std::lround(*seconds * 1000));
}

int number_in(const std::string &word, int largest, const char *what) {
  const auto number = base::number_in<int>(word);
  if (!number || *number < 0 || *number > largest) {
    throw std::invalid_argument("\"" + word + "\" is not " + what + ": a number from 0 to " + std::to_string(largest));
  }
  return *number;
}

std::optional<int> hexadecimal_digit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return std::nullopt;
}

std::string seconds_text(std::chrono::milliseconds time) {
  std::ostringstream text;
  text << static_cast<double>(time.count()) / 1000 << " s";
  return text.str();
}

}  // namespace script
