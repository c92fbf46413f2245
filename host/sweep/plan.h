// Which deviations are tried: one at a time, or two that are drawn.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/runner/selection.h"
#include "host/sweep/deviation.h"
#include "host/sweep/fold.h"

namespace sweep {

struct PlanRules {
  std::string only = {};       // in the name; empty: any
  std::uint32_t depth = 1;     // so many deviations at a time
  std::uint32_t draws = 1000;  // so many pairs
  std::uint64_t seed = 1;
  runner::Shard shard = {};
};

// Whether the rules name it with `only`.
bool is_named(const Deviation &deviation, const PlanRules &rules);

// The numbers of the deviations that meet one replay.
using Case = std::vector<std::size_t>;

// In an order that the seed gives: the beginning of the cases is a sample of all. Without a fold, each point stands for itself; so do
// those that are named where the fold tries none of them.
std::vector<Case> plan(const std::vector<Deviation> &all, const Fold *fold, const PlanRules &rules);

std::string name_of(const Case &one,
                    const std::vector<Deviation> &all);         // "program ctlled 2: exit 206 and log 1: refused"
std::string text_of(const Case &one);                           // "17,203"
Case case_in(const std::string &text, std::size_t deviations);  // Throws std::invalid_argument.

}  // namespace sweep
