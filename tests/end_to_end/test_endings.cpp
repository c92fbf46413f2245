// Whatever ends a maintenance command, and wherever it is, it leaves the terminal, the units and the box as it found them.

#include <algorithm>
#include <csignal>

#include "tests/end_to_end/box_test.h"
#include "tests/end_to_end/signals.h"
#include "tests/eventually.h"

namespace end_to_end {
namespace {

using terminal::Ending;

// How a command is ended by something that comes from outside: by a signal, or because there is no operator any more.
struct End {
  enum class By { kSignal, kCtrlC, kLineCut, kGivingUp, kEndOfInput };

  const char *name;
  By by;
  int signal;  // of which the command dies; 0 where it does not
};

constexpr End kCtrlC{"CtrlC", End::By::kCtrlC, SIGINT};
constexpr End kSigint{"Sigint", End::By::kSignal, SIGINT};
constexpr End kSigterm{"Sigterm", End::By::kSignal, SIGTERM};
constexpr End kSighup{"Sighup", End::By::kSignal, SIGHUP};
constexpr End kLineCut{"LineCut", End::By::kLineCut, SIGHUP};
constexpr End kGivingUp{"GivingUp", End::By::kGivingUp, 0};
constexpr End kEndOfInput{"EndOfInput", End::By::kEndOfInput, 0};

std::ostream &operator<<(std::ostream &out, const End &end) {
  return out << end.name;
}

class EndingTest : public BoxTest {
 protected:
  // The replacement of /PSU#0, until the operator says that it is out.
  void replace_until_it_is_out() {
    make_box("qa");
    start_procedure("replace_unit psu");
    answers("Which power supply", "1\n");
    pulls("/PSU#0");
  }

  void strike(const End &end, const char *program) {
    switch (end.by) {
      case End::By::kSignal:
        return send(end.signal, program);
      case End::By::kCtrlC:
        return types("\003");
      case End::By::kLineCut:
        return terminal_.hang_up();
      case End::By::kGivingUp:
        return types("q\n");
      case End::By::kEndOfInput:
        return types("\004");
    }
  }

  // Ctrl-C reaches all processes in the foreground, a signal that is sent the command alone.
  void expect_end(const End &end) {
    const auto ended = ending();
    ASSERT_TRUE(ended) << "it still runs";
    if (end.by == End::By::kLineCut)
      return;  // It takes spbox along, too: nobody is there to hear of the command's end.
    EXPECT_EQ(*ended, end.signal == 0 ? (Ending{false, 2}) : died_of(end.signal));
    EXPECT_TRUE(was_shown(end.signal == 0 ? "Given up." : "Interrupted."));
  }
};

// A question of a procedure, and what leads to it.
struct Question {
  struct Answer {
    const char *question, *keys;
  };

  const char *name, *model;
  Words pulled;  // beforehand
  const char *command;
  std::vector<Answer> answers;
  const char *question;
  bool is_behind_table = false;  // a q is asked about once more: it may have been meant for the pager
};

std::ostream &operator<<(std::ostream &out, const Question &question) {
  return out << question.command << ": " << question.question;
}

const Question kQuestions[] = {
    {"Kind", "qa", {}, "replace_unit", {}, "What do you replace?"},
    {"Unit", "qa", {}, "remove_unit psu", {}, "Which power supply do you remove?"},
    {"AnotherUnit", "qa", {}, "add_unit psu", {{"Which power supply", "1\n"}}, "the number of another power supply"},
    {"Division", "qe1", {"/CMU#0"}, "add_unit cmu", {{"Which CPU/memory unit", "1\n"}}, "Type 1, 2 or 3", true},
    {"Mirroring",
     "qe1",
     {},
     "replace_unit cmu",
     {{"Which CPU/memory unit", "1\n"}, {"--More--", "q"}, {"Type 1 to replace it all the same", "1\n"}},
     "Type 1 or 2",
     true},
    {"PullingAFanTray", "qa", {}, "replace_unit fan", {{"Which fan tray", "1\n"}}, "Pull out /FAN_A#0 now."},
    {"PullingABoard",
     "qe1",
     {},
     "remove_unit cmu",
     {{"Which CPU/memory unit", "1\n"}, {"Type 1 to remove it all the same", "1\n"}},
     "Pull out /CMU#0 now."},
    {"PuttingInWhatIsAdded", "qa", {"/PSU#0"}, "add_unit psu", {{"Which power supply", "1\n"}}, "Put in /PSU#0 now."},
};

class Endings : public EndingTest, public testing::WithParamInterface<std::tuple<Question, End>> {};

TEST_P(Endings, LeaveAllInOrder) {
  const auto &[question, end] = GetParam();
  make_box(question.model);
  for (const auto &unit : question.pulled) spbox({"pull", unit});
  start_procedure(question.command);
  for (const auto &answer : question.answers) answers(answer.question, answer.keys);
  answers(question.question);
  const std::string command = question.command;
  strike(end, command.substr(0, command.find(' ')).c_str());
  if (question.is_behind_table && end.by == End::By::kGivingUp) answers("Nothing is changed yet.", "1\n");
  expect_end(end);
  expect_in_order();
}

INSTANTIATE_TEST_SUITE_P(
    At, Endings,
    testing::Combine(testing::ValuesIn(kQuestions),
                     testing::Values(kCtrlC, kSigint, kSigterm, kSighup, kLineCut, kGivingUp, kEndOfInput)),
    [](const auto &row) { return std::string(std::get<0>(row.param).name) + "By" + std::get<1>(row.param).name; });

class InThePager : public EndingTest, public testing::WithParamInterface<End> {};

TEST_P(InThePager, OfAProcedureLeaveAllInOrder) {
  make_box("qe2");
  start_procedure("replace_unit psu");
  answers("--More--");
  EXPECT_TRUE(terminal_.process("busybox"));
  strike(GetParam(), "replace_unit");
  expect_end(GetParam());
  EXPECT_FALSE(was_shown("Which power supply")) << "nobody is there to answer";
  expect_in_order();
}

TEST_P(InThePager, OfAListThatAsksNothingLeaveAllInOrder) {
  make_box("qe2");
  start({SHOW_UNITS, "psu"});
  answers("--More--");
  strike(GetParam(), "show_units");
  expect_end(GetParam());
  expect_in_order();
}

INSTANTIATE_TEST_SUITE_P(By, InThePager, testing::Values(kCtrlC, kSigint, kSigterm, kSighup),
                         [](const auto &end) { return std::string(end.param.name); });

class CtrlC : public EndingTest {};

// The programs are in the terminal's foreground, too, but Ctrl-C waits until they are done.
TEST_F(CtrlC, DoesNotTearAControlProgramAway) {
  make_box("qa");
  bend("ctlled", {"--delay", "1"});
  start_procedure("replace_unit psu");
  answers("Which power supply", "1\n");
  ASSERT_TRUE(eventually([&] { return terminal_.process("ctlled").has_value(); }));
  types("\003");
  EXPECT_EQ(ending(), died_of(SIGINT));
  EXPECT_TRUE(was_shown("Interrupted: please wait until this step has ended."));
  EXPECT_TRUE(was_shown("The LED of /PSU#0 blinks"));
  expect_in_order();
}

class CtrlZ : public BoxTest {};

// The shell has written over the question, which is asked again when the command goes on.
TEST_F(CtrlZ, AtAQuestionLetsItBeAskedAgain) {
  make_box("qa");
  start_procedure("replace_unit psu");
  answers("Which power supply do you replace?");
  send(SIGSTOP, "replace_unit");
  send(SIGCONT, "replace_unit");
  EXPECT_TRUE(comes_up_again("Which power supply do you replace?", 2));
  types("q\n");
  EXPECT_EQ(ending(), (Ending{false, 2}));
  EXPECT_FALSE(was_shown("Interrupted."));
  expect_in_order();
}

// Nor the check that a unit is gone. The operator reads at once that it is heard; no question follows.
TEST_F(CtrlC, WhileTheUnitIsWatchedIsAnsweredAtOnceAndHeededBehindTheCheck) {
  replace_until_it_is_out();
  answers("Watching the unit");
  types("\003");
  EXPECT_TRUE(sees("Interrupted: please wait until this step has ended.", seconds{3}));
  EXPECT_TRUE(terminal_.runs());
  EXPECT_EQ(ending(), died_of(SIGINT));
  EXPECT_FALSE(was_shown("Put in /PSU#0 now."));
  EXPECT_TRUE(was_shown("The place of /PSU#0 stays empty."));
  expect_in_order({"/PSU#0"});
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
  start({CALL, "led_gracefully", "2", "1", "/PSU#0"});
  ASSERT_TRUE(eventually([&] { return is_deaf("ctlled"); }));
  send(SIGTERM, "call");
  EXPECT_FALSE(terminal_.wait_for_exit(seconds{9}));
  send(SIGKILL, "ctlled");
  EXPECT_EQ(ending(), died_of(SIGTERM));
  expect_nothing_left();
}

class Echo : public BoxTest {};

TEST_F(Echo, IsOnAgainBehindAKilledProcedure) {
  make_box("qa");
  bend("detachfru", {"--hang"});
  start_procedure("replace_unit psu");
  answers("Which power supply", "1\n");
  ASSERT_TRUE(sees("Taking /PSU#0 out of operation"));
  EXPECT_FALSE(terminal_.mode().echo);
  send(SIGKILL, "replace_unit");
  EXPECT_EQ(ending(), died_of(SIGKILL));
  EXPECT_TRUE(terminal_.mode().echo);
}

// Where spbox was killed, too, or on a service processor.
TEST_F(Echo, IsOnAgainBehindTheNextProcedure) {
  make_box("qa");
  start({"sh", "-c", "stty -echo -icanon; exec " + procedure("replace_unit") + " psu"});
  answers("Which power supply", "q\n");
  EXPECT_TRUE(ending());
  EXPECT_TRUE(terminal_.mode().echo);
}

class Daemon : public BoxTest {};

TEST_F(Daemon, RunsOnlyWhileACommandIsInTheBox) {
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
