// What a command came to behind a deviation.
#include <gtest/gtest.h>

#include <algorithm>

#include "host/sweep/fold.h"
#include "host/sweep/sequel.h"
#include "tests/host/sweep/sweep_test.h"

namespace {

using box::PointKind;

// Readings of two records, by their first letters, as a box has counted and ordered them. Of the first ones only the number is known.
box::Points reached(const std::string &order, std::uint32_t a_before = 0) {
  box::Points points;
  points.counts = {{PointKind::kRead, "a", a_before}, {PointKind::kRead, "b", 0}};
  for (const char name : order) {
    points.order.push_back(name == 'a' ? 0 : 1);
    ++points.counts[points.order.back()].count;
  }
  return points;
}

sweep::Deviation at_reading(const std::string &name, std::uint32_t number) {
  sweep::Deviation deviation;
  deviation.row = sweep::deviation_rows().data();
  deviation.point = box::Deviation{PointKind::kRead, name, number, {box::Way::kShort, 0}, 0};
  return deviation;
}

// "a 2-3, b 2-2"
std::string ranges_of(const sweep::Good &sequel) {
  std::string text;
  for (const auto &range : sequel.points) {
    text +=
        (text.empty() ? "" : ", ") + range.name + " " + std::to_string(range.first) + "-" + std::to_string(range.last);
  }
  return text;
}
std::string order_of(const sweep::Good &sequel) {
  std::string text;
  for (const auto &point : sequel.order) text += point.name;
  return text;
}

TEST(Sequel, HasThePointsBehindTheOneAtWhichAnythingWasOtherwise) {
  struct Row {
    const char *says;
    sweep::Deviation first;
    box::Points points;
    const char *ranges, *order;
  };
  const Row rows[] = {
      {"all behind it, by their numbers", at_reading("a", 2), reached("abaab"), "a 3-3, b 2-2", "ab"},
      {"none behind the last one", at_reading("b", 2), reached("abaab"), "", ""},
      {"the order was kept from the third one on", at_reading("a", 4), reached("aabab", 2), "a 5-5, b 1-2", "bab"},
  };
  for (const Row &row : rows) {
    const sweep::Good sequel = sweep::Sequel().found(good_play(), row.first, row.points);
    EXPECT_EQ(ranges_of(sequel), row.ranges) << row.says;
    EXPECT_EQ(order_of(sequel), row.order) << row.says;
  }
  sweep::Sequel behind_answer;
  behind_answer.begin_behind(3);
  sweep::Deviation answer;
  EXPECT_EQ(ranges_of(behind_answer.found(good_play(), answer, reached("abaab"))), "a 3-3, b 2-2");
  box::Points uncounted = reached("abaab");
  uncounted.lost = 1;
  EXPECT_EQ(ranges_of(sweep::Sequel().found(good_play(), at_reading("a", 2), uncounted)), "")
      << "nobody knows their numbers";
}

TEST(Sequel, OffersDeviationsAtThesePointsAndSteps) {
  const auto steps = steps_of(kPlay);
  const auto all = [&](const sweep::Sequel &sequel) {
    return names_of(sweep::all_deviations(steps, sequel.found(good_play(), at_reading("a", 2), reached("abaab"))));
  };
  const auto has = [](const std::vector<std::string> &names, const char *name) {
    return std::ranges::find(names, name) != names.end();
  };
  sweep::Sequel sequel;
  EXPECT_TRUE(std::ranges::all_of(all(sequel), [](const auto &name) { return name.starts_with("read "); }));
  EXPECT_TRUE(has(all(sequel), "read a 3: short"));
  EXPECT_FALSE(has(all(sequel), "read a 2: short"));
  sequel.note_step(4);
  sequel.note_step(5);
  EXPECT_TRUE(has(all(sequel), "pull 1 at swap.play:5: never"));
  EXPECT_TRUE(has(all(sequel), "insert 1 at swap.play:6: faulty"));
  EXPECT_FALSE(has(all(sequel), "answer 1 at swap.play:4: q"));
  EXPECT_FALSE(has(all(sequel), "answer 2 at swap.play:7: q"));
}

// The points of a sequel do not begin with the first one of their name.
TEST(Sequel, IsFoldedAsAGoodPlayIs) {
  const sweep::Good sequel = sweep::Sequel().found(good_play(), at_reading("a", 1), reached("aabaaaab"));
  const auto all = sweep::all_deviations(steps_of(kPlay), sequel);
  const auto taken = sweep::Fold(sequel, 1).taken(all);
  EXPECT_LT(taken.size(), all.size());
  std::vector<std::string> names;
  for (const std::size_t number : taken) names.push_back(sweep::name_of(all[number]));
  EXPECT_NE(std::ranges::find(names, "read a 2: short"), names.end()) << "the first one";
}

}  // namespace
