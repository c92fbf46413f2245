// Of two procedures at a time the second one is refused; of one that died, the next one takes over.

#include <csignal>
#include <fstream>

#include "tests/end_to_end/box_test.h"

namespace end_to_end {
namespace {

using terminal::Ending;

class OneAtATime : public BoxTest {
 protected:
  void SetUp() override { make_box("qa"); }

  std::filesystem::path claim() const { return box() / "tmp/mainte_procedure"; }
};

TEST_F(OneAtATime, TheSecondIsToldWhichOneRuns) {
  start_procedure("replace_unit psu");
  answers("Which power supply");
  const auto first = terminal_.process("replace_unit");
  ASSERT_TRUE(first);
  terminal::Terminal other;
  other.start(in_box({procedure("add_unit"), "fan"}));
  EXPECT_EQ(other.wait_for_exit(kSoon), (Ending{false, 1}));
  EXPECT_TRUE(other.shows("Another procedure is running: process " + std::to_string(*first) + "."));
  types("q\n");
  EXPECT_EQ(ending(), (Ending{false, 2}));
  expect_in_order();
}

// The fans run fast, the unit is marked and out of operation, the server in maintenance mode: nobody else takes it back.
TEST_F(OneAtATime, AfterOneWasKilledTheNextTakesBackWhatItLeft) {
  start_procedure("replace_unit fan");
  answers("Which fan tray", "1\n");
  answers("Pull out /FAN_A#0 now.");
  const auto killed = terminal_.process("replace_unit");
  ASSERT_TRUE(killed);
  send(SIGKILL, "replace_unit");
  EXPECT_EQ(ending(), died_of(SIGKILL));
  EXPECT_EQ(led("/FAN_A#0"), "blink");

  start_procedure("add_unit fan");
  answers("Which fan tray");
  EXPECT_TRUE(was_shown("process " + std::to_string(*killed) + ", died on its way. This one takes over."));
  EXPECT_TRUE(was_shown("It left /FAN_A#0 marked. The marks are taken back."));
  EXPECT_TRUE(was_shown("If /FAN_A#0 is out of operation, put it back with: add_unit fan"));
  EXPECT_EQ(led("/FAN_A#0"), "off");
  EXPECT_FALSE(flag("/FAN_A#0"));
  types("1\n");
  answers("Put in /FAN_A#0 now.", "1\n");
  answers("/FAN_A#0 is added.");
  EXPECT_EQ(ending(), (Ending{false, 0}));
  expect_in_order();
}

// Numbers of processes come back when the service processor has started anew.
TEST_F(OneAtATime, TheProcessOfADeadOneMayBeItsOwnNow) {
  start({"sh", "-c", "printf %d $$ >/tmp/mainte_procedure; exec " + procedure("replace_unit") + " psu"});
  answers("died on its way. This one takes over.");
  answers("Which power supply", "q\n");
  EXPECT_EQ(ending(), (Ending{false, 2}));
  expect_in_order();
}

TEST_F(OneAtATime, WhatAnotherCommandHasMarkedIsNamedAndLeft) {
  EXPECT_EQ(call({"flag", "0", "10", "/PSU#1"}), "result 0\n");
  start_procedure("replace_unit psu");
  answers("Which power supply", "2\n");
  EXPECT_TRUE(was_shown("/PSU#1 is marked for replacement."));
  answers("/PSU#1 may have a maintenance flag already");
  answers("to choose another power supply", "q\n");
  EXPECT_EQ(ending(), (Ending{false, 2}));
  EXPECT_TRUE(flag("/PSU#1"));
}

TEST_F(OneAtATime, MaintenanceModeOfAnotherCommandIsRespected) {
  EXPECT_EQ(call({"mainte", "1", "10"}), "result 0\n");
  start_procedure("replace_unit psu");
  EXPECT_EQ(ending(), (Ending{false, 1}));
  EXPECT_TRUE(was_shown("Maintenance mode could not be begun (result 128)."));
  EXPECT_TRUE(was_shown("Another procedure is at work."));
  EXPECT_TRUE(was_shown("If there is none, end the mode with: /mgb/bin/ctlmainte -c unlock"));
  EXPECT_EQ(call({"mainte", "0", "10"}), "result 0\n");
  expect_in_order();
}

struct Rubbish {
  const char *name;
  std::string content;
};

std::ostream &operator<<(std::ostream &out, const Rubbish &rubbish) {
  return out << rubbish.name;
}

class ProcedureInformation : public OneAtATime, public testing::WithParamInterface<Rubbish> {};

TEST_P(ProcedureInformation, ThatNoProcedureWroteStopsNobody) {
  std::ofstream(claim()) << GetParam().content;
  start_procedure("remove_unit psu");
  answers("Which power supply", "q\n");
  EXPECT_EQ(ending(), (Ending{false, 2}));
  expect_in_order();
}

INSTANTIATE_TEST_SUITE_P(With, ProcedureInformation,
                         testing::Values(Rubbish{"Nothing", ""}, Rubbish{"ALineEnd", "\n"},
                                         Rubbish{"Words", "rubbish and more of it\n"},
                                         Rubbish{"AProcessThatNeverWas", "4194999"}, Rubbish{"ANegativeNumber", "-1"},
                                         Rubbish{"ANumberTooLarge", "99999999999999999999"},
                                         Rubbish{"MoreThanItHolds", std::string(4096, 'x')},
                                         Rubbish{"BytesThatAreNoText", std::string("\x80\xff\0\x1b[2J", 7)}),
                         [](const auto &rubbish) { return std::string(rubbish.param.name); });

}  // namespace
}  // namespace end_to_end
