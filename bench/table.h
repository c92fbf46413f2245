// Measures rows and prints them as a table.
#pragma once

#include <string>
#include <vector>

#include "bench/rows.h"

namespace bench {

// The fastest of many short runs, which what else the machine does changes least; the median where a child is started, because
// a fork takes longer the larger the process has grown. The options are those of Google Benchmark. Returns the exit status.
int measure(const std::vector<Row> &rows, int argc, char **argv);

// The same table by hand, for what is measured otherwise: its head, and a row in nanoseconds.
void print_head(const char *what);
void print_row(const std::string &row, double floor, double call);
double median(std::vector<double> times);

}  // namespace bench
