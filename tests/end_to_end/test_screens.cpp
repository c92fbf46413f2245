// Whole screens of 80 columns and 24 lines: a procedure from its list to its end, and the pager's keys.

#include <csignal>

#include "tests/end_to_end/box_test.h"
#include "tests/end_to_end/signals.h"

namespace end_to_end {
namespace {

using terminal::Ending;

class Screens : public BoxTest {
 protected:
  // At a question the command also catches SIGCONT: it asks again when it goes on after Ctrl-Z.
  static Signals at_question(Signals signals) {
    constexpr unsigned long long kSigcont = 1ULL << (SIGCONT - 1);
    char caught[17];
    std::snprintf(caught, sizeof caught, "%016llx", std::stoull(signals.caught, nullptr, 16) | kSigcont);
    signals.caught = caught;
    return signals;
  }
};

TEST_F(Screens, OfAProcedureFromTheListToTheEnd) {
  make_box("qe2");
  spbox({"fault", "/PSU#41"});
  start_procedure("replace_unit psu");
  expect_screen("walk_1_list");
  const auto command = terminal_.process("replace_unit");
  ASSERT_TRUE(command);
  const auto signals = at_question(signals_of(*command));
  types(" ");
  expect_screen("walk_2_question");
  EXPECT_EQ(signals_of(*command), signals);
  types("17\n");
  expect_screen("walk_3_pull");
  EXPECT_EQ(signals_of(*command), signals);
  spbox({"pull", "/PSU#41"});
  types("1\n");
  expect_screen("walk_4_put_in");
  EXPECT_EQ(signals_of(*command), signals);
  spbox({"insert", "/PSU#41"});
  types("1\n");
  EXPECT_EQ(ending(), (Ending{false, 0}));
  expect_screen("walk_5_replaced");
  expect_in_order();
}

class Pages : public BoxTest {
 protected:
  void SetUp() override {
    make_box("qe1");
    start({SHOW_UNITS, "cmu", "1"});
    expect_screen("pages_1_first");
  }
};

TEST_F(Pages, EnterShowsALineMoreAndSpaceTheNextPage) {
  types("\n");
  expect_screen("pages_2_a_line_more");
  types(" ");
  EXPECT_EQ(ending(), (Ending{false, 0}));
  expect_screen("pages_3_to_the_end");
  expect_nothing_left();
}

TEST_F(Pages, QLeavesTheRestUnseen) {
  types("q");
  EXPECT_EQ(ending(), (Ending{false, 0}));
  expect_screen("pages_left_at_once");
  expect_nothing_left();
}

TEST_F(Pages, OtherKeysAreNotShown) {
  types("17\x1b");
  EXPECT_FALSE(terminal_.mode().echo);
  types("q");
  EXPECT_EQ(ending(), (Ending{false, 0}));
  EXPECT_FALSE(was_shown("17"));
  expect_nothing_left();
}

TEST_F(Pages, CtrlCEndsTheCommandBehindTheUnfinishedLine) {
  types("\003");
  EXPECT_EQ(ending(), died_of(SIGINT));
  expect_screen("pages_interrupted");
  expect_nothing_left();
}

}  // namespace
}  // namespace end_to_end
