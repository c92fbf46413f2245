// The processes that outlive those that were killed, wherever they are.
#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace storm {

// From now on each process below this one whose parent dies is a child of this one. Throws std::system_error.
void adopt_orphans();

enum class Orphans {
  kOutside,  // those that are in no box: what a killed command left in its box lives until the next one comes
  kAll
};

// Gives the children of this process that much time to end; nobody else may wait for one of them. Ends those that live on, and
// tells of each in a sentence.
std::vector<std::string> orphans_that_live_on(Orphans which, std::chrono::milliseconds patience);

}  // namespace storm
