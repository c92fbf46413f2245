#include "host/base/signal_name.h"

#include <csignal>
#include <cstring>

#include "host/base/number.h"

namespace base {

std::string signal_name(int signal) {
  const char *name = sigabbrev_np(signal);
  return name == nullptr ? "signal " + std::to_string(signal) : std::string("SIG") + name;
}

int signal_number(std::string_view text) {
  if (const auto number = number_in<int>(text)) return *number > 0 && *number < NSIG ? *number : 0;
  if (text.starts_with("SIG")) text.remove_prefix(3);
  for (int signal = 1; signal < NSIG; ++signal) {
    const char *name = sigabbrev_np(signal);
    if (name != nullptr && text == name) return signal;
  }
  return 0;
}

}  // namespace base
