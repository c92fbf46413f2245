// The making of a box where a user wants it: nothing else is overwritten, nothing half made is left, and a box that is
// there already is replaced by a whole one or not at all.
#pragma once

#include "host/box/contents.h"

namespace spbox {

// Makes a box with these contents in a folder that does not exist, is empty or, by force, is a box in which no command
// runs. Throws.
void make_box(const box::Place &place, const box::Contents &contents, bool force);

}  // namespace spbox
