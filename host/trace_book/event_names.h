// The library's trace events by name, as technicians' scripts write them: "lmainte_chk_fru_install", "entry".
//
// A function is called as it is exported. An internal step stands behind its function: "lmainte_exec:stop-child". The
// names of events are those of the catalogue in trace_events/, in small letters: kNotOpened is "not-opened".
// docs/trace-events.md lists all of them.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace trace_book {

// The event that a function writes, or nothing where there is no such function or event.
std::optional<std::uint32_t> event_named(std::string_view function, std::string_view event);

struct EventName {
  std::string_view function;
  std::string_view event;
};

// The names of an event, or nothing for one that no function of the library writes. An event that two functions write
// alike has the name of the first one.
std::optional<EventName> name_of(std::uint32_t event);

// Whether this function writes the event, or one of the two that write it alike.
bool is_written_by(std::uint32_t event, std::string_view function);

// What may be written, for a message about what may not. No events for an unknown function.
std::vector<std::string_view> function_names();
std::vector<std::string_view> event_names(std::string_view function);

}  // namespace trace_book
