// What a box is like before a command runs in it, as steps of a play that make one like it.
#pragma once

#include <vector>

#include "host/box/contents.h"
#include "host/play/step.h"

namespace recorder {

struct Beginning {
  std::vector<play::Words> steps;  // `box qe1`, `spbox fault /PSU#3` ...
  bool is_whole;                   // False where the verbs of spbox cannot make such a box of a new one: a dump has to.
};

// Of a box that holds this. `folder` is for boxes that are gone afterwards. Throws.
Beginning beginning_of(const box::Contents &contents, const std::filesystem::path &folder);

}  // namespace recorder
