// What was wrong with a command that met a deviation: a sentence for each fault, with the check of a play that shows it.
#pragma once

#include <string>
#include <vector>

#include "host/sweep/replay.h"

namespace sweep {

struct Fault {
  std::string what;
  std::vector<std::string> shown_by;  // lines of a play behind those that were played; the last one fails
};

// None where the command did what it owes its operator: it ended, it put all in order or named what is not, its exit status and the
// log are true.
std::vector<Fault> faults_of(const Course &course, const Good &good);

// Whether the screen has a sentence that the good play does not show.
bool gives_reason(const Course &course, const Good &good);

}  // namespace sweep
