// How a play tells things in lines.
#pragma once

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

namespace play {

// Words with a blank between two.
std::string joined(const std::vector<std::string> &words);

// Each line four columns to the right, the last one ended.
std::string indented(const std::string &text);

// "10 s", "0.5 s"
std::string seconds_text(std::chrono::milliseconds time);

// A screen with its caption above it, without the empty rows at its end.
std::string framed(const std::vector<std::string> &rows, std::string_view caption);

}  // namespace play
