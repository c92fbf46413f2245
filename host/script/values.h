// What the words of a script stand for: numbers and times.
#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace script {

// From 0 to a day. Throws std::invalid_argument.
std::chrono::milliseconds seconds_in(const std::string &word);

// From 0 to `largest`; "soon" is no WHAT. Throws std::invalid_argument.
int number_in(const std::string &word, int largest, const char *what);

std::optional<int> hexadecimal_digit(char c);

// "10 s", "0.5 s"
std::string seconds_text(std::chrono::milliseconds time);

}  // namespace script
