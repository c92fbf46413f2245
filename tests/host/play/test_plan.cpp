#include <gtest/gtest.h>

#include "tests/host/play/play_test.h"

namespace {

using PlanTest = PlayTest;

struct PlanRow {
  const char *says;
  const char *line;
  const char *wrong;
};

constexpr PlanRow kPlans[] = {
    {"a step must be known", "jump high",
     "there is no step \"jump\"; there are box, terminal, resize, operator, play, start, wait, absent, take, type, "
     "screen, "
     "exit, dies, "
     "signal, hangup, hands, handsdone, spbox, says, takesaid, in_order, patience, pause and say"},
    {"a step without its words", "wait", "write it as: wait [like] \"text\""},
    {"another word than like before the text", "wait for \"this\"", R"(write it as: like "REGEX")"},
    {"a regular expression that is none", "wait like \"(a\"", R"("(a" is no regular expression: Unmatched ( or \()"},
    {"a regular expression that fits everywhere", "says not like \"a*\"",
     "\"a*\" fits an empty line, and so fits everywhere"},
    {"a regular expression that refers back, which could take for ever", R"(wait like "(x+)+\\1y")",
     R"("(x+)+\1y" refers back to a group: look for the text itself)"},
    {"a regular expression that could take minutes", R"(wait like "((x?y){40}z){1,30}")",
     R"("((x?y){40}z){1,30}" is too large: it has more than 1000 characters, its repetitions written out)"},
    {"and one whose number is beyond all numbers", R"(take A "a{1,99999999999999999999}")",
     R"("a{1,99999999999999999999}" is too large: it has more than 1000 characters, its repetitions written out)"},
    {"a large one whose brackets nobody closed", R"(take A "x{999}yy[[:alpha")",
     R"("x{999}yy[[:alpha" is too large: it has more than 1000 characters, its repetitions written out)"},
    {"and a group that nobody opened", R"(take A "x)y{1000}")",
     R"("x)y{1000}" is too large: it has more than 1000 characters, its repetitions written out)"},
    {"a name of an operator that is none", "operator \"anna b\"",
     "\"anna b\" is no name of an operator: letters and digits"},
    {"a name of a value that is none", "take 3 \"a\"", "\"3\" is no name"},
    {"a blank regular expression", "take A \" \"", "the text is empty"},
    {"a step with one word too many", "hangup now", "write it as: hangup"},
    {"an unknown model", "box qz", "there is no model \"qz\"; the models are qa, qb1, qb2, qe1, qe2 or qe3"},
    {"a terminal without a row", "terminal 0 80", "a terminal has at least one row and two columns"},
    {"a window without a row", "resize 0 80", "a terminal has at least one row and two columns"},
    {"a terminal of one column", "terminal 24 1", "a terminal has at least one row and two columns"},
    {"and a size that a person could see", "terminal 24 8000",
     "\"8000\" is not a number of columns: a number from 0 to 500"},
    {"an exit status that is no number", "exit soon", "\"soon\" is not an exit status: a number from 0 to 255"},
    {"an exit status of more than one byte", "exit 256", "\"256\" is not an exit status: a number from 0 to 255"},
    {"an unknown signal", "dies OFTEN", "there is no signal \"OFTEN\"; give a name such as TERM, or a number"},
    {"signal 0", "signal 0", "there is no signal \"0\"; give a name such as TERM, or a number"},
    {"an unknown step of a technician", "hands \"juggle /PSU#3\"",
     "step 1: `juggle /PSU#3`: there is no step \"juggle\"; there are after, when led, when flag, when detached, when "
     "mode, when trace, when text, pull, insert, fault, degrade, repair and flicker"},
    {"an unknown verb of spbox", "spbox paint /PSU#3",
     "\"paint\" is not a verb that works on a box; those are pull, show"},
    {"a zero byte in a word of a verb", R"(spbox pull "/PSU#0\000")", "a word of a command has no zero byte in it"},
    {"a zero byte in a word of a command", R"(start "ls\000")", "a word of a command has no zero byte in it"},
    {"another word than not before the text", "says never \"this\"", R"(write it as: says [not] [like] "text")"},
    {"an empty text to be said", "says \"\"", "the text is empty"},
    {"a blank text not to be said", "says not \" \"", "the text is empty"},
    {"no unit after but", "in_order but", "write it as: in_order but /PSU#3"},
    {"a unit without but", "in_order /PSU#3", "write it as: in_order but /PSU#3"},
    {"patience that is no number", "patience long",
     "\"long\" is not a number of seconds from 0 to 86400; write 3 or 0.5"},
    {"a negative pause", "pause -1", "\"-1\" is not a number of seconds from 0 to 86400; write 3 or 0.5"},
    {"a blank text to wait for", "wait \" \"", "the text is empty"},
    {"a value whose name begins with a digit", "play inner.play 3=4", "\"3=4\" gives no value: write NAME=VALUE"},
    {"a name has a value", "say \"$WHO\"", "nobody gave $WHO a value; $$ is a dollar"},
    {"a dollar is written twice", "say \"5 $\"", "a $ stands before a name; $$ is a dollar"},
};

TEST_F(PlanTest, TellsWhatIsWrongWithAStep) {
  for (const PlanRow &row : kPlans) {
    EXPECT_EQ(wrong_with(std::string("# a walk\n") + row.line + "\n"),
              std::string("walk.play:2: `") + row.line + "`: " + row.wrong)
        << row.says;
  }
}

TEST_F(PlanTest, TakesEveryStepAsItsHelpWritesIt) {
  const auto steps = read(
      "box qe2\nterminal 50 132\nstart ls -l\nresize 20 80\nwait \"text\"\nabsent \"text\"\ntype \"3\\n\"\nscreen "
      "\"caption\"\nexit "
      "255\n"
      "dies SIGHUP\nsignal SIGINT\nsignal 9\n"
      "hangup\nhands \"pull /PSU#3\"\nhandsdone\nspbox pull /PSU#3\nsays \"x\"\nsays not \"x\"\nin_order\n"
      "in_order but /PSU#3 /PSU#4\npatience 0.5\npause 0\nsay \"text\"\n"
      "wait like \"t.xt\"\nabsent like \"t.xt\"\ntake A \"([0-9]+)\"\nsays like \"x\"\nsays not like \"x\"\n"
      "takesaid A \"([0-9]+)\"\noperator\noperator anna\n# and that is all\n");
  EXPECT_EQ(steps.size(), 31U);
}

TEST_F(PlanTest, ReadsAllBeforeAnythingIsPlayed) {
  write("inner.play", "exit 0\njump\n");
  EXPECT_EQ(error_of("start touch " + path("done") + "\nexit 0\nplay inner.play\n").substr(0, 12), "inner.play:2");
  EXPECT_FALSE(std::filesystem::exists(path("done")));
}

TEST_F(PlanTest, PutsAScriptInThePlaceOfItsStep) {
  std::filesystem::create_directory(path("parts"));
  write("parts/inner.play", "say \"two\"\nplay last.play\n");
  write("parts/last.play", "say \"three\"\n");
  const auto steps = read("say \"one\"\nplay parts/inner.play\nsay \"four\"\n");
  ASSERT_EQ(steps.size(), 4U);
  const char *words[] = {"one", "two", "three", "four"};
  for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(steps[i].words[0], words[i]);
  EXPECT_EQ(without_folder(steps[2].place), "parts/last.play:1");
  EXPECT_EQ(without_folder(steps[2].via), "\n  played from parts/inner.play:2\n  played from walk.play:2");
}

TEST_F(PlanTest, GivesAScriptTheValuesOfItsStepAndNoOthers) {
  write("inner.play", "say \"$UNIT and $B_2, for $$5\"\n");
  const auto steps = read("play inner.play UNIT=$X/PSU#3 B_2=a=b\n", {{"X", "/CMU#0"}});
  EXPECT_EQ(steps[0].words[0], "/CMU#0/PSU#3 and a=b, for $5");
  EXPECT_EQ(wrong_with("play inner.play UNIT=3\n", {{"B_2", "of the outer one"}}),
            "inner.play:1: `say \"$UNIT and $B_2, for $$5\"`: nobody gave $B_2 a value; $$ is a dollar\n"
            "  played from walk.play:1");
}

TEST_F(PlanTest, GivesEachScriptItsFolder) {
  std::filesystem::create_directory(path("parts"));
  write("parts/inner.play", "say \"$HERE/x\"\n");
  const auto steps = read("say $HERE\nplay parts/inner.play\nplay parts/inner.play HERE=mine\n");
  EXPECT_EQ(steps[0].words[0], scratch_.path());
  EXPECT_EQ(steps[1].words[0], path("parts/x"));
  EXPECT_EQ(steps[2].words[0], "mine/x");
}

TEST_F(PlanTest, KnowsWhatIsTakenBehindTheStepThatTakesIt) {
  write("inner.play", "say $B\ntake C \"x\"\n");
  const std::string begin = "start true\nspbox show /PSU#3\n";
  EXPECT_EQ(wrong_with(begin + "take A \"x\"\nsay $A\nplay inner.play B=<$A>\nspbox pull $A\nhands \"pull $A\"\n"),
            "nothing");
  const auto refused = [&](const std::string &steps) {
    const auto wrong = wrong_with(begin + steps);
    return wrong.substr(0, wrong.find('\n'));
  };
  EXPECT_EQ(refused("say $A\ntake A \"x\"\n"), "walk.play:3: `say $A`: nobody gave $A a value; $$ is a dollar");
  EXPECT_EQ(refused("play inner.play B=3\nsay $C\n"), "walk.play:4: `say $C`: nobody gave $C a value; $$ is a dollar");
  EXPECT_EQ(refused("take A \"x\"\nplay $A\n"),
            "walk.play:4: `play $A`: the script has to be known before the first step");
  EXPECT_EQ(refused("takesaid A \"x\"\nspbox $A /PSU#3\n"),
            "walk.play:4: `spbox $A /PSU#3`: the verb has to be known before the first step");
  EXPECT_EQ(refused("take A \"x\"\nplay inner.play $A=3\n"),
            "walk.play:4: `play inner.play $A=3`: \"\" gives no value: write NAME=VALUE");
}

TEST_F(PlanTest, NamesTheScriptThatIsNotThereAndWhoWantedIt) {
  EXPECT_EQ(wrong_with("play nowhere.play"), "nowhere.play: there is no such file\n  played from walk.play:1");
  std::filesystem::create_directory(path("folder"));
  EXPECT_EQ(wrong_with("play folder"), "folder: this is a folder, not a file\n  played from walk.play:1");
}

TEST_F(PlanTest, NamesWhoPlaysAScriptThatCannotBeRead) {
  write("inner.play", "say \"open\n");
  EXPECT_EQ(wrong_with("play inner.play"),
            "inner.play:1: `say \"open`: the closing \" is missing\n  played from walk.play:1");
}

TEST_F(PlanTest, AScriptThatPlaysItselfIsAnError) {
  const auto wrong = wrong_with("play walk.play\n");
  EXPECT_EQ(wrong.substr(0, wrong.find('\n')),
            "walk.play:1: `play walk.play`: more than 16 scripts play one another. Does one play itself?");
}

TEST_F(PlanTest, NamesAUnitThatTheServerDoesNotHave) {
  EXPECT_EQ(wrong_with("box qa\nin_order but /PSU#0 PSU#99\n"),
            "walk.play:2: `in_order but /PSU#0 PSU#99`: a server of model qa has no unit /PSU#99");
  EXPECT_EQ(wrong_with("box qe1\nstart true\nin_order but /PSU#40\n"), "nothing");
  EXPECT_EQ(wrong_with("box qa\nspbox pull /PSU#0 PSU#99\n"),
            "walk.play:2: `spbox pull /PSU#0 PSU#99`: a server of model qa has no unit /PSU#99");
  EXPECT_EQ(wrong_with("box qa\nhands \"after 1; when flag /PSU#99 start\"\n"),
            "walk.play:2: `hands \"after 1; when flag /PSU#99 start\"`: step 2: `when flag /PSU#99 start`: a server of "
            "model qa "
            "has no unit /PSU#99");
  EXPECT_EQ(
      wrong_with(
          "box qe1\nhands \"pull PSU#40; flicker /PSU#41 2 1; when led /IOX@1 on; when mode lock\"\n"
          "hands \"fault /FAN_A#0/FAN#1; when text /PSU#99 x\"\nspbox show /PSU#99\nspbox pull -- /FAN_A#0/FAN#1\n"),
      "nothing");
}

TEST_F(PlanTest, APlayHasOneBox) {
  EXPECT_EQ(wrong_with("box qe2\nbox qe1\n"), "walk.play:2: `box qe1`: a play has one box");
  for (const char *step : {"start true", "hands \"pull /PSU#3\"", "spbox show /PSU#3", "in_order"}) {
    EXPECT_EQ(wrong_with(step + std::string("\nbox qe1\n")),
              "walk.play:2: `box qe1`: the steps before it have worked on a box already")
        << step;
  }
  EXPECT_EQ(wrong_with("terminal 50 132\nsay \"begin\"\nbox qe1\n"), "nothing");
}

TEST_F(PlanTest, ChecksThatAStepHasWhatItNeeds) {
  constexpr const char *kNoCommand = "`: no command was started on the terminal";
  for (const char *step : {"wait \"x\"", "absent \"x\"", "type \"x\"", "screen \"x\"", "exit 0", "dies 1", "signal INT",
                           "hangup", "resize 24 80", "in_order"}) {
    const std::string line = step + std::string("\n");
    EXPECT_EQ(wrong_with("say \"on\"\n" + line), std::string("walk.play:2: `") + step + kNoCommand);
    EXPECT_EQ(wrong_with("start true\nexit 0\nterminal 24 80\n" + line),
              std::string("walk.play:4: `") + step + kNoCommand);
    EXPECT_EQ(wrong_with("start true\n" + line), "nothing");
  }
  EXPECT_EQ(wrong_with("says \"x\"\nspbox show /PSU#0\n"),
            "walk.play:1: `says \"x\"`: no step `spbox` comes before it");
}

}  // namespace
