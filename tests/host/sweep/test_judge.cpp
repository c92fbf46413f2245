// What is wrong with how a command ended, and what is not.
#include <gtest/gtest.h>

#include <csignal>

#include "host/sweep/judge.h"
#include "tests/host/sweep/sweep_test.h"

namespace {

using Lines = std::vector<std::string>;

// How it ended, from the start of a command that showed a question, was answered, and then showed these lines.
struct Ended {
  const char *what;
  int status;
  Lines shown = {}, left = {}, logged = {}, missing = {};
  const char *fault = "";  // how one fault begins; empty: there is none
  bool gave_up = false;
  std::set<int> signals = {};
};

std::string faults_in(const sweep::Course &course) {
  std::string text;
  for (const sweep::Fault &fault : sweep::faults_of(course, good_play())) text += fault.what + "\n";
  return text;
}

sweep::Course course_of(const Ended &row) {
  sweep::Course course;
  course.happened = true;
  course.end = {1, terminal::Ending{false, row.status}, row.left, row.logged, {"Which one?"}};
  course.typed_at = 1;
  course.end.shown.insert(course.end.shown.end(), row.shown.begin(), row.shown.end());
  course.missing = row.missing;
  course.switched = row.left;
  course.gave_up = row.gave_up;
  course.signals = row.signals;
  return course;
}

const Lines kReplaced{"unit replaced  power supply  /PSU#0"};

TEST(Judge, SaysWhatIsNotAsItShouldBe) {
  const Ended rows[] = {
      {.what = "a reason is told", .status = 1, .shown = {"The records could not be read (result 8)."}, .fault = ""},
      {.what = "no reason is told",
       .status = 1,
       .shown = {"Done."},
       .fault = "exit status 1, and the screen does not say why"},
      {.what = "the operator gave up, and knows why", .status = 2, .shown = {}, .fault = "", .gave_up = true},
      {.what = "maintenance mode is left",
       .status = 1,
       .shown = {"The unit could not be marked now."},
       .left = {"maintenance mode is on"},
       .fault = "maintenance mode is on, and the screen does not say so"},
      {.what = "and named",
       .status = 1,
       .shown = {"The server may still be in maintenance", "mode: a program is missing."},
       .left = {"maintenance mode is on"},
       .fault = ""},
      {.what = "the LED of another unit is named",
       .status = 1,
       .shown = {"The LED of /PSU#01 may still blink."},
       .left = {"the LED of /PSU#0 blinks"},
       .fault = "the LED of /PSU#0 blinks, and"},
      {.what = "the LED is named, and said to be off",
       .status = 1,
       .shown = {"The LED of /PSU#0 is off, and all is well."},
       .left = {"the LED of /PSU#0 blinks"},
       .fault = "the LED of /PSU#0 blinks, and"},
      {.what = "it could not be switched off, which is true",
       .status = 1,
       .shown = {"The LED of /PSU#0 could not be switched off, and is", "on still."},
       .left = {"the LED of /PSU#0 blinks"},
       .fault = ""},
      {.what = "the flag is said to be cleared",
       .status = 1,
       .shown = {"Something is wrong. The maintenance flag of /PSU#0 has been cleared."},
       .left = {"/PSU#0 is under maintenance"},
       .fault = "/PSU#0 is under maintenance, and"},
      {.what = "maintenance mode is said to be over",
       .status = 1,
       .shown = {"The server has left it: maintenance mode is over now."},
       .left = {"maintenance mode is on"},
       .fault = "maintenance mode is on, and"},
      {.what = "a row ends a word where the window ends, too",
       .status = 1,
       .shown = {"It may be that nobody could do anything about it, and therefore that on /PSU#0", "is the LED lit."},
       .left = {"the LED of /PSU#0 blinks"},
       .fault = ""},
      {.what = "a folder is left",
       .status = 1,
       .shown = {"Somebody else is at work here."},
       .left = {"the empty folder /tmp/lk.lock is left"},
       .fault = "the empty folder /tmp/lk.lock is left, and"},
      {.what = "the name goes on in the next row, where the window ends",
       .status = 1,
       .shown = {"It may be that nobody could do anything about it, and therefore the LED of /PSU#",
                 "0 may still blink."},
       .left = {"the LED of /PSU#0 blinks"},
       .fault = ""},
      {.what = "the question of the good play names it, and another answer was given",
       .status = 1,
       .shown = {"Which one? nonsense"},
       .fault = "exit status 1, and the screen does not say why"},
      {.what = "the unit is detached, and only its LED is named",
       .status = 1,
       .shown = {"The LED of /PSU#0 may still blink."},
       .left = {"/PSU#0 is detached"},
       .fault = "/PSU#0 is detached, and"},
      {.what = "a process is left, which no words excuse",
       .status = 1,
       .shown = {"A process still runs and so on."},
       .left = {"sleep still runs"},
       .fault = "sleep still runs, and"},
      {.what = "it says what is not true",
       .status = 2,
       .shown = {"/PSU#0 is still out of operation."},
       .fault = "the screen says \"/PSU#0 is still out of operation\"",
       .gave_up = true},
      {.what = "it says that the place is empty",
       .status = 2,
       .shown = {"The place of /PSU#0 stays empty."},
       .left = {"/PSU#0 is detached"},
       .missing = {"/PSU#0"},
       .fault = "",
       .gave_up = true},
      {.what = "the log has what did not happen",
       .status = 1,
       .shown = {"Something went wrong here."},
       .logged = kReplaced,
       .missing = {"/PSU#0"},
       .fault = "the log says \"unit replaced"},
      {.what = "the log lacks what happened",
       .status = 0,
       .shown = {"/PSU#0 is replaced."},
       .fault = "exit status 0, but the log lacks"},
      {.what = "and the screen says so", .status = 0, .shown = {"The log has no record of this."}, .fault = ""},
      {.what = "it crashes", .status = 139, .shown = {}, .logged = {}, .fault = "the command died of SIGSEGV"},
      {.what = "it dies of the signal that came", .status = 143, .shown = {}, .fault = "", .signals = {SIGTERM}},
      {.what = "it dies of another one", .status = 142, .fault = "the command died of SIGALRM", .signals = {SIGTERM}},
      {.what = "it dies of one that nobody sent", .status = 143, .fault = "the command died of SIGTERM"},
      {.what = "an exit status that stands for no signal has no reason",
       .status = 255,
       .fault = "exit status 255, and the screen does not say why"},
  };
  for (const Ended &row : rows) {
    const std::string faults = faults_in(course_of(row));
    if (row.fault[0] == '\0')
      EXPECT_EQ(faults, "") << row.what;
    else
      EXPECT_TRUE(faults.starts_with(row.fault) && std::ranges::count(faults, '\n') == 1) << row.what << ": " << faults;
  }
}

TEST(Judge, LetsAUnitHaveBeenOutBeforeItCameBack) {
  sweep::Course course = course_of({.what = "", .status = 2, .shown = {"The place of /PSU#0 stays empty."}});
  course.gave_up = true;
  EXPECT_EQ(faults_in(course), "the screen says \"The place of /PSU#0 stays empty\", which is not true\n");
  course.put_back = {"/PSU#0"};
  EXPECT_EQ(faults_in(course), "");
  course.put_back = {"/PSU#1"};
  EXPECT_NE(faults_in(course), "");
  course = course_of({.what = "", .status = 0, .shown = {"/PSU#0 is removed."}});
  course.put_back = {"/PSU#0"};
  EXPECT_TRUE(faults_in(course).starts_with("the screen says \"/PSU#0 is removed.\"")) << "what was done stays true";
}

TEST(Judge, TakesNothingForALineThatTheGoodPlayShows) {
  Ended row{.what = "", .status = 1, .shown = {"Done."}, .fault = ""};
  sweep::Good good = good_play();
  good.commands[0].shown = {"Which one?", "The LED of /PSU#0 blinks, as it should."};
  row.shown = {"The LED of /PSU#0 blinks, as it should.", "It was not done, for no reason."};
  row.left = {"the LED of /PSU#0 blinks"};
  const auto faults = sweep::faults_of(course_of(row), good);
  ASSERT_EQ(faults.size(), 1U);
  EXPECT_EQ(faults[0].shown_by, (Lines{"patience 2", "in_order"}));
}

TEST(Judge, TakesATimeForNoNews) {
  sweep::Good good = good_play();
  good.commands[0].shown = {"[09:59:58] Switching the LED of /PSU#0 on.", "2026-11-22 work 1.5 begins here."};
  const Ended row{.what = "",
                  .status = 1,
                  .shown = {"[10:00:01] Switching the LED of /PSU#0 on.", "2026-11-23 work 1.5 begins here."},
                  .left = {"the LED of /PSU#0 blinks"}};
  const auto faults = sweep::faults_of(course_of(row), good);
  ASSERT_EQ(faults.size(), 2U);
  EXPECT_EQ(faults[1].what, "exit status 1, and the screen does not say why");
  EXPECT_EQ(faults[1].shown_by, Lines{"wait like \"([nN]ot|cannot|fail|refuse|error|wrong|missing|busy|stop).*[.:!]\""})
      << "the rows of the good way look like a reason";
}

TEST(Judge, AsksTheCommandBehindAKilledOneForAReasonUnlessTheOperatorGaveUpThere) {
  sweep::Course course = course_of({.what = "", .status = 1});
  course.was_killed = true;
  EXPECT_EQ(faults_in(course), "exit status 1, and the screen does not say why\n");
  course.gave_up = true;
  EXPECT_EQ(faults_in(course), "");
}

TEST(Judge, RemembersWhatTheKilledOneNamed) {
  sweep::Course course = course_of({.what = "", .status = 2, .left = {"the LED of /PSU#0 blinks"}, .gave_up = true});
  course.was_killed = true;
  course.shown_by_killed = {"Which one?"};
  EXPECT_EQ(faults_in(course), "the LED of /PSU#0 blinks, and the screen does not say so\n");
  course.shown_by_killed.emplace_back("The LED of /PSU#0 may still blink.");
  EXPECT_EQ(faults_in(course), "");
  course.end.ending = terminal::Ending{false, 1};
  course.gave_up = false;
  EXPECT_EQ(faults_in(course), "exit status 1, and the screen does not say why\n") << "a reason is not remembered";
}

TEST(Judge, LetsTheOperatorGiveUp) {
  sweep::Course course = course_of({.what = "", .status = 0});
  course.is_good = true;
  EXPECT_EQ(faults_in(course), "");
  course.was_unheard = true;
  course.next_text = "Pull it out";
  const auto faults = sweep::faults_of(course, good_play());
  ASSERT_EQ(faults.size(), 1U);
  EXPECT_EQ(faults[0].what, "the operator gave up, and the command went on as if they had not");
  EXPECT_EQ(faults[0].shown_by, (Lines{"pause 5", "absent \"Pull it out\""}));
}

TEST(Judge, KnowsAUnitThatIsGoneForGood) {
  sweep::Good good = good_play();
  good.commands[0].left = {"/PSU#0 is detached"};
  const Ended row{
      .what = "", .status = 143, .shown = {"/PSU#0 is removed."}, .left = {"/PSU#0 is detached"}, .signals = {SIGTERM}};
  sweep::Course course = course_of(row);
  EXPECT_EQ(sweep::faults_of(course, good).size(), 2U) << "it is still in place";
  course.missing = {"/PSU#0"};
  EXPECT_EQ(sweep::faults_of(course, good).size(), 0U);
  course.end.shown.pop_back();
  EXPECT_EQ(sweep::faults_of(course, good).size(), 1U) << "nobody says so";
  course.was_killed = true;
  EXPECT_EQ(sweep::faults_of(course, good).size(), 0U);
}

TEST(Judge, LetsThePlayAllowWhatIsNamed) {
  const Ended row{.what = "",
                  .status = 1,
                  .shown = {"/PSU#0 is still out of operation."},
                  .left = {"/PSU#0 is detached", "maintenance mode is on"},
                  .fault = ""};
  const auto faults = sweep::faults_of(course_of(row), good_play());
  ASSERT_EQ(faults.size(), 1U);
  EXPECT_EQ(faults[0].shown_by, (Lines{"patience 2", "in_order but /PSU#0"}));
}

TEST(Judge, LooksForAFileBehindACommandThatWasKilledItself) {
  sweep::Course course = course_of(
      {.what = "", .status = 1, .shown = {}, .left = {"the file /tmp/my list.21750 is left"}, .gave_up = true});
  EXPECT_EQ(sweep::faults_of(course, good_play()).at(0).shown_by, (Lines{"patience 2", "in_order"}));
  course.was_killed = true;
  EXPECT_EQ(sweep::faults_of(course, good_play()).at(0).shown_by,
            (Lines{"start sh -c \"! ls /tmp/my?list.*\"", "exit 0"}));
}

TEST(Judge, HoldsNoEntryAgainstWhatAUnitBecameLater) {
  sweep::Course course =
      course_of({.what = "", .status = 129, .logged = {"place left empty          /PSU#0"}, .signals = {SIGHUP}});
  EXPECT_TRUE(faults_in(course).starts_with("the log says \"place left empty"));
  course.logged_at = 1;
  EXPECT_EQ(faults_in(course), "") << "it was put in behind this entry";
  course.end.logged = kReplaced;
  course.missing = {"/PSU#0"};
  EXPECT_TRUE(faults_in(course).starts_with("the log says \"unit replaced"))
      << "it was saved before the unit was pulled";
}

TEST(Judge, AsksTheLogWhereTheLineIsCut) {
  sweep::Course course =
      course_of({.what = "", .status = 129, .left = {"/PSU#0 is detached"}, .fault = "", .signals = {SIGHUP}});
  course.line_cut = true;
  EXPECT_NE(faults_in(course), "");
  for (const char *of_another : {"unit left out of operation            /PSU#01", "unit replaced            /PSU#0"}) {
    course.end.logged = {of_another};
    EXPECT_NE(faults_in(course), "") << of_another;
  }
  course.end.logged = {"unit left out of operation            /PSU#0"};
  EXPECT_EQ(faults_in(course), "");
  course.end.left = {"the LED of /PSU#0 blinks"};
  EXPECT_NE(faults_in(course), "") << "the entry is not about its LED";
}

TEST(Judge, FindsWhatDoesNotEnd) {
  sweep::Course course = course_of({.what = "", .status = 0, .shown = {}, .fault = ""});
  course.end.ending.reset();
  EXPECT_EQ(faults_in(course), "the command did not end in time\n");
}

TEST(Judge, HoldsTheChecksOfThePlayAgainstExitStatusZeroAlone) {
  sweep::Course course = course_of({.what = "", .status = 0, .shown = {}, .logged = kReplaced, .fault = ""});
  course.failed_check = "says \"Normal\": spbox said something else";
  EXPECT_EQ(faults_in(course),
            "exit status 0, but the server is not as the play wants it: says \"Normal\": spbox said something else\n");
  course.end.ending = terminal::Ending{false, 2};
  course.gave_up = true;
  EXPECT_EQ(faults_in(course), "");
}

}  // namespace
