// Whatever ends a maintenance command, it leaves the terminal, the units and the box as it found them.

#include <algorithm>
#include <csignal>

#include "tests/end_to_end/box_test.h"
#include "tests/end_to_end/signals.h"
#include "tests/eventually.h"

namespace end_to_end {
namespace {

using terminal::Ending;

struct End {
  const char *name;
  int signal;
  bool key;  // typed as Ctrl-C, which reaches all processes in the foreground, instead of sent to the command alone
};

std::ostream &operator<<(std::ostream &out, const End &end) {
  return out << end.name;
}

class Endings : public BoxTest, public testing::WithParamInterface<End> {
 protected:
  void strike(const char *program = "replace_unit") {
    if (GetParam().key) {
      types("\003");
    } else {
      send(GetParam().signal, program);
    }
  }
};

TEST_P(Endings, AtTheQuestionLeaveNothingBehind) {
  start_replace_unit("qa");
  ASSERT_TRUE(sees("Which power supply"));
  strike();
  EXPECT_EQ(ending(), died_of(GetParam().signal));
  EXPECT_TRUE(was_shown("Interrupted."));
  expect_nothing_left();
}

TEST_P(Endings, InThePagerLeaveNothingBehind) {
  start_replace_unit("qe2");
  ASSERT_TRUE(sees("--More--"));
  EXPECT_TRUE(terminal_.process("busybox"));
  strike();
  EXPECT_EQ(ending(), died_of(GetParam().signal));
  EXPECT_TRUE(was_shown("Interrupted."));
  expect_nothing_left();
}

TEST_P(Endings, InAListThatAsksNothingLeaveNothingBehind) {
  make_box("qe2");
  start({SHOW_UNITS, "psu"});
  ASSERT_TRUE(sees("--More--"));
  strike("show_units");
  EXPECT_EQ(ending(), died_of(GetParam().signal));
  EXPECT_TRUE(was_shown("Interrupted."));
  expect_nothing_left();
}

TEST_P(Endings, AtTheMarkedUnitTakeTheMarksBack) {
  start_replace_unit("qa");
  ASSERT_TRUE(sees("Which power supply"));
  types("1\n");
  ASSERT_TRUE(sees("Replace /PSU#0 now"));
  EXPECT_EQ(led("/PSU#0"), "blink");
  strike();
  EXPECT_EQ(ending(), died_of(GetParam().signal));
  EXPECT_EQ(led("/PSU#0"), "off");
  EXPECT_EQ(flag("/PSU#0"), "");
  expect_nothing_left();
}

INSTANTIATE_TEST_SUITE_P(By, Endings,
                         testing::Values(End{"CtrlC", SIGINT, true}, End{"Sigint", SIGINT, false},
                                         End{"Sigterm", SIGTERM, false}, End{"Sighup", SIGHUP, false}),
                         [](const auto &end) { return std::string(end.param.name); });

class LineCut : public BoxTest {};

TEST_F(LineCut, TakesTheMarksBack) {
  start_replace_unit("qa");
  ASSERT_TRUE(sees("Which power supply"));
  types("1\n");
  ASSERT_TRUE(sees("Replace /PSU#0 now"));
  terminal_.hang_up();
  EXPECT_TRUE(ending());
  EXPECT_EQ(led("/PSU#0"), "off");
  EXPECT_EQ(flag("/PSU#0"), "");
  expect_no_process();
  EXPECT_EQ(call({"locks"}), "result 0\n");
}

class CtrlC : public BoxTest {};

// The programs are in the terminal's foreground, too, but Ctrl-C waits until they are done.
TEST_F(CtrlC, DoesNotTearAControlProgramAway) {
  make_box("qa");
  bend("ctlled", {"--delay", "1"});
  start({REPLACE_UNIT});
  ASSERT_TRUE(sees("Which power supply"));
  types("1\n");
  ASSERT_TRUE(eventually([&] { return terminal_.process("ctlled").has_value(); }));
  types("\003");
  EXPECT_EQ(ending(), died_of(SIGINT));
  EXPECT_TRUE(was_shown("The LED of /PSU#0 blinks"));
  EXPECT_EQ(led("/PSU#0"), "off");
  EXPECT_EQ(flag("/PSU#0"), "");
  expect_nothing_left();
}

class Sigterm : public BoxTest {
 protected:
  bool is_deaf(const char *program) {
    const auto pid = terminal_.process(program);
    const auto ignored = pid ? signals_of(*pid).ignored : "";
    return !ignored.empty() && (std::stoull(ignored, nullptr, 16) & 1ULL << (SIGTERM - 1)) != 0;
  }
};

// A program that does not end is asked three times, five seconds apart, before it is killed.
TEST_F(Sigterm, LeavesAControlProgramItsTimeToEnd) {
  make_box("qa");
  bend("ctlled", {"--hang", "--ignore-term"});
  start({CALL, "led_in_order", "2", "1", "/PSU#0"});
  ASSERT_TRUE(eventually([&] { return is_deaf("ctlled"); }));
  send(SIGTERM, "call");
  EXPECT_FALSE(terminal_.wait_for_exit(seconds{9}));
  send(SIGKILL, "ctlled");
  EXPECT_EQ(ending(), died_of(SIGTERM));
  expect_nothing_left();
}

class Daemon : public BoxTest {};

TEST_F(Daemon, IsInTheBoxWhileACommandIsAndNoLonger) {
  make_box("qa");
  start({CALL, "hold", "0"});
  ASSERT_TRUE(sees("held"));
  const auto processes = processes_of_box();
  EXPECT_EQ(std::count(processes.begin(), processes.end(), "monitor_daemon"), 1);
  send(SIGTERM, "call");
  EXPECT_EQ(ending(), died_of(SIGTERM));
  expect_nothing_left();
}

}  // namespace
}  // namespace end_to_end
