#include <gtest/gtest.h>

#include "host/runner/telling.h"

namespace {

using namespace std::chrono_literals;
using runner::Result;
using runner::Verdict;

TEST(Telling, HasALineForWhatPassedAndTheReasonForWhatDidNot) {
  EXPECT_EQ(told_of(Result{"a.play", Verdict::kPassed, 1234ms, "", {}, ""}), "passed       1.2 s  a.play\n");
  EXPECT_EQ(told_of(Result{"a.play", Verdict::kFailed, 61s, "a.play:2: no\n| screen\n", {}, "/tmp/a.txt"}),
            "failed      61.0 s  a.play\na.play:2: no\n| screen\nThe transcript: /tmp/a.txt\n\n");
  EXPECT_EQ(told_of(Result{"a.play", Verdict::kUnplayed, 0ms, "", {}, ""}), "unplayed            a.play\n");
}

// A name may hold any bytes, and a line is about one play.
TEST(Telling, KeepsTheLinesOfEachPlayWhateverItsNameIs) {
  const Result failed{"a\nb.play", Verdict::kFailed, 1s, "why\n", {}, "/tmp/a\nb.txt"};
  EXPECT_EQ(told_of(failed), "failed       1.0 s  a\\x0ab.play\nwhy\nThe transcript: /tmp/a\\x0ab.txt\n\n");
  EXPECT_EQ(told_of(Result{"a\nb.play", Verdict::kUnplayed, 0ms, "", {}, ""}), "unplayed            a\\x0ab.play\n");
  EXPECT_EQ(runner::told_of_all(std::vector{failed, failed}, 1s),
            "What went wrong:\na\\x0ab.play: failed\n    why\na\\x0ab.play: failed\n    why\n\n"
            "2 plays in 1.0 s: 0 passed, 2 failed.\n");
}

TEST(Telling, CountsAllAndRepeatsWhatWentWrong) {
  const Result passed{"a.play", Verdict::kPassed, 1s, "", {}, ""};
  const Result failed{"b.play", Verdict::kFailed, 1s, "b.play:2: no\n| screen\n", {}, ""};
  const Result died{"c.play", Verdict::kDied, 1s, "c.play:3: dead\n", {}, ""};
  EXPECT_EQ(runner::told_of_all(std::vector{passed}, 1s), "1 play in 1.0 s: 1 passed.\n");
  EXPECT_EQ(runner::told_of_all(std::vector{failed}, 1s), "1 play in 1.0 s: 0 passed, 1 failed.\n");
  EXPECT_EQ(runner::told_of_all(std::vector{passed, died, failed}, 125s),
            "What went wrong:\nc.play: died\n    c.play:3: dead\nb.play: failed\n    b.play:2: no\n\n"
            "3 plays in 2 min 5 s: 1 passed, 1 failed, 1 died.\n");
  EXPECT_EQ(runner::told_of_all({}, 0ms), "0 plays in 0.0 s: 0 passed.\n");
}

TEST(Telling, FitsItsProgressIntoTheLine) {
  const runner::Progress progress{3, 67, 1, {"models/qa.play", "wrong/\u00e4\x1b.play"}, 83s};
  const std::string whole = "3 of 67 plays in 1 min 23 s, 1 wrong; now models/qa.play, wrong/\u00e4\\x1b.play";
  EXPECT_EQ(told_of(progress, 200), whole);
  EXPECT_EQ(told_of(progress, 40), whole.substr(0, 40));
  EXPECT_EQ(told_of(progress, 65), whole.substr(0, 66));  // a letter of two bytes is one column
  EXPECT_EQ(told_of(runner::Progress{0, 1, 0, {}, 0ms}, 79), "0 of 1 play in 0.0 s");
}

}  // namespace
