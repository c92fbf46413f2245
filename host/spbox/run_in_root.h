// A command inside a box: bwrap makes the root, and spbox stays until the command has ended.
#pragma once

#include <string>
#include <vector>

#include "host/spbox/children.h"
#include "host/spbox/enclosure.h"

namespace spbox {

// Starts the command in a root of its own. Returns its exit status. What it started is ended with it where it was cut off,
// and stays where it has ended by itself. Throws where it was not run.
int run_in_root(const RootPlan &plan, const std::vector<std::string> &command, Children &children);

}  // namespace spbox
