// The way of a command line into a verb's options.
#pragma once

#include <string>
#include <vector>

#include "host/spbox/verb.h"

namespace spbox {

enum class Asked { kToAct, kForHelp };

// Puts the words behind the verb where its rows say. Throws UsageError.
Asked read_line(const Verb &verb, std::vector<std::string> line);

}  // namespace spbox
