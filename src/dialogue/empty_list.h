// The lists of units that are not in the database: the pager shows an empty file.
#pragma once

#include "include/lmainte.h"
#include "src/frame/trace.h"

namespace lmainte {

struct EmptyListErrors {
  Error no_lines, no_file;
};

void show_empty_list(const Call &call, const EmptyListErrors &errors, const ListLine *lines);

}  // namespace lmainte
