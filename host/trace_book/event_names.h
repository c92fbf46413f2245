// The library's trace events by name, as technicians' scripts write them: "lmainte_chk_fru_install", "entry".
//
// A function is called as it is exported. An internal step stands behind its function: "lmainte_exec:stop-child". The
// names of events are those of the catalogue in trace_events/, in small letters: kNotOpened is "not-opened".
// docs/trace-events.md lists all of them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace trace_book {

// The event that a function writes, or nothing where there is no such function or event.
std::optional<std::uint32_t> event_named(std::string_view function, std::string_view event);

// The event of a function by its phrase: "a child was started". The first one of two that are worded alike.
std::optional<std::uint32_t> event_in_words(std::string_view function, std::string_view phrase);

// An event by the names of its function and of itself, from its eight hexadecimal digits: "lmainte_exec entry". What is none
// stays as it is.
std::string event_text(const std::string &digits);

// Whether this function writes the event, or one of the two that write it alike.
bool is_written_by(std::uint32_t event, std::string_view function);

// The events of a function, for a message about one that it does not have. None for an unknown function.
std::vector<std::string_view> event_names(std::string_view function);

}  // namespace trace_book
