// How the names of an enumeration are spelled: what the catalogue of trace events calls kNotOpened is "not-opened" in a
// technician's script.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace trace_book {

// "kNotOpened"; empty for a value that has no name.
template <auto Value>
consteval std::string_view enumerator() {
  std::string_view text = __PRETTY_FUNCTION__;  // "... [with auto Value = trace_events::Exec::kEnded; ...]"
  text.remove_prefix(text.find("Value = ") + 8);
  text = text.substr(0, text.find_first_of(";]"));
  if (text[0] == '(') return {};  // "(trace_events::Exec::Point)9"
  return text.substr(text.rfind(':') + 1);
}

template <auto Value>
inline constexpr bool kIsNamed = !enumerator<Value>().empty();

constexpr bool is_upper(char c) {
  return c >= 'A' && c <= 'Z';
}

// Room for the longest name with its dashes. A longer one does not compile.
struct Dashed {
  std::array<char, 32> text{};
  std::size_t length = 0;

  constexpr std::string_view view() const { return {text.data(), length}; }
};

// "kNotOpened" as "not-opened".
consteval Dashed dashed(std::string_view enumerator) {
  Dashed name;
  for (const char c : enumerator.substr(1)) {
    if (is_upper(c) && name.length > 0) name.text.at(name.length++) = '-';
    name.text.at(name.length++) = is_upper(c) ? static_cast<char>(c - 'A' + 'a') : c;
  }
  return name;
}

template <auto Value>
inline constexpr Dashed kDashed = dashed(enumerator<Value>());

}  // namespace trace_book
