// Texts as an operator reads them. They are written by hand, and the library's output is compared with them byte by byte.
//
// They are in tests/unit/golden: "== " begins a case and says what it is; then each line of text is between two bars, so
// that blanks at its end are seen. Lines that begin with a number sign and empty lines are for the reader.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace doubles {

// What the library writes in each case; the key is what the case says.
using Worlds = std::vector<std::pair<std::string, std::function<std::string()>>>;

// Compares each case of the golden file with its world. There is a world for each case and a case for each world.
void expect_golden(const std::string &name, const Worlds &worlds);

}  // namespace doubles
