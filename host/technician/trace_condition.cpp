#include "host/technician/trace_condition.h"

#include <algorithm>
#include <cctype>
#include <stdexcept>
#include <vector>

#include "host/base/listed.h"
#include "host/box/trace_ring.h"
#include "host/trace_book/event_names.h"
#include "host/trace_book/trace_book.h"

namespace technician {
namespace {

constexpr const char *kWhereNamesStand = "docs/trace-events.md lists the names";

// "lmainte_chk_fru_install (test)", as older scripts write lmainte_chk_fru_install:test: the brackets are taken off the words.
std::string take_step(script::Words &words) {
  if (words.empty() || !words[0].starts_with('(')) return "";
  const auto end = std::find_if(words.begin(), words.end(), [](const auto &word) { return word.ends_with(')'); });
  if (end == words.end()) return "";
  std::string step = ":";
  for (auto word = words.begin(); word <= end; ++word) step += (word == words.begin() ? "" : "-") + *word;
  std::erase_if(step, [](char c) { return c == '(' || c == ')'; });
  std::transform(step.begin(), step.end(), step.begin(), [](unsigned char c) { return std::tolower(c); });
  words.erase(words.begin(), end + 1);
  return step;
}

std::string phrase_of(std::uint32_t event) {
  box::TraceEntry entry{};
  entry.event = event;
  return trace_book::words_of(entry).event;
}

// An event by its name or by its words.
std::optional<std::uint32_t> event_of(const std::string &function, const std::string &text) {
  if (const auto named = trace_book::event_named(function, text)) return named;
  for (const auto name : trace_book::event_names(function)) {
    const auto event = trace_book::event_named(function, name);
    if (event && phrase_of(*event) == text) return event;
  }
  return {};
}

}  // namespace

TraceCondition::TraceCondition(const script::Words &words) {
  script::Words event(words.begin() + 1, words.end());
  function_ = words[0] + take_step(event);
  const auto events = trace_book::event_names(function_);
  if (events.empty()) {
    throw std::invalid_argument("the library has no function \"" + function_ + "\" that records anything; " +
                                kWhereNamesStand);
  }
  if (event.empty()) return;
  event_ = event_of(function_, script::joined(event));
  if (event_) return;
  throw std::invalid_argument(function_ + " never records \"" + script::joined(event) + "\"; its events are " +
                              base::listed(events));
}

bool TraceCondition::is_met_by(std::uint32_t event) const {
  return event_ ? event == *event_ : trace_book::is_written_by(event, function_);
}

}  // namespace technician
