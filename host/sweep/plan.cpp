#include "host/sweep/plan.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <utility>

#include "host/sweep/draw.h"

namespace sweep {

bool is_named(const Deviation &deviation, const PlanRules &rules) {
  return name_of(deviation).find(rules.only) != std::string::npos;
}

std::vector<std::size_t> plan(const std::vector<Deviation> &all, const Fold *fold, const PlanRules &rules) {
  std::vector<std::size_t> named, wanted;
  for (std::size_t i = 0; i < all.size(); ++i) {
    if (is_named(all[i], rules)) named.push_back(i);
  }
  if (fold == nullptr) {
    wanted = named;
  } else {
    std::ranges::set_intersection(named, fold->taken(all), std::back_inserter(wanted));
  }
  if (wanted.empty()) wanted = std::move(named);  // somebody asks for these points and no others
  // One deviation more or fewer leaves the others in their order, and in their shares.
  std::vector<std::pair<std::uint64_t, std::size_t>> ranked;
  for (const std::size_t number : wanted) {
    const std::uint64_t rank = Draw::hash_of(name_of(all[number]), rules.seed);
    if (rank % rules.shard.shares == rules.shard.number - 1) ranked.emplace_back(rank, number);
  }
  std::ranges::sort(ranked);
  std::vector<std::size_t> share;
  for (const auto &[rank, number] : ranked) share.push_back(number);
  return share;
}

}  // namespace sweep
