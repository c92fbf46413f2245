// The rows of the box.
#pragma once

#include <vector>

#include "bench/box_folder.h"
#include "bench/rows.h"

namespace bench {

std::vector<Row> box_rows(const BoxFolder &folder);

// Locks that processes take in turn: real time, because they wait for each other.
void print_locks(const BoxFolder &folder);

}  // namespace bench
