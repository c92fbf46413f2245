// Which deviations are tried, and in which order.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/runner/selection.h"
#include "host/sweep/deviation.h"
#include "host/sweep/fold.h"

namespace sweep {

struct PlanRules {
  std::string only = {};  // in the name; empty: any
  std::uint64_t seed = 1;
  runner::Shard shard = {};
};

// Whether the rules name it with `only`.
bool is_named(const Deviation &deviation, const PlanRules &rules);

// The numbers of the deviations, in an order that the seed gives: the beginning is a sample of all. Without a fold, each point stands
// for itself; so do those that are named where the fold tries none of them.
std::vector<std::size_t> plan(const std::vector<Deviation> &all, const Fold *fold, const PlanRules &rules);

}  // namespace sweep
