// Text in XML.
#pragma once

#include <string>
#include <string_view>

namespace base {

// For a text and for the value of an attribute. What XML cannot hold becomes a question mark; ends of lines stay.
std::string xml(std::string_view text);

}  // namespace base
