// One replay of a sweep, in a process of its own: it tells the one that counts what became of it.
#pragma once

#include "host/spbox/sweep_options.h"

namespace spbox {

// The exit status. Throws.
int sweep_one(const SweepOptions &options, int alarm);

}  // namespace spbox
