// How a play tells things in lines.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace play {

// Each line four columns to the right, the last one ended.
std::string indented(const std::string &text);

// What keys are pressed: "3", Enter, Ctrl-C
std::string describe_keys(std::string_view keys);

// A screen with its caption above it, without the empty rows at its end.
std::string framed(const std::vector<std::string> &rows, std::string_view caption);

// Advice to call spbox on this box, wherever it stands in a text, as a step of a play: `spbox units` for `spbox units box`.
std::string as_steps(std::string text, const std::string &box);

}  // namespace play
