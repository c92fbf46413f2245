// Advice that works as it is printed.
#pragma once

#include <initializer_list>
#include <string>

namespace box {

// How the user calls spbox, in a shell's words. A script that calls it for the user says so in the environment variable
// SPBOX_CALLED, such as "./dev spbox"; without one it is what is given here.
std::string spbox_called(const std::string &otherwise);

// A call of spbox with these words, as the user writes it in a shell: "`spbox units 'my box'`".
std::string advice(std::initializer_list<std::string> words);

}  // namespace box
