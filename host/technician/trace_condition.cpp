#include "host/technician/trace_condition.h"

#include <stdexcept>

#include "host/base/listed.h"
#include "host/technician/old_spelling.h"
#include "host/trace_book/event_names.h"

namespace technician {
namespace {

constexpr const char *kWhereNamesStand = "docs/trace-events.md lists the names";

// "lmainte_chk_fru_install:test", which is taken off the words.
std::string take_function(script::Words &words) {
  auto function = take_old_function(words);
  if (!function.empty()) return function;
  function = words.front();
  words.erase(words.begin());
  return function;
}

}  // namespace

TraceCondition::TraceCondition(const script::Words &words) {
  script::Words event = words;
  function_ = take_function(event);
  const auto events = trace_book::event_names(function_);
  if (events.empty()) {
    throw std::invalid_argument("the library has no function \"" + function_ + "\" that records anything; " +
                                kWhereNamesStand);
  }
  if (event.empty()) return;
  const auto text = script::joined(event);
  event_ = trace_book::event_named(function_, text);
  if (!event_) event_ = event_of_old_words(function_, text);
  if (event_) return;
  throw std::invalid_argument(function_ + " never records \"" + text + "\"; its events are " + base::listed(events));
}

bool TraceCondition::is_met_by(std::uint32_t event) const {
  return event_ ? event == *event_ : trace_book::is_written_by(event, function_);
}

}  // namespace technician
