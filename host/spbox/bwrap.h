// bubblewrap as a child of spbox, which makes a root in a box and starts a program in it.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

#include "host/spbox/enclosure.h"

namespace spbox {

// Starts it. `program` is what is to run in the root; the descriptor `passed` goes along into it. `in_child` is called in
// the child before it becomes bwrap. Throws where the system has no process for it.
pid_t start_in_root(const RootPlan &plan, const std::vector<std::string> &program, int passed,
                    const std::function<void()> &in_child);

}  // namespace spbox
