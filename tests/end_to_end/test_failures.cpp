// What fails in a box: control programs, the pager, the database, the model. Each failure gives its result, tells the operator
// what to do, and leaves nothing behind.

#include <csignal>
#include <fstream>

#include "tests/end_to_end/box_test.h"

namespace end_to_end {
namespace {

using terminal::Ending;

class Programs : public BoxTest {
 protected:
  void SetUp() override { make_box("qa"); }
};

TEST_F(Programs, GiveTheirExitStatus) {
  EXPECT_EQ(call({"exec", "5", "10", "-u /PSU#0 -c on"}), "result 0\n");
  EXPECT_EQ(led("/PSU#0"), "on");
  bend("ctlled", {"--exit", "77"});
  EXPECT_EQ(call({"exec", "5", "10", "-u /PSU#0 -c off"}), "result 77\n");
  EXPECT_EQ(led("/PSU#0"), "on");
  bend("ctlled", {"--exit", "128"});
  EXPECT_EQ(call({"led", "0", "10", "/PSU#0"}), "result 206\n");
}

TEST_F(Programs, MayTakeAsLongAsTheirLimit) {
  bend("ctlled", {"--delay", "1"});
  EXPECT_EQ(call({"led", "1", "5", "/PSU#0"}), "result 0\n");
  EXPECT_EQ(led("/PSU#0"), "on");
}

TEST_F(Programs, AreStoppedWhenTheirTimeIsSpent) {
  bend("ctlled", {"--delay", "20"});
  EXPECT_EQ(call({"exec", "5", "1", "-u /PSU#0 -c on"}), "result 127\n");
  EXPECT_EQ(led("/PSU#0"), "off");
  expect_nothing_left();
}

TEST_F(Programs, ThatIgnoreSigtermAreKilled) {
  bend("ctlmainte", {"--hang", "--ignore-term"});
  start({CALL, "mainte", "1", "1"});
  EXPECT_FALSE(sees("result", seconds{10}));
  EXPECT_TRUE(terminal_.process("ctlmainte"));
  ASSERT_TRUE(sees("result 8", seconds{10}));
  EXPECT_EQ(ending(), (Ending{false, 0}));
  expect_nothing_left();
}

TEST_F(Programs, ThatDieByASignalDidNotRun) {
  bend("ctlled", {"--die", "9"});
  EXPECT_EQ(call({"exec", "5", "10", "-u /PSU#0 -c on"}), "result 127\n");
  EXPECT_EQ(call({"led", "1", "10", "/PSU#0"}), "result 8\n");
}

TEST_F(Programs, ThatAreMissingDidNotRun) {
  std::filesystem::remove(box() / "mgb/bin/ctlled");
  EXPECT_EQ(call({"exec", "5", "10", "-u /PSU#0 -c on"}), "result 127\n");
  EXPECT_EQ(call({"led", "1", "10", "/PSU#0"}), "result 8\n");
}

TEST_F(Programs, RefuseAUnitThatDoesNotExist) {
  EXPECT_EQ(call({"led", "1", "10", "/PSU#9"}), "result 206\n");
}

TEST_F(Programs, RefuseASecondMaintenanceMode) {
  EXPECT_EQ(call({"mainte", "1", "10"}), "result 0\n");
  EXPECT_EQ(call({"mainte", "1", "10"}), "result 128\n");
  EXPECT_EQ(call({"mainte", "0", "10"}), "result 0\n");
}

// A control program that does not do its part for the first unit of a kind.
struct Failure {
  const char *name;
  const char *program;
  Words bent;
  const char *command;
  std::vector<const char *> says;
  Words left{};  // what is not in order then
};

std::ostream &operator<<(std::ostream &out, const Failure &failure) {
  return out << failure.command << ", " << failure.program;
}

std::string name_of(const testing::TestParamInfo<Failure> &failure) {
  return failure.param.name;
}

class FailingProgram : public BoxTest, public testing::WithParamInterface<Failure> {
 protected:
  void choose_the_first() {
    start_procedure(GetParam().command);
    answers("Type its number", "1\n");
  }

  void expect_ending() {
    EXPECT_EQ(ending(), (Ending{false, 1}));
    for (const char *text : GetParam().says) EXPECT_TRUE(was_shown(text)) << text;
    expect_left(GetParam().left);
  }
};

class WalkFails : public FailingProgram {};

TEST_P(WalkFails, AndTakesBackWhatWasSwitched) {
  make_box("qa");
  set_time_limits(2);
  bend(GetParam().program, GetParam().bent);
  choose_the_first();
  expect_ending();
}

INSTANTIATE_TEST_SUITE_P(
    When, WalkFails,
    testing::Values(
        Failure{"TheUnitIsNotJudged",
                "judgectlfru",
                {"--die", "SEGV"},
                "replace_unit psu",
                {"/PSU#0 could not be judged (result 8).", "The control program is missing, failed or took too long"}},
        Failure{"TheFlagProgramCrashes",
                "setmainteflag",
                {"--die", "SEGV"},
                "replace_unit psu",
                {"/PSU#0 could not be marked (result 8).", "/PSU#0 may still have its maintenance flag (result 8).",
                 "Mend it with: /mgb/bin/setmainteflag -u /PSU#0 -c end"}},
        Failure{"TheLedProgramRefuses",
                "ctlled",
                {"--exit", "206"},
                "replace_unit psu",
                {"/PSU#0 could not be marked (result 206).", "The unit does not answer. Check that it is in place"}},
        Failure{"TheLedProgramHangs",
                "ctlled",
                {"--hang"},
                "replace_unit psu",
                {"/PSU#0 could not be marked (result 8).", "/PSU#0 may still have its LED blinking (result 8).",
                 "Mend it with: /mgb/bin/ctlled -u /PSU#0 -c off"}},
        Failure{"TheFansCannotBeMadeFaster",
                "ctlfan",
                {"--exit", "219"},
                "replace_unit fan",
                {"/FAN_A#0 could not be marked (result 219)."}},
        Failure{"TheServerKeepsTheUnit",
                "detachfru",
                {"--exit", "128"},
                "remove_unit psu",
                {"/PSU#0 is not out of operation (result 205).",
                 "The server still uses the unit: stop what runs on it, then start again."}},
        Failure{"TheUnitIsNotOutOfOperationInTime",
                "detachfru",
                {"--hang"},
                "replace_unit psu",
                {"/PSU#0 is not out of operation (result 8).", "/PSU#0 may be out of operation (result 8).",
                 "To test it and put it into operation: add_unit psu"}},
        Failure{"TheDetachingProgramIsDeaf",
                "detachfru",
                {"--hang", "--ignore-term"},
                "remove_unit psu",
                {"/PSU#0 is not out of operation (result 8).", "/PSU#0 may be out of operation (result 8).",
                 "To test it and put it into operation: add_unit psu"}}),
    name_of);

class TakingBackFails : public FailingProgram {};

TEST_P(TakingBackFails, AndIsNamedWithWhatMendsIt) {
  make_box("qa");
  choose_the_first();
  answers("Pull out ");
  bend(GetParam().program, GetParam().bent);
  types("q\n");
  expect_ending();
}

INSTANTIATE_TEST_SUITE_P(Of, TakingBackFails,
                         testing::Values(Failure{"TheFlag",
                                                 "setmainteflag",
                                                 {"--exit", "204"},
                                                 "replace_unit psu",
                                                 {"/PSU#0 may still have its maintenance flag (result 204).",
                                                  "Mend it with: /mgb/bin/setmainteflag -u /PSU#0 -c end"},
                                                 {"/PSU#0 is under maintenance"}},
                                         Failure{"TheLed",
                                                 "ctlled",
                                                 {"--exit", "206"},
                                                 "remove_unit psu",
                                                 {"/PSU#0 may still have its LED blinking (result 206).",
                                                  "Mend it with: /mgb/bin/ctlled -u /PSU#0 -c off"},
                                                 {"the LED of /PSU#0 blinks"}},
                                         Failure{"TheFans",
                                                 "ctlfan",
                                                 {"--exit", "219"},
                                                 "replace_unit fan",
                                                 {"/FAN_A#0 may have left the fans fast (result 219).",
                                                  "Mend it with: /mgb/bin/ctlfan -c low"},
                                                 {"the fans run at speed \"high\""}},
                                         Failure{"TheUnitsOperation",
                                                 "testfru",
                                                 {"--exit", "208"},
                                                 "replace_unit psu",
                                                 {"/PSU#0 is still out of operation (result 208).",
                                                  "To test it and put it into operation: add_unit psu"},
                                                 {"/PSU#0 is detached"}},
                                         Failure{"MaintenanceMode",
                                                 "ctlmainte",
                                                 {"--exit", "77"},
                                                 "replace_unit psu",
                                                 {"The server may still be in maintenance mode (result 8).",
                                                  "Mend it with: /mgb/bin/ctlmainte -c unlock"},
                                                 {"maintenance mode is on"}}),
                         name_of);

class Boards : public BoxTest {
 protected:
  void SetUp() override { make_box("qe1"); }
};

TEST_F(Boards, ThatKeepTheirLinkAreSaidToBeStillOutOfOperation) {
  bend("linkboard", {"--exit", "128"});
  start_procedure("remove_unit cmu");
  answers("Which CPU/memory unit", "1\n");
  answers("/CMU#0 is out of operation, and still linked (result 226).");
  answers("/CMU#0 is still out of operation (result 226).");
  EXPECT_EQ(ending(), (Ending{false, 1}));
  expect_in_order({"/CMU#0"});
}

TEST_F(Boards, ThatCannotBeDividedStayOutOfOperation) {
  take_out_of_operation("/CMU#0");
  spbox({"pull", "/CMU#0"});
  bend("setupfru", {"--exit", "137"});
  start_procedure("add_unit cmu");
  answers("Which CPU/memory unit", "1\n");
  answers("Type 1, 2 or 3", "3\n");
  puts_in("/CMU#0");
  answers("/CMU#0 is not in operation (result 209).");
  EXPECT_EQ(ending(), (Ending{false, 1}));
  expect_in_order({"/CMU#0"});
}

TEST_F(Boards, WhosePartsCannotBeGivenUpAreNotRemoved) {
  bend("deleteboard", {"--exit", "133"});
  start_procedure("remove_unit cmu");
  answers("Which CPU/memory unit", "1\n");
  pulls("/CMU#0");
  answers("The extended system boards of /CMU#0 are still assigned (result 210).");
  answers("deleteboard -q y -c unassign 00-0");
  EXPECT_EQ(ending(), (Ending{false, 1}));
  expect_in_order({"/CMU#0"});
}

class FanTrays : public BoxTest {};

TEST_F(FanTrays, ThatCannotBeCheckedAreInOperationAllTheSame) {
  make_box("qa");
  spbox({"pull", "/FAN_A#0"});
  bend("chkfanspeed", {"--exit", "1"});
  start_procedure("add_unit fan");
  answers("Which fan tray", "1\n");
  puts_in("/FAN_A#0");
  answers("/FAN_A#0 could not be checked to the end (result 8).");
  answers("/FAN_A#0 is in operation, and has not passed all its checks.");
  EXPECT_EQ(ending(), (Ending{false, 1}));
  expect_in_order();
}

class NoWalk : public BoxTest {
 protected:
  void SetUp() override { make_box("qa"); }

  void expect_failure(const Words &says) {
    EXPECT_EQ(ending(), (Ending{false, 1}));
    for (const auto &text : says) EXPECT_TRUE(was_shown(text)) << text;
    expect_nothing_left();
  }
};

TEST_F(NoWalk, WithoutThePager) {
  terminal_.start({SPBOX, "run", "--no-pager", box(), "--", procedure("replace_unit"), "psu"});
  expect_failure({"The list could not be shown (result 8).", "Check that /bin/busybox is there"});
  expect_in_order();
}

TEST_F(NoWalk, WhileAnotherCommandHoldsADatabaseAndAWalkOnceItsHolderIsKilled) {
  terminal::Terminal other;
  other.start(in_box({CALL, "hold", "2"}));
  ASSERT_TRUE(other.wait_for("held", kSoon));
  start_procedure("replace_unit psu");
  EXPECT_EQ(ending(), (Ending{false, 1}));
  EXPECT_TRUE(was_shown("The server's model could not be read (result 8)."));
  EXPECT_TRUE(was_shown("Another command may hold the database"));

  const auto holder = other.process("call");
  ASSERT_TRUE(holder);
  ASSERT_EQ(kill(*holder, SIGKILL), 0);
  ASSERT_TRUE(other.wait_for_exit(kSoon));
  start_procedure("replace_unit psu");
  answers("Which power supply");
}

TEST_F(NoWalk, WithARecordOfTheWrongSize) {
  put_record(2, "current_psu_info", 3359);
  start_procedure("replace_unit psu");
  expect_failure({"The power supplies could not be read (result 8)."});
  EXPECT_EQ(call({"psu", "0", "6"}), "power supply 0, status 00000000, FRU name \nresult 8\n");
}

TEST_F(NoWalk, WithoutTheMarkerOfAModel) {
  start({"sh", "-c", "rm /tmp/.qa; exec " + procedure("replace_unit")});
  EXPECT_EQ(ending(), (Ending{false, 1}));
  EXPECT_TRUE(was_shown("The server's model could not be read (result 8)."));
  EXPECT_TRUE(was_shown("/tmp holds no marker file of a model"));
  std::ofstream(box() / "tmp/.qa").close();
  expect_in_order();
}

TEST_F(NoWalk, WithoutTheControlTimeFile) {
  std::filesystem::remove(box() / "mgb/cli/etc/cmdtime_qa");
  EXPECT_EQ(call({"model"}), "model 6, 2 power supplies\nresult 0\n");
  start_procedure("replace_unit");
  expect_failure({"The server's model could not be read (result 8).", "Or a file of times is missing"});
}

// Where a list would be cut short unseen, nothing is begun.
TEST_F(NoWalk, WithoutRoomForTheLists) {
  const std::string tmp = (box() / "tmp").string();
  const Words run = in_box({procedure("replace_unit"), "psu"});
  Words command{"unshare",
                "-rm",
                "sh",
                "-c",
                "mount -t tmpfs -o size=32k none " + tmp + " && touch " + tmp + "/.qa && exec \"$@\"",
                "sh"};
  command.insert(command.end(), run.begin(), run.end());
  terminal_.start(command);
  expect_failure({"/tmp has no room for the lists. Remove from it what is not needed."});
  expect_in_order();
}

TEST_F(NoWalk, WithoutTheLedProgram) {
  std::filesystem::remove(box() / "mgb/bin/ctlled");
  start_procedure("replace_unit psu");
  answers("Which power supply", "1\n");
  expect_failure({"/PSU#0 could not be marked (result 8).", "The control program is missing"});
  expect_in_order();
}

TEST_F(NoWalk, WithoutMaintenanceMode) {
  bend("ctlmainte", {"--die", "SEGV"});
  start_procedure("replace_unit");
  expect_failure({"Maintenance mode could not be begun (result 8).", "The server may still be in maintenance mode"});
}

class Walks : public BoxTest {};

TEST_F(Walks, WithoutTheRemoteServiceAndSaysSo) {
  make_box("qa");
  bend("vantamainte", {"--exit", "1"});
  start_procedure("replace_unit psu");
  answers("Which power supply", "q\n");
  EXPECT_EQ(ending(), (Ending{false, 2}));
  EXPECT_TRUE(comes_up_again("The remote service was not told (result ", 2)) << "at the beginning and at the end";
  expect_in_order();
}

TEST_F(Walks, WhenAUnitIsFlaggedAlreadyToAnotherOne) {
  make_box("qa");
  bend("setmainteflag", {"--exit", "128"});
  start_procedure("replace_unit psu");
  answers("Which power supply", "1\n");
  answers("/PSU#0 may have a maintenance flag already");
  EXPECT_TRUE(was_shown("or left it. To end it: /mgb/bin/setmainteflag -u /PSU#0 -c end"));
  answers("Type 1 to choose another power supply", "q\n");
  EXPECT_EQ(ending(), (Ending{false, 2}));
  expect_in_order();
}

class Terminals : public BoxTest {};

TEST_F(Terminals, AreNeededForQuestionsAndModes) {
  make_box("qa");
  EXPECT_EQ(call({"tty", "0", "1"}), "result 8\n");
  EXPECT_EQ(call({"ask", "3", "Which? "}), "answer 0\nresult -1\n");
}

TEST_F(Terminals, LoseWhatWasTypedAheadOfAQuestion) {
  make_box("qa");
  start({"sh", "-c", std::string("echo wait; sleep 1; exec ") + CALL + " ask 3 'Which? '"});
  ASSERT_TRUE(sees("wait"));
  types("1\n");
  ASSERT_TRUE(sees("Which?"));
  types("2\n");
  EXPECT_TRUE(sees("answer 2"));
  EXPECT_TRUE(ending());
  EXPECT_FALSE(terminal_.mode().echo);  // The caller's to put back.
}

}  // namespace
}  // namespace end_to_end
