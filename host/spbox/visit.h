// A command's visit to a box: bwrap makes the root, and spbox stays until the command has ended.
#pragma once

#include <string>
#include <vector>

namespace spbox {

// Starts bwrap with these arguments as a child, and the command in the root that it makes. Returns the command's exit
// status. Throws where it was not run.
int visit(std::vector<std::string> bwrap, const std::vector<std::string> &command);

}  // namespace spbox
