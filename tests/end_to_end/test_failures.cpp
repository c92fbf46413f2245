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

class WalkFails : public BoxTest {
 protected:
  void choose_the_first() {
    start({REPLACE_UNIT});
    ASSERT_TRUE(sees("Which power supply"));
    types("1\n");
  }
};

TEST_F(WalkFails, WhenTheLedProgramIsMissing) {
  make_box("qa");
  std::filesystem::remove(box() / "mgb/bin/ctlled");
  choose_the_first();
  EXPECT_EQ(ending(), (Ending{false, 1}));
  EXPECT_TRUE(was_shown("The unit could not be marked (result 8)."));
  EXPECT_TRUE(was_shown("/PSU#0: the LED may still blink (result 8)."));
  EXPECT_TRUE(was_shown("Mend it with: /mgb/bin/ctlled -u /PSU#0 -c off"));
  expect_nothing_left();
}

TEST_F(WalkFails, WhenTheFlagIsRefused) {
  make_box("qa");
  bend("setmainteflag", {"--exit", "204"});
  choose_the_first();
  EXPECT_EQ(ending(), (Ending{false, 1}));
  EXPECT_TRUE(was_shown("The unit could not be marked (result 204)."));
  EXPECT_TRUE(was_shown("Another procedure works on the unit."));
  EXPECT_EQ(led("/PSU#0"), "off");
  expect_nothing_left();
}

TEST_F(WalkFails, WhenTheFlagCannotBeTakenBackAndSwitchesTheLedOffAllTheSame) {
  make_box("qa");
  choose_the_first();
  ASSERT_TRUE(sees("Replace /PSU#0 now"));
  bend("setmainteflag", {"--exit", "204"});
  types("q\n");
  EXPECT_EQ(ending(), (Ending{false, 1}));
  EXPECT_TRUE(was_shown("/PSU#0: the maintenance flag may still be set (result 204)."));
  EXPECT_EQ(led("/PSU#0"), "off");
  EXPECT_EQ(flag("/PSU#0"), "start");
  expect_nothing_left();
}

TEST_F(WalkFails, WhenTheLedProgramHangs) {
  make_box("qa");
  set_time_limits(1);
  bend("ctlled", {"--hang"});
  choose_the_first();
  EXPECT_EQ(ending(), (Ending{false, 1}));
  EXPECT_TRUE(was_shown("The unit could not be marked (result 8)."));
  EXPECT_EQ(led("/PSU#0"), "off");
  expect_nothing_left();
}

TEST_F(WalkFails, WhenThePagerIsMissing) {
  make_box("qa");
  terminal_.start({SPBOX, "run", "--no-pager", box(), "--", REPLACE_UNIT});
  EXPECT_EQ(ending(), (Ending{false, 1}));
  EXPECT_TRUE(was_shown("The list could not be shown (result 8)."));
  EXPECT_TRUE(was_shown("Check that /bin/busybox is there"));
  expect_nothing_left();
}

TEST_F(WalkFails, WhenAnotherCommandHoldsADatabaseAndWorksOnceItsHolderIsKilled) {
  make_box("qa");
  terminal::Terminal other;
  other.start({SPBOX, "run", box(), "--", CALL, "hold", "2"});
  ASSERT_TRUE(other.wait_for("held", kSoon));
  start({REPLACE_UNIT});
  EXPECT_EQ(ending(), (Ending{false, 1}));
  EXPECT_TRUE(was_shown("The server's model could not be read (result 8)."));
  EXPECT_TRUE(was_shown("Another command may hold the database"));

  const auto holder = other.process("call");
  ASSERT_TRUE(holder);
  ASSERT_EQ(kill(*holder, SIGKILL), 0);
  ASSERT_TRUE(other.wait_for_exit(kSoon));
  start({REPLACE_UNIT});
  EXPECT_TRUE(sees("Which power supply"));
}

TEST_F(WalkFails, WhenARecordHasTheWrongSize) {
  make_box("qa");
  put_record(2, "current_psu_info", 3359);
  start({REPLACE_UNIT});
  EXPECT_EQ(ending(), (Ending{false, 1}));
  EXPECT_TRUE(was_shown("The power supplies could not be read (result 8)."));
  EXPECT_EQ(call({"psu", "0", "6"}), "power supply 0, status 00000000, FRU name \nresult 8\n");
  expect_nothing_left();
}

TEST_F(WalkFails, WhenTheBoxHasNoMarker) {
  make_box("qa");
  start({"sh", "-c", std::string("rm /tmp/.qa; exec ") + REPLACE_UNIT});
  EXPECT_EQ(ending(), (Ending{false, 1}));
  EXPECT_TRUE(was_shown("The server's model could not be read (result 8)."));
  EXPECT_TRUE(was_shown("/tmp holds no marker file of a model"));
  std::ofstream(box() / "tmp/.qa").close();
  expect_nothing_left();
}

TEST_F(WalkFails, WhenTheControlTimeFileIsMissing) {
  make_box("qa");
  std::filesystem::remove(box() / "mgb/cli/etc/cmdtime_qa");
  EXPECT_EQ(call({"model"}), "model 6, 2 power supplies\nresult 0\n");
  start({REPLACE_UNIT});
  EXPECT_EQ(ending(), (Ending{false, 1}));
  EXPECT_TRUE(was_shown("The server's model could not be read (result 8)."));
  expect_nothing_left();
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
