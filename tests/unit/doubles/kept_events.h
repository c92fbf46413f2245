// What the library records in all tests of a process together: which events, of which module, at which source lines.
#pragma once

#include <cstdint>

#include "tests/unit/doubles/machine.h"

namespace doubles {

// One trace point as it was seen. A module is known by its trace record, at the words of which the facility is given.
struct KeptEvent {
  uint32_t event, words, line;
  uint32_t module;  // the lower half of the address
};

// Keeps a trace point, once. Children of the process keep theirs with it. With a file named in the environment variable
// LMAINTE_KEPT_EVENTS, a test of another program can read what was kept.
void keep_event(const KeptEvent &kept);

// The lines of a module at which two events or more were recorded, a sentence for each.
Lines lines_of_two_events();

}  // namespace doubles
