// Measures rows and prints them as a table.
#pragma once

#include <vector>

#include "bench/rows.h"

namespace bench {

// The medians of many short runs. The options are those of Google Benchmark. Returns the exit status.
int measure(const std::vector<Row> &rows, int argc, char **argv);

}  // namespace bench
