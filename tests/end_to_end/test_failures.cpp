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

// Nobody keeps a status for a caller that ignores the ends of its children.
TEST_F(Programs, RunButGiveNoStatusToACallerThatIgnoresSigchld) {
  const Words command{"/usr/bin/env", "--ignore-signal=CHLD", CALL, "exec", "5", "10", "-u /PSU#0 -c on"};
  EXPECT_EQ(run_to_end(in_box(command)).output, "result 127\n");
  EXPECT_EQ(led("/PSU#0"), "on");
}

TEST_F(Programs, MayTakeAsLongAsTheirLimit) {
  bend("ctlled", {"--delay", "1"});
  EXPECT_EQ(call({"led", "1", "5", "/PSU#0"}), "result 0\n");
  EXPECT_EQ(led("/PSU#0"), "on");
}

class ProgramsInRealTime : public Programs {
 protected:
  ProgramsInRealTime() { stay_in_real_time(); }
};

TEST_F(ProgramsInRealTime, AreStoppedWhenTheirTimeIsSpent) {
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
  EXPECT_TRUE(was_shown("Another command may be using the database"));

  const auto holder = other.process("call");
  ASSERT_TRUE(holder);
  ASSERT_EQ(kill(*holder, SIGKILL), 0);
  ASSERT_TRUE(other.wait_for_exit(kSoon));
  start_procedure("replace_unit psu");
  answers("Which power supply");
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
  expect_failure({"/tmp has no room for the lists. Remove files that nobody needs from it."});
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
