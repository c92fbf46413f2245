// Words for a shell.
#pragma once

#include <string>

namespace base {

// A path or another word of a command line as a shell takes it: in quotes where it needs them, and with escapes where a terminal
// would obey it.
std::string quoted(const std::string &word);

}  // namespace base
