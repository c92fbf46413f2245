// What must hold whatever fails.
#pragma once

#include <string>
#include <vector>

#include "failures/scene.h"
#include "failures/traced.h"

namespace failures {

// The same line when nothing failed.
struct Good {
  std::string output;
  State after;
};

// What does not hold behind this run, a sentence each.
std::vector<std::string> broken_by(const Run &run, const Line &line, const Scene &scene, const State &now,
                                   const Good &good, const Failure &failure);

}  // namespace failures
