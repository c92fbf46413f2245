// Which deviations a sweep tries, and in which order.
#include <gtest/gtest.h>

#include <set>

#include "host/sweep/plan.h"
#include "tests/host/sweep/sweep_test.h"

namespace {

class Plan : public testing::Test {
 protected:
  std::set<std::string> names(const sweep::PlanRules &rules) const {
    std::set<std::string> all;
    for (const std::size_t number : sweep::plan(all_, nullptr, rules)) all.insert(sweep::name_of(all_[number]));
    return all;
  }

  std::vector<play::Step> steps_ = steps_of(kPlay);
  std::vector<sweep::Deviation> all_ = sweep::all_deviations(steps_, good_play());
};

TEST_F(Plan, HasEachDeviationOnceInAnOrderOfItsSeed) {
  const auto first = sweep::plan(all_, nullptr, {});
  EXPECT_EQ(first.size(), all_.size());
  EXPECT_EQ(names({}).size(), all_.size());
  EXPECT_EQ(first, sweep::plan(all_, nullptr, {}));
  EXPECT_NE(first, sweep::plan(all_, nullptr, {.seed = 2}));
}

TEST_F(Plan, HasOnlyThoseThatAreNamed) {
  EXPECT_EQ(
      names({.only = "program ctlled 2: exit"}),
      (std::set<std::string>{"program ctlled 2: exit 8", "program ctlled 2: exit 77", "program ctlled 2: exit 127",
                             "program ctlled 2: exit 128", "program ctlled 2: exit 206"}));
  EXPECT_TRUE(names({.only = "program testfru"}).empty());
}

TEST_F(Plan, IsDividedIntoShares) {
  std::set<std::string> together;
  std::size_t sum = 0;
  for (std::size_t share = 1; share <= 3; ++share) {
    const auto part = names({.shard = {share, 3}});
    EXPECT_LT(part.size(), all_.size() / 2);
    sum += part.size();
    together.insert(part.begin(), part.end());
  }
  EXPECT_EQ(sum, all_.size());
  EXPECT_EQ(together.size(), all_.size());
}

// Two machines that sweep shares of one play may find some points in another order.
TEST_F(Plan, LeavesTheOthersWhereOneIsMissing) {
  const auto in_order = [](const std::vector<sweep::Deviation> &all) {
    std::vector<std::string> names;
    for (const std::size_t number : sweep::plan(all, nullptr, {.seed = 3, .shard = {2, 3}})) {
      names.push_back(sweep::name_of(all[number]));
    }
    return names;
  };
  auto names = in_order(all_);
  auto fewer = all_;
  std::erase_if(fewer, [&](const auto &deviation) { return sweep::name_of(deviation) == names[1]; });
  names.erase(names.begin() + 1);
  EXPECT_EQ(in_order(fewer), names);
}

}  // namespace
