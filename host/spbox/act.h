// A verb and the words behind it, from the reading of them to what the verb does.
#pragma once

#include <string>
#include <vector>

#include "host/spbox/verb.h"

namespace spbox {

// Returns the exit status. Tells of words that make no sense, and throws what else goes wrong. Where the verb acts confined,
// this process stays so.
int act(const Verb &verb, const std::vector<std::string> &words);

// Tells what went wrong, and the way out behind it. Returns the exit status.
int complain_of(const std::exception &error, const std::string &way_out, int status);

}  // namespace spbox
