#include <gtest/gtest.h>

#include <csignal>

#include "host/base/descriptor.h"
#include "host/base/pipe.h"
#include "host/runner/judge.h"

namespace {

using namespace std::chrono_literals;
using runner::JobEnding;
using runner::Verdict;

// What a play tells of itself, as its runner gets it.
std::string told_by(const std::function<void(const play::AccountWriter &)> &play) {
  base::Pipe pipe;
  play(play::AccountWriter(pipe.in.get()));
  pipe.in.reset();
  std::string told;
  char byte = 0;
  while (read(pipe.out.get(), &byte, 1) == 1) told += byte;
  return told;
}

std::string told_at_step() {
  return told_by([](const play::AccountWriter &writer) {
    writer.begins("a.play:1", "box qa");
    writer.begins("a.play:2", "pause 9");
  });
}

std::string told_at_failure() {
  return told_by([](const play::AccountWriter &writer) {
    writer.begins("a.play:1", "box qa");
    writer.ends({"a.play:2",
                 "in_order",
                 "not all is in order:\n    the LED is on\n    sh still runs",
                 {"the LED is on", "sh still runs"},
                 {{"the screen", {"one", "", "three"}}},
                 "a.play:2: `in_order`: not all is in order:\n    the LED is on\n    sh still runs\n"});
  });
}

JobEnding ended(int status, std::string told, std::string output = "") {
  JobEnding ending;
  ending.status = status;
  ending.told = std::move(told);
  ending.output = std::move(output);
  ending.time = 1234ms;
  return ending;
}

JobEnding hung(JobEnding ending) {
  ending.hung = true;
  return ending;
}

JobEnding interrupted(JobEnding ending) {
  ending.interrupted = true;
  return ending;
}

struct JudgeRow {
  const char *says;
  JobEnding ending;
  Verdict verdict;
  const char *headline;
};

TEST(Judge, SaysWhatBecameOfAPlay) {
  const JudgeRow rows[] = {
      {"a play that ended well", ended(0, told_at_step()), Verdict::kPassed, ""},
      {"one whose step failed", ended(1, told_at_failure()), Verdict::kFailed,
       "a.play:2: `in_order`: not all is in order: the LED is on, sh still runs"},
      {"one that had no room for a box", ended(1, "", "spbox: no room\n"), Verdict::kFailed,
       "before the first step: its process ended with exit status 1."},
      {"a script that makes no sense", ended(2, "", "spbox: a.play:1: no\n"), Verdict::kUnreadable,
       "spbox: a.play:1: no"},
      {"one that was not done in time", hung(ended(143, told_at_step())), Verdict::kHung,
       "a.play:2: `pause 9`: the play was not done in 30 s, and was ended."},
      {"one that crashed", ended(128 + SIGSEGV, told_at_step()), Verdict::kDied,
       "a.play:2: `pause 9`: its process died of SIGSEGV."},
      {"one that could not be started", ended(126, "", "cannot run spbox: no such file\n"), Verdict::kDied,
       "before the first step: its process ended with exit status 126."},
      {"one that was interrupted", interrupted(ended(130, told_at_step())), Verdict::kUnplayed,
       "a.play:2: `pause 9`: interrupted."},
      {"one that had not begun", interrupted(ended(0, "")), Verdict::kUnplayed, ""},
  };
  for (const JudgeRow &row : rows) {
    const auto result = runner::judge(row.ending, 30s);
    EXPECT_EQ(row_of(result.verdict).word, std::string(row_of(row.verdict).word)) << row.says;
    EXPECT_EQ(headline_of(result), row.headline) << row.says;
    EXPECT_EQ(result.time, 1234ms) << row.says;
  }
}

TEST(Judge, TakesAllThatThePlayTellsOfItsFailure) {
  const auto account = runner::judge(ended(1, told_at_failure()), 30s).account;
  EXPECT_EQ(account.place, "a.play:2");
  EXPECT_EQ(account.step, "in_order");
  EXPECT_EQ(account.left, (std::vector<std::string>{"the LED is on", "sh still runs"}));
  ASSERT_EQ(account.screens.size(), 1U);
  EXPECT_EQ(account.screens[0].rows, (std::vector<std::string>{"one", "", "three"}));
}

// A play that is killed may be in the middle of a word.
TEST(Judge, TakesWhatCameOfAnAccountThatIsCutOff) {
  const std::string all = told_at_failure();
  for (std::size_t length = 0; length <= all.size(); ++length) {
    const auto account = runner::judge(ended(137, all.substr(0, length)), 30s).account;
    EXPECT_TRUE(account.step.empty() || account.step == "box qa" || account.step == "in_order") << account.step;
  }
}

TEST(Judge, ShowsTheLastLinesOfAPlayThatDied) {
  std::string output;
  for (int line = 1; line <= 30; ++line) output += "line " + std::to_string(line) + "\n";
  const auto result = runner::judge(ended(128 + SIGABRT, told_at_step(), output), 30s);
  EXPECT_TRUE(result.reason.starts_with("a.play:2: `pause 9`: its process died of SIGABRT.\nline 21\nline 22\n"))
      << result.reason;
  EXPECT_TRUE(result.reason.ends_with("line 30\n"));
  const auto brief = runner::judge(ended(128 + SIGABRT, told_at_step(), "\n"), 30s);
  EXPECT_TRUE(brief.reason.ends_with("SIGABRT.\n\n")) << brief.reason;
}

}  // namespace
