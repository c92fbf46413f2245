// The help texts, made from the verbs' rows for a terminal of 80 columns.
#pragma once

#include <string>
#include <vector>

#include "host/spbox/verb.h"

namespace spbox {

// As the user calls it: "spbox pull [OPTIONS] [DIR] UNIT..."
std::string usage_of(const Verb &verb);
std::string help_of(const Verb &verb);
std::string help_of_all(const std::vector<Verb> &verbs);
// What spbox is, with examples; what its exit status says.
std::string description();
std::string exit_statuses();

}  // namespace spbox
