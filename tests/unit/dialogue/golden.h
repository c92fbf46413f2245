// Texts as an operator reads them, written by hand, that the library's output is compared with byte for byte.
//
// They stand in tests/unit/golden: "== " begins a case and says what it is; then a line of text stands between two bars, so
// that blanks at its end are seen. Lines that begin with a number sign and empty lines are for the reader.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace doubles {

// What the library writes in each case, by what the case says.
using Worlds = std::vector<std::pair<std::string, std::function<std::string()>>>;

// Compares each case of the golden file with its world. There is a world for each case and a case for each world.
void expect_golden(const std::string &name, const Worlds &worlds);

}  // namespace doubles
