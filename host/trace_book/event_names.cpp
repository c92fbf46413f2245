#include "host/trace_book/event_names.h"

#include <algorithm>
#include <charconv>

#include "host/trace_book/pages.h"

namespace trace_book {
namespace {

bool is_named(const Function &function, std::string_view name) {
  return !name.empty() && (function.name == name || function.other == name);
}

const Function *function_named(std::string_view name) {
  const auto &all = all_functions();
  const auto found = std::ranges::find_if(all, [&](const Function &function) { return is_named(function, name); });
  return found == all.end() ? nullptr : &*found;
}

// The event of a function that has this name, or these words.
template <typename Member>
std::optional<std::uint32_t> event_by(Member member, std::string_view function, std::string_view wanted) {
  const Function *of = function_named(function);
  if (of == nullptr) return std::nullopt;
  const auto found = std::ranges::find_if(of->events, [&](const Event &event) { return event.*member == wanted; });
  if (found == of->events.end()) return std::nullopt;
  return trace_events::kEventBase + found->code;
}

}  // namespace

std::optional<std::uint32_t> event_named(std::string_view function, std::string_view event) {
  return event_by(&Event::name, function, event);
}

std::optional<std::uint32_t> event_in_words(std::string_view function, std::string_view phrase) {
  return event_by(&Event::text, function, phrase);
}

std::string event_text(const std::string &digits) {
  std::uint32_t event = 0;
  const char *const end = std::from_chars(digits.data(), digits.data() + digits.size(), event, 16).ptr;
  const auto code = end == digits.data() + digits.size() ? code_of(event) : std::nullopt;
  const Function *of = code ? function_of(*code) : nullptr;
  const Event *at = of == nullptr ? nullptr : event_of(*of, *code);
  return at == nullptr ? digits : std::string(of->name) + " " + std::string(at->name);
}

bool is_written_by(std::uint32_t event, std::string_view function) {
  const auto code = code_of(event);
  const Function *of = code ? function_of(*code) : nullptr;
  return of != nullptr && event_of(*of, *code) != nullptr && is_named(*of, function);
}

std::vector<std::string_view> event_names(std::string_view function) {
  std::vector<std::string_view> names;
  const Function *of = function_named(function);
  if (of == nullptr) return names;
  for (const Event &event : of->events) names.push_back(event.name);
  return names;
}

}  // namespace trace_book
