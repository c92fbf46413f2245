// What spbox is asked for while a call of it fails: a row for each line.
#pragma once

#include <span>
#include <string>
#include <vector>

namespace failures {

struct Line {
  const char *name;  // the verb, and what is particular
  std::vector<std::string> words;
  std::vector<std::string> before = {};   // what spbox is asked for first, so that there is something to do
  std::vector<std::string> written = {};  // files that it may leave also where it fails
  bool tells_more = false;                // a failure has more lines than one
  bool clears_up = false;                 // what it left goes when it comes the next time
};

std::span<const Line> lines();

}  // namespace failures
