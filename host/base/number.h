// A number that a text is.
#pragma once

#include <charconv>
#include <optional>
#include <string_view>
#include <system_error>

namespace base {

// Nothing where the text is no number, or one and something else.
template <typename Number>
std::optional<Number> number_in(std::string_view text) {
  Number number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

}  // namespace base
