#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>

#include "tests/host/play/play_test.h"

namespace {

using namespace std::chrono_literals;
using PlayerTest = PlayTest;

TEST_F(PlayerTest, PrintsTheScreenThatTheOperatorSees) {
  EXPECT_EQ(play("start sh -c \"echo Which?; read n; echo you said $$n\"\n"
                 "wait \"Which?\"\n"
                 "type \"3\\n\"\n"
                 "wait \"you said\"\n"
                 "screen \"the answer\"\n"
                 "exit 0\n"),
            "The operator starts: sh -c echo Which?; read n; echo you said $n\n"
            "\n"
            "The operator types: \"3\", Enter\n"
            "\n"
            "+-- the answer ---------------------------------------------------------------\n"
            "| Which?\n"
            "| 3\n"
            "| you said 3\n"
            "+-----------------------------------------------------------------------------\n"
            "\n"
            "The command ends with exit status 0.\n"
            "\n");
}

TEST_F(PlayerTest, LetsTheTechnicianWorkOnTheBox) {
  EXPECT_EQ(play("spbox pull /PSU#3"),
            "The technician: spbox pull /PSU#3\n"
            "    asked: pull /PSU#3\n"
            "\n");
}

TEST_F(PlayerTest, PrintsTheScriptsOwnWords) {
  EXPECT_EQ(play("say \"Now the list.\""), "Now the list.\n\n");
}

TEST_F(PlayerTest, ShowsWhatATerminalWouldObey) {
  EXPECT_EQ(play("say \"a\\e[2J\\x9b\\nb\""), "a\\x1b[2J\\x9b\nb\n\n");
  EXPECT_EQ(play("spbox pull \"/\\e[2J\""), "The technician: spbox pull /\\x1b[2J\n    asked: pull /\\x1b[2J\n\n");
  const auto screen = play("start true\nexit 0\nscreen \"a\\e\\nb\"");
  EXPECT_NE(screen.find("+-- a\\x1b\\x0ab ---"), std::string::npos) << screen;
  EXPECT_NE(picture_.svg().find(">a\\x1b\\x0ab</text>"), std::string::npos);
}

TEST_F(PlayerTest, MakesABoxOfTheModel) {
  EXPECT_EQ(play("box qe2"), "A box of model qe2.\n\n");
  EXPECT_TRUE(std::filesystem::exists(path("box")));
}

TEST_F(PlayerTest, TakesABoxThatIsThereIfItIsOfTheModel) {
  make_box("qa");
  EXPECT_EQ(play("box qa"), "A box of model qa.\n\n");
  EXPECT_EQ(error_of("box qe2"),
            "walk.play:1: `box qe2`: box is a box of model qa. Give one of model qe2, or a folder that does not exist "
            "yet.\n");
}

TEST_F(PlayerTest, ShowsTheScreenWhenATextDoesNotComeUp) {
  EXPECT_EQ(error_of("\nstart echo hello\nwait \"Which?\"\n"),
            "walk.play:3: `wait \"Which?\"`: \"Which?\" did not come up. The command has ended with exit status 0.\n"
            "+-- the screen ---------------------------------------------------------------\n"
            "| hello\n"
            "+-----------------------------------------------------------------------------\n");
}

TEST_F(PlayerTest, NamesTheScriptAndTheOnesThatPlayIt) {
  write("inner.play", "start echo hello\nwait \"$WHAT\"\n");
  const auto error = error_of("say \"on\"\nplay inner.play WHAT=Which?\n");
  EXPECT_EQ(error.substr(0, error.find("+--")),
            "inner.play:2: `wait \"$WHAT\"`: \"Which?\" did not come up. The command has ended with exit status 0.\n"
            "  played from walk.play:2\n");
}

TEST_F(PlayerTest, QuotesTheBeginningOfALongStep) {
  EXPECT_EQ(reason_of("absent \"" + std::string(300, 'x') + "\"\n"),
            "walk.play:1: `absent \"" + std::string(192, 'x') + "...`: no command was started on the terminal");
}

// The command asks twice in the same words, and the answer to the first question takes its time.
constexpr const char *kAsksTwice =
    "start sh -c \"echo Sure?; read a; sleep 0.3; echo Sure?; read b; echo $$a$$b\"\n"
    "wait \"Sure?\"\n"
    "type \"1\\n\"\n";

TEST_F(PlayerTest, DoesNotTakeAnOldQuestionForANewOne) {
  const auto told = play(std::string(kAsksTwice) + "wait \"Sure?\"\nscreen \"asked again\"\ntype \"2\\n\"\nexit 0\n");
  EXPECT_NE(told.find("| Sure?\n| 1\n| Sure?\n+"), std::string::npos) << told;
}

TEST_F(PlayerTest, SaysThatWhatItSeesIsOld) {
  EXPECT_EQ(
      reason_of("start sh -c \"echo Sure?; read a; sleep 9\"\nwait \"Sure?\"\ntype \"1\\n\"\npatience 0.1\n"
                "wait \"Sure?\"\n"),
      "walk.play:5: `wait \"Sure?\"`: \"Sure?\" did not come up in 0.1 s; what the screen shows of it is older than "
      "the last keys.");
}

TEST_F(PlayerTest, WaitsForWhatTheNextCommandPrints) {
  EXPECT_EQ(
      reason_of("start echo ready\nwait \"ready\"\nexit 0\nstart true\nwait \"ready\"\n"),
      "walk.play:5: `wait \"ready\"`: \"ready\" did not come up; what the screen shows of it is older than the last "
      "keys. The command has ended with exit status 0.");
}

TEST_F(PlayerTest, SeesThatATextIsAbsent) {
  EXPECT_EQ(reason_of("start echo hello\nexit 0\nabsent \"bye\"\n"), "no error");
  EXPECT_EQ(reason_of("start echo hello\nexit 0\nabsent \"ell\"\n"),
            "walk.play:3: `absent \"ell\"`: the screen shows it.");
}

TEST_F(PlayerTest, IsPatientAsLongAsItIsTold) {
  EXPECT_EQ(reason_of("patience 0\nstart sleep 30\nwait \"Which?\"\n"),
            "walk.play:3: `wait \"Which?\"`: \"Which?\" did not come up in 0 s.");
  EXPECT_EQ(reason_of("patience 0.1\nstart sleep 30\nexit 0\n"),
            "walk.play:3: `exit 0`: the command did not end in 0.1 s.");
}

TEST_F(PlayerTest, IsNoMorePatientWithSpboxAndWithTechnicians) {
  EXPECT_EQ(reason_of("patience 0.1\nspbox show /PSU#98\n"),
            "walk.play:2: `spbox show /PSU#98`: it was not done in 0.1 s, and is ended.");
  EXPECT_EQ(reason_of("patience 0.1\nhands \"pull /mute\"\n"),
            "walk.play:2: `hands \"pull /mute\"`: the technician did not come in 0.1 s.");
}

TEST_F(PlayerTest, ChecksHowTheCommandEnds) {
  EXPECT_EQ(reason_of("start sh -c \"exit 4\"\nexit 0\n"),
            "walk.play:2: `exit 0`: the command ended with exit status 4.");
  EXPECT_EQ(reason_of("start sh -c \"exit 4\"\nexit 4\n"), "no error");
}

TEST_F(PlayerTest, ChecksWhatTheCommandDiesOf) {
  EXPECT_EQ(reason_of("start sh -c \"exit 130\"\ndies INT\n"), "no error");        // as a shell tells it, and spbox
  EXPECT_EQ(reason_of("start sh -c \"kill -INT $$$$\"\ndies INT\n"), "no error");  // spbox itself, on its way
  EXPECT_EQ(reason_of("start sh -c \"exit 143\"\ndies INT\n"),
            "walk.play:2: `dies INT`: the command ended with exit status 143.");
}

TEST_F(PlayerTest, StartsOneCommandAtATime) {
  EXPECT_EQ(reason_of("start sleep 30\nstart true\n"), "walk.play:2: `start true`: the command before still runs");
  EXPECT_EQ(reason_of("start true\nexit 0\nstart true\nexit 0\n"), "no error");
}

TEST_F(PlayerTest, TypesForACommandThatRuns) {
  EXPECT_EQ(reason_of("start true\nexit 0\ntype \"x\"\n"),
            "walk.play:3: `type \"x\"`: no command runs that would read it.");
}

TEST_F(PlayerTest, GivesTheNextCommandATerminalOfThisSize) {
  EXPECT_EQ(reason_of("terminal 50 132\nstart stty size\nwait \"50 132\"\nexit 0\n"), "no error");
  EXPECT_EQ(reason_of("start sleep 30\nterminal 50 132\n"),
            "walk.play:2: `terminal 50 132`: a command runs on the terminal: wait for its end first");
}

TEST_F(PlayerTest, ChangesTheSizeOfTheWindowOfACommandThatRuns) {
  const std::string hears =
      "start sh -c \"trap 'stty size' WINCH; echo up; while :; do sleep 0.05; done\"\nwait \"up\"\nresize 20 100\n";
  EXPECT_EQ(reason_of(hears + "wait \"20 100\"\ntype \"\\003\"\ndies INT\nstart stty size\nwait \"20 100\"\nexit 0\n"),
            "no error");
  EXPECT_EQ(reason_of(hears + "hangup\nresize 24 80\n"), "walk.play:5: `resize 24 80`: the operator's line was cut");
}

TEST_F(PlayerTest, CutsTheLine) {
  const std::string hears =
      "start sh -c \"trap 'exit 3' HUP; echo up; while :; do sleep 0.05; done\"\nwait \"up\"\nhangup\n";
  EXPECT_EQ(reason_of(hears + "exit 3\nstart echo again\nwait \"again\"\nexit 0\n"), "no error");
  EXPECT_EQ(reason_of(hears + "type \"x\"\n"), "walk.play:4: `type \"x\"`: the operator's line was cut");
}

// Without a command, and beside one whose news would wake a wait.
TEST_F(PlayerTest, PausesAsLongAsItIsTold) {
  const auto lasts = [&](const std::string &text) {
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(reason_of(text + "pause 0.3\n"), "no error");
    return std::chrono::steady_clock::now() - begin;
  };
  EXPECT_GE(lasts(""), 300ms);
  EXPECT_GE(lasts("start sh -c \"while echo news; do sleep 0.01; done\"\nwait \"news\"\n"), 300ms);
}

TEST_F(PlayerTest, StopsWhereTheTechnicianIsRefused) {
  EXPECT_EQ(error_of("spbox show /PSU#99"),
            "walk.play:1: `spbox show /PSU#99`: it ended with exit status 1:\n    Model qe2\n");
}

TEST_F(PlayerTest, ChecksWhatSpboxSays) {
  EXPECT_EQ(reason_of("spbox show /PSU#3\nsays \"qe2\"\nsays not \"qe1\"\n"), "no error");
  EXPECT_EQ(error_of("spbox show /PSU#3\nsays \"qe1\"\n"),
            "walk.play:2: `says \"qe1\"`: spbox said something else:\n    Model qe2\n");
  EXPECT_EQ(error_of("spbox show /PSU#3\nsays not \"qe2\"\n"),
            "walk.play:2: `says not \"qe2\"`: spbox said it:\n    Model qe2\n");
}

TEST_F(PlayerTest, WaitsForALineLikeTheOneThatIsWanted) {
  const std::string begin = "start sh -c \"echo unit 13 of 40; read n; echo bye\"\n";
  const std::string end = "absent like \"^bye\"\ntype \"\\n\"\nwait like \"^b.e$$\"\nexit 0\n";
  EXPECT_EQ(error_of(begin + "wait like \"unit [0-9]+ of (40|41)$$\"\n" + end), "no error");
  EXPECT_EQ(reason_of("patience 0.1\n" + begin + "wait like \"unit [a-z]+\"\n"),
            "walk.play:3: `wait like \"unit [a-z]+\"`: a line like \"unit [a-z]+\" did not come up in 0.1 s.");
  EXPECT_EQ(reason_of(begin + "wait \"unit\"\nabsent like \"^[a-z]+ 13\"\n"),
            "walk.play:3: `absent like \"^[a-z]+ 13\"`: the screen shows it.");
  EXPECT_EQ(
      reason_of("patience 0.1\n" + begin + "wait \"unit\"\ntype \"x\"\nwait like \"u..t\"\n"),
      "walk.play:5: `wait like \"u..t\"`: a line like \"u..t\" did not come up in 0.1 s; what the screen shows of it "
      "is older than the last keys.");
  EXPECT_EQ(error_of("spbox show /PSU#3\nsays like \"^Model (qa|qe2)$$\"\nsays not like \"^qe2\"\n"), "no error");
  EXPECT_EQ(reason_of("spbox show /PSU#3\nsays like \"^qe2\"\n"),
            "walk.play:2: `says like \"^qe2\"`: spbox said something else:");
}

TEST_F(PlayerTest, TakesValuesForLaterSteps) {
  const auto told = play(
      "spbox show /PSU#3\ntakesaid MODEL \"^Model (.*)\"\n"
      "start sh -c \"echo number 4711 of $MODEL; read n; echo you said $$n; read x\"\n"
      "take N \"number ([0-9]+) \"\ntype \"$N+\\n\"\nwait \"you said $N+\"\ntake N \"s.id\"\nspbox pull $N\n");
  EXPECT_NE(told.find("$MODEL is: qe2\n"), std::string::npos) << told;
  EXPECT_NE(told.find("The operator types: \"4711+\", Enter\n"), std::string::npos) << told;
  EXPECT_NE(told.find("    asked: pull said\n"), std::string::npos) << told;
  EXPECT_EQ(reason_of("spbox show /PSU#3\ntakesaid A \"qe3\"\n"),
            "walk.play:2: `takesaid A \"qe3\"`: spbox said something else:");
}

// What a value makes of a step is judged before it is played.
TEST_F(PlayerTest, RefusesAStepThatMakesNoSenseWithAValue) {
  EXPECT_EQ(reason_of("spbox show /PSU#3\ntakesaid A \"Model\"\npause $A\n"),
            "walk.play:3: `pause $A`: \"Model\" is not a number of seconds from 0 to 86400; write 3 or 0.5");
}

TEST_F(PlayerTest, LetsOperatorsWorkAtTheSameTime) {
  make_box("qa");
  const auto told = play(
      "start sh -c \"echo the first; read x\"\nwait \"the first\"\n"
      "operator anna\nstart sh -c \"echo I am anna; read x; echo you said $$x; exit 3\"\nwait \"I am anna\"\n"
      "absent \"the first\"\noperator\ntype \"\\n\"\nexit 0\n"
      "operator anna\ntype \"3\\n\"\nwait \"you said 3\"\nscreen \"her answer\"\nexit 3\n");
  for (const char *part :
       {"The operator starts: sh -c echo the first; read x\n", "Operator anna starts: sh -c echo I am anna;",
        "The command ends with exit status 0.\n", "Operator anna types: \"3\", Enter\n", "+-- anna: her answer ---",
        "The command of anna ends with exit status 3.\n"}) {
    EXPECT_NE(told.find(part), std::string::npos) << part << "\n" << told;
  }
  EXPECT_NE(picture_.svg().find(">anna: her answer</text>"), std::string::npos);
}

TEST_F(PlayerTest, ShowsTheScreensOfAllOperatorsWhenOneFails) {
  make_box("qa");
  const auto error = error_of(
      "operator bob\nstart sh -c \"echo one; read x\"\nwait \"one\"\n"
      "operator anna\npatience 0.2\nstart sh -c \"echo two; read x\"\nwait \"three\"\n");
  EXPECT_TRUE(
      error.starts_with("walk.play:7: `wait \"three\"`: anna: \"three\" did not come up in 0.2 s.\n"
                        "+-- the screen of anna ---"))
      << error;
  EXPECT_NE(error.find("| two\n"), std::string::npos) << error;
  EXPECT_NE(error.find("+-- the screen of bob ---"), std::string::npos) << error;
  EXPECT_NE(error.find("| one\n"), std::string::npos) << error;
}

// A terminal that nobody looks at holds some text, and then its command cannot write on.
TEST_F(PlayerTest, TakesInWhatTheCommandOfAnotherOperatorWrites) {
  make_box("qa");
  EXPECT_EQ(error_of("start sh -c \"seq 20000; echo x >" + path("written") + "; read x\"\noperator anna\n" +
                     "start sh -c \"until test -e " + path("written") + "; do sleep 0.02; done; echo seen\"\n" +
                     "wait \"seen\"\nexit 0\noperator\ntype \"\\n\"\nexit 0\n"),
            "no error");
}

TEST_F(PlayerTest, LetsATechnicianWorkBesideTheOperator) {
  EXPECT_EQ(play("hands \"pull /insert\"\nstart touch " + path("insert") + "\nexit 0\nhandsdone\nsay \"on\"\n"),
            "A technician works beside the operator: pull /insert\n"
            "\n"
            "The operator starts: touch insert\n"
            "\n"
            "The command ends with exit status 0.\n"
            "\n"
            "The technician is done: pull /insert\n"
            "    worked: insert\n"
            "\n"
            "on\n"
            "\n");
}

TEST_F(PlayerTest, WaitsForTheTechnicianAtTheEnd) {
  const auto told = play("hands \"pull /insert\"\nstart touch " + path("insert") + "\nexit 0\n");
  EXPECT_TRUE(told.ends_with("    worked: insert\n\n")) << told;
}

TEST_F(PlayerTest, FailsWithTheTechnician) {
  EXPECT_EQ(error_of("hands \"pull /fail\"\nstart touch " + path("fail") + "\nexit 0\n"),
            "walk.play:1: `hands \"pull /fail\"`: the technician gave up.\n"
            "+-- the screen ---------------------------------------------------------------\n"
            "+-----------------------------------------------------------------------------\n"
            "The technician of walk.play:1 until then:\n"
            "    worked: fail\n");
  EXPECT_EQ(reason_of("hands \"pull /late\"\nsay \"on\"\n"),
            "walk.play:1: `hands \"pull /late\"`: the technician gave up.");
  EXPECT_EQ(reason_of("hands \"pull /never\"\npatience 0.1\nhandsdone\n"),
            "walk.play:1: `hands \"pull /never\"`: the technician's work was not done 0.1 s after it was asked for.");
}

TEST_F(PlayerTest, TellsOfTheTechnicianWhenTheOperatorFails) {
  const auto error = error_of("hands \"pull /never\"\nstart true\nexit 1\n");
  EXPECT_TRUE(error.ends_with("The technician of walk.play:1 until then:\n    nothing\n")) << error;
}

TEST_F(PlayerTest, LeavesNoCommandBehind) {
  const std::string deaf = "trap '' TERM; echo $$$$ >" + path("pid") + "; echo up; while :; do sleep 0.05; done";
  EXPECT_EQ(reason_of("start sh -c \"" + deaf + "\"\nwait \"up\"\n"), "no error");
  pid_t process = 0;
  std::ifstream(path("pid")) >> process;
  ASSERT_GT(process, 0);
  EXPECT_EQ(kill(process, 0), -1) << "process " << process << " still runs";
}

}  // namespace
