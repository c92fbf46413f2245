// What people, CI servers and scripts are told of a sweep.
#pragma once

#include <chrono>

#include "host/spbox/sweep_run.h"

namespace spbox {

// Prints it, and writes the reports that are wanted. Returns the exit status.
int report_sweep(const SweepOptions &options, const SweepRun &run, std::chrono::system_clock::time_point date);

}  // namespace spbox
