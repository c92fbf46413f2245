#include "host/trace_book/event_names.h"

#include <algorithm>

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

}  // namespace

std::optional<std::uint32_t> event_named(std::string_view function, std::string_view event) {
  const Function *of = function_named(function);
  if (of == nullptr) return std::nullopt;
  const auto found = std::ranges::find(of->events, event, &Event::name);
  if (found == of->events.end()) return std::nullopt;
  return trace_events::kEventBase + found->code;
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
