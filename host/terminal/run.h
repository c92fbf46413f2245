// Runs a program to its end and takes what it prints.
#pragma once

#include <string>
#include <vector>

namespace terminal {

struct Done {
  int exit_status;     // 128 + n where signal n ended it
  std::string output;  // standard output and standard error, in the order in which they came
};

// Runs a program to its end. Throws std::system_error when it cannot be run.
Done run(const std::vector<std::string> &command);

}  // namespace terminal
