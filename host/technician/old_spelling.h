// How scripts said what they wait for in the trace when its events had no names yet: in the words of `spbox trace`, with an
// internal step in brackets, as in "lmainte_exec (termination) a signal was sent". Such scripts stay good.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "host/script/script.h"

namespace technician {

// The name of the function with which the words begin in the old spelling, and which is taken off them. Empty where they
// begin otherwise: most functions are called as they were.
std::string take_old_function(script::Words &words);

// The event of a function that was shown in these words.
std::optional<std::uint32_t> event_of_old_words(const std::string &function, const std::string &words);

}  // namespace technician
