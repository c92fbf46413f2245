// Advice that works as it is printed.
#pragma once

#include <initializer_list>
#include <string>

namespace box {

// A call of spbox with these words, as the user writes it in a shell: "`spbox units 'my box'`". A script that calls spbox
// for the user gives its own words in the environment variable SPBOX_CALLED, such as "./dev spbox".
std::string advice(std::initializer_list<std::string> words);

}  // namespace box
