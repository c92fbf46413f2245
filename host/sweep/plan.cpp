#include "host/sweep/plan.h"

#include <algorithm>
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
  Draw draw(rules.seed);
  for (std::size_t i = wanted.size(); i > 1; --i) std::swap(wanted[i - 1], wanted[draw.below(i)]);
  std::vector<std::size_t> share;
  for (std::size_t i = rules.shard.number - 1; i < wanted.size(); i += rules.shard.shares) share.push_back(wanted[i]);
  return share;
}

}  // namespace sweep
