// Running a program in a test, and taking what it prints.
#pragma once

#include <string>
#include <vector>

#include "host/terminal/background_program.h"

struct Done {
  int exit_status;     // 128 + n where signal n ended it
  std::string output;  // standard output and standard error, in the order in which they came
};

// Runs a program to its end. Throws std::system_error when it cannot be run.
inline Done run_to_end(const std::vector<std::string> &command) {
  terminal::BackgroundProgram program(command);
  const int exit_status = program.wait().value();
  return {exit_status, program.output()};
}
