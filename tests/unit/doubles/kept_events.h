// What the library records in all unit tests together, for tests of a reader that is to know every event.
#pragma once

#include <cstdint>

namespace doubles {

// Appends an event and the number of its words to the file in the environment variable LMAINTE_KEPT_EVENTS, each pair once
// in a process. Without the variable nothing is kept.
void keep_event(uint32_t event, uint32_t words);

}  // namespace doubles
