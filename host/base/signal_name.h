// Signals by name and by number.
#pragma once

#include <string>
#include <string_view>

namespace base {

std::string signal_name(int signal);  // "SIGTERM", "signal 99"

// A signal by its number or its name, with or without "SIG"; 0 when there is no such signal.
int signal_number(std::string_view text);

}  // namespace base
