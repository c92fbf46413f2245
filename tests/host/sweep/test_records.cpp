// What the processes of a sweep tell one another, and what people are told.
#include <gtest/gtest.h>

#include "host/sweep/outcome.h"
#include "host/sweep/table.h"
#include "tests/host/sweep/sweep_test.h"

namespace {

TEST(GoodPlay, IsReadAsItWasWritten) {
  sweep::Good good = good_play();
  good.script = 18446744073709551615U;
  good.commands[0].left = {"/PSU#0 is detached"};
  good.commands[0].shown.emplace_back("odd \"bytes\" \\ \x1b[1m \xff, and 100 %");
  good.commands.push_back({5, terminal::Ending{true, 9}, {}, {}, {""}});
  good.points.push_back({box::PointKind::kRead, R"(a "name")", 2, 3, 1});
  good.first_step = 4;
  good.last_step = 7;
  const sweep::Good read = sweep::good_in(sweep::text_of(good));
  EXPECT_EQ(read.first_step, 4U);
  EXPECT_EQ(read.last_step, 7U);
  EXPECT_EQ(read.script, good.script);
  ASSERT_EQ(read.commands.size(), 2U);
  EXPECT_EQ(read.commands[0].shown, good.commands[0].shown);
  EXPECT_EQ(read.commands[0].left, good.commands[0].left);
  EXPECT_EQ(read.commands[0].logged, good.commands[0].logged);
  EXPECT_EQ(read.commands[1].ending, good.commands[1].ending);
  EXPECT_EQ(read.commands[1].start, 5U);
  ASSERT_EQ(read.points.size(), good.points.size());
  EXPECT_EQ(read.points.back().name, R"(a "name")");
  EXPECT_EQ(read.points.back().last, 3U);
}

TEST(GoodPlay, IsNotReadFromAnyText) {
  EXPECT_THROW(sweep::good_in("left \"before a command\"\n"), script::Error);
  EXPECT_THROW(sweep::good_in("command soon\n"), script::Error);
}

TEST(Outcome, IsReadAsItWasTold) {
  sweep::Course course;
  course.happened = true;
  course.played = {"box qa", R"(type "1\x0a")"};
  const auto read = sweep::outcome_in(sweep::text_of(course, {{"the LED is on", {"patience 2", "in_order"}}}, {7, 2}));
  EXPECT_EQ(read.followers, (std::vector<std::size_t>{7, 2}));
  EXPECT_TRUE(read.is_told && read.happened);
  EXPECT_EQ(read.played, course.played);
  ASSERT_EQ(read.faults.size(), 1U);
  EXPECT_EQ(read.faults[0].what, "the LED is on");
  EXPECT_FALSE(sweep::outcome_in("happened yes\n").is_told) << "it was cut off";
  EXPECT_EQ(sweep::finding_of("A sweep.", read, read.faults[0]),
            "# A sweep.\n# the LED is on.\n#\n#   spbox play --speed full THIS\n\nbox qa\ntype \"1\\x0a\"\npatience "
            "2\nin_order\n");
}

TEST(Table, CountsByPointAndDeviation) {
  const auto with = [](runner::Verdict verdict) {
    runner::Result result;
    result.verdict = verdict;
    return result;
  };
  using runner::Verdict;
  const std::vector<sweep::Tried> tried{{"read", "short", with(Verdict::kPassed)},
                                        {"program", "exit", with(Verdict::kFailed)},
                                        {"program", "exit", with(Verdict::kPassed)},
                                        {"program", "exit", with(Verdict::kHung)},
                                        {"read", "short", with(Verdict::kUnplayed)}};
  EXPECT_EQ(sweep::table_of(sweep::tallies_of(tried)),
            "Point           Deviation       Tried    Passed   Failed   Unplayed\n"
            "program         exit            3        1        2\n"
            "read            short           2        1                 1\n");
}

}  // namespace
