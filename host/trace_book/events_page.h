// The table of all trace events for people: docs/trace-events.md.
#pragma once

#include <string>

namespace trace_book {

std::string events_page();

}  // namespace trace_book
