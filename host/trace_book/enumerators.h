// How the names of an enumeration are spelled: what the catalogue of trace events calls kNotOpened is "not-opened" in a
// technician's script.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

namespace trace_book {

// "kNotOpened"; empty for a value that has no name. All values are asked for at once: the compiler takes milliseconds for each
// function that it makes.
template <auto... Values>
consteval std::array<std::string_view, sizeof...(Values)> enumerators() {
  // "... [with auto ...Values = {trace_events::Exec::kEnded, (trace_events::Exec::Point)9}; ...", with clang "<" and ">"
  std::string_view text = __PRETTY_FUNCTION__;
  text.remove_prefix(text.find("Values = ") + 10);
  std::array<std::string_view, sizeof...(Values)> names;
  for (std::string_view &name : names) {
    const std::string_view value = text.substr(0, text.find_first_of(",}>"));
    if (value[0] != '(') name = value.substr(value.rfind(':') + 1);
    text.remove_prefix(std::min(value.size() + 2, text.size()));
  }
  return names;
}

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

}  // namespace trace_book
