// What somebody who mistyped a word may have meant.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace spbox {

// The name that is nearest to a word, one or two keys away; empty where none is.
std::string nearest(std::string_view word, const std::vector<std::string> &names);

// " Did you mean `units`?", or nothing.
std::string did_you_mean(std::string_view word, const std::vector<std::string> &names);

}  // namespace spbox
