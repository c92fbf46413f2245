// What a command leaves in a box when it is killed: the library's children and its list files. Nobody else takes care of them.
#pragma once

#include "host/box/place.h"

namespace spbox {

// Whether a command that ended with this status could not clear up behind itself: it died of a signal, and of none that a
// command is told to end by.
bool was_cut_off(int exit_status);

// Ends the children of the library whose parents have died, and removes the list files of processes that have ended.
void clear_up_behind_the_dead(const box::Place &place);

}  // namespace spbox
