#include "host/sweep/plan.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "host/base/number.h"
#include "host/sweep/draw.h"

namespace sweep {
namespace {

bool is_same_place(const Deviation &one, const Deviation &other) {
  return where(one) == where(other);
}

std::vector<Case> pairs(const std::vector<std::size_t> &wanted, const std::vector<Deviation> &all, std::uint32_t draws,
                        Draw &draw) {
  std::vector<Case> cases;
  if (wanted.size() < 2) return cases;
  std::set<Case> drawn;
  constexpr std::size_t kTries = 20;  // of a pair, where many are at one place, or there are few
  for (std::size_t tried = 0; cases.size() < draws && tried < kTries * draws; ++tried) {
    const std::size_t one = wanted[draw.below(wanted.size())], other = wanted[draw.below(wanted.size())];
    const Case pair{std::min(one, other), std::max(one, other)};
    if (!is_same_place(all[one], all[other]) && drawn.insert(pair).second) cases.push_back(pair);
  }
  return cases;
}

}  // namespace

bool is_named(const Deviation &deviation, const PlanRules &rules) {
  return name_of(deviation).find(rules.only) != std::string::npos;
}

std::vector<Case> plan(const std::vector<Deviation> &all, const Fold *fold, const PlanRules &rules) {
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
  std::vector<Case> cases;
  if (rules.depth == 1) {
    for (const std::size_t number : wanted) cases.push_back({number});
    for (std::size_t i = cases.size(); i > 1; --i) std::swap(cases[i - 1], cases[draw.below(i)]);
  } else {
    cases = pairs(wanted, all, rules.draws, draw);
  }
  std::vector<Case> share;
  for (std::size_t i = rules.shard.number - 1; i < cases.size(); i += rules.shard.shares) share.push_back(cases[i]);
  return share;
}

std::string name_of(const Case &one, const std::vector<Deviation> &all) {
  std::string name;
  for (const std::size_t number : one) name += (name.empty() ? "" : " and ") + name_of(all.at(number));
  return name;
}

std::string text_of(const Case &one) {
  std::string text;
  for (const std::size_t number : one) text += (text.empty() ? "" : ",") + std::to_string(number);
  return text;
}

Case case_in(const std::string &text, std::size_t deviations) {
  Case numbers;
  std::istringstream in(text);
  for (std::string word; std::getline(in, word, ',');) {
    const auto number = base::number_in<std::size_t>(word);
    if (!number || *number >= deviations) throw std::invalid_argument("\"" + text + "\" names no deviations");
    numbers.push_back(*number);
  }
  return numbers;
}

}  // namespace sweep
