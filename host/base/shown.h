// Text as people are shown it: what stands in a record, a name or a script is shown by a terminal, never obeyed.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace base {

// The bytes of the UTF-8 character at the front of a text; 0 where there is none, or one that is obeyed and
// not shown: a control character, or one that turns the order of the text around.
std::size_t character_size(std::string_view text);

// A byte as dumps and scripts write it: "\x1b".
std::string escape_of(char byte);

// One line: characters as they are, other bytes and control characters as escapes.
std::string shown(std::string_view text);

// The same for lines, whose ends stay.
std::string shown_lines(std::string_view text);

}  // namespace base
