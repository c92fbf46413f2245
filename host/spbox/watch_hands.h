// What the hands of the one who watches do to a box, as the verbs do it.
#pragma once

#include <string>

#include "host/box/place.h"
#include "host/watch/desk.h"

namespace spbox {

// In a process that is confined to the box. Returns what was done, or why it was not, in a sentence.
std::string let_hands(const box::Place &place, const watch::Hand &hand);

}  // namespace spbox
