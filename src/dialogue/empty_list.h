// The lists of units that the database holds nothing of: an empty file, shown all the same.
#pragma once

#include "include/lmainte.h"
#include "src/frame/trace.h"

namespace lmainte {

void show_empty_list(const Call &call, const ListLine *lines);

}  // namespace lmainte
