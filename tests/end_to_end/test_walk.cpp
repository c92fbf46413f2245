// The walk of a maintenance command, from the list to the unit that is replaced, and the ways in which an operator leaves it.

#include "tests/end_to_end/box_test.h"

namespace end_to_end {
namespace {

using terminal::Ending;

class Walk : public BoxTest {};

TEST_F(Walk, ReplacesAPowerSupply) {
  start_replace_unit("qe2");
  ASSERT_TRUE(sees("--More--"));
  EXPECT_TRUE(sees("Power supplies of this server"));
  EXPECT_TRUE(sees(" 1. PSU#0           Normal"));
  EXPECT_FALSE(was_shown("30. PSU#54          Normal"));

  types(" ");
  ASSERT_TRUE(sees("Which power supply"));
  EXPECT_TRUE(sees("30. PSU#54          Normal"));
  EXPECT_TRUE(sees("30 power supplies."));
  EXPECT_EQ(led("/PSU#3"), "off");

  types("4\n");
  ASSERT_TRUE(sees("Replace /PSU#3 now"));
  EXPECT_TRUE(sees("PSU#3         Normal"));
  EXPECT_EQ(led("/PSU#3"), "blink");
  EXPECT_EQ(flag("/PSU#3"), "start");

  spbox({"pull", "/PSU#3"});
  types("1\n");
  ASSERT_TRUE(sees("/PSU#3 is not ready"));
  EXPECT_TRUE(sees("PSU#3         Not installed"));

  spbox({"insert", "/PSU#3"});
  types("1\n");
  EXPECT_EQ(ending(), (Ending{false, 0}));
  EXPECT_TRUE(was_shown("/PSU#3: LED and maintenance flag are off."));
  EXPECT_EQ(led("/PSU#3"), "off");
  EXPECT_EQ(flag("/PSU#3"), "");
  expect_nothing_left();
}

TEST_F(Walk, ShowsTheStateOfEveryUnitInTheList) {
  make_box("qb2");
  spbox({"pull", "/PSU#0"});
  spbox({"fault", "/PSU#1"});
  spbox({"degrade", "/PSU#2"});
  start({REPLACE_UNIT});
  ASSERT_TRUE(sees("Which power supply"));
  EXPECT_TRUE(sees(" 1. PSU#0           Not installed"));
  EXPECT_TRUE(sees(" 2. PSU#1           Faulted"));
  EXPECT_TRUE(sees(" 3. PSU#2           Degraded"));
  EXPECT_TRUE(sees(" 4. PSU#3           Normal"));
}

TEST_F(Walk, MapsANumberOfTheListToTheUnitBehindIt) {
  start_replace_unit("qe2");
  ASSERT_TRUE(sees("--More--"));
  types("q");
  ASSERT_TRUE(sees("Which power supply"));
  types("16\n");  // The sixteenth is no /PSU#15: that name does not exist.
  ASSERT_TRUE(sees("Replace /PSU#40 now"));
  EXPECT_EQ(led("/PSU#40"), "blink");
}

TEST_F(Walk, GoesOnWhenTheOperatorLeavesThePagerEarly) {
  start_replace_unit("qe2");
  ASSERT_TRUE(sees("--More--"));
  types("q");
  ASSERT_TRUE(sees("Which power supply"));
  EXPECT_FALSE(was_shown("30. PSU#54"));
  types("q\n");
  EXPECT_EQ(ending(), (Ending{false, 2}));
  expect_nothing_left();
}

TEST_F(Walk, SwitchesNothingWhenTheOperatorGivesUpAtTheList) {
  start_replace_unit("qa");
  ASSERT_TRUE(sees("Which power supply"));
  types("q\n");
  EXPECT_EQ(ending(), (Ending{false, 2}));
  EXPECT_TRUE(was_shown("Given up."));
  EXPECT_EQ(spbox({"trace"}).output.find("lmainte_exec"), std::string::npos);
  expect_nothing_left();
}

TEST_F(Walk, TakesTheMarksBackWhenTheOperatorGivesUpAfterwards) {
  start_replace_unit("qa");
  ASSERT_TRUE(sees("Which power supply"));
  types("2\n");
  ASSERT_TRUE(sees("Replace /PSU#1 now"));
  EXPECT_EQ(led("/PSU#1"), "blink");
  types("q\n");
  EXPECT_EQ(ending(), (Ending{false, 2}));
  EXPECT_EQ(led("/PSU#1"), "off");
  EXPECT_EQ(flag("/PSU#1"), "");
  expect_nothing_left();
}

TEST_F(Walk, GivesUpAtTheEndOfTheInput) {
  start_replace_unit("qa");
  ASSERT_TRUE(sees("Which power supply"));
  types("\004");
  EXPECT_EQ(ending(), (Ending{false, 2}));
  EXPECT_TRUE(was_shown("Given up."));
  expect_nothing_left();
}

TEST_F(Walk, AsksAgainUntilTheAnswerIsOnTheList) {
  start_replace_unit("qa");
  ASSERT_TRUE(sees("Which power supply"));
  int hints = 0;
  for (const char *answer : {"0\n", "3\n", "-1\n", "1x\n", "\n", "4294967297\n"}) {
    types(answer);
    EXPECT_TRUE(comes_up_again("Type a number from 1 to 2, or q to give up.", ++hints)) << answer;
  }
  types("1\n");
  EXPECT_TRUE(sees("Replace /PSU#0 now"));
}

TEST_F(Walk, ShowsTypingAtItsQuestionsOnly) {
  start_replace_unit("qe2");
  ASSERT_TRUE(sees("--More--"));
  EXPECT_FALSE(terminal_.mode().echo);
  types("q");
  ASSERT_TRUE(sees("Which power supply"));
  EXPECT_TRUE(terminal_.mode().echo);
  types("31");
  EXPECT_TRUE(sees("give up: 31"));
}

TEST_F(Walk, NeedsATerminal) {
  make_box("qa");
  const auto done = terminal::run({SPBOX, "run", box(), "--", REPLACE_UNIT});
  EXPECT_EQ(done.exit_status, 1);
  EXPECT_EQ(done.output, "replace_unit: this is no terminal. Start it on the operator's terminal.\n");
}

struct Model {
  const char *name;
  int power_supplies;
  const char *says;
};

std::ostream &operator<<(std::ostream &out, const Model &model) {
  return out << model.name;
}

class EveryModel : public BoxTest, public testing::WithParamInterface<Model> {};

TEST_P(EveryModel, IsReadAndItsPowerSuppliesAreListed) {
  make_box(GetParam().name);
  EXPECT_EQ(terminal::run({SPBOX, "run", box(), "--", SHOW_MODEL}).output, GetParam().says);
  start({REPLACE_UNIT});
  const auto last = std::to_string(GetParam().power_supplies) + " power supplies.";
  while (!sees(last, seconds{1}) && sees("--More--")) types(" ");
  EXPECT_TRUE(sees("Which power supply"));
  EXPECT_TRUE(was_shown("Power supplies of this server"));
}

INSTANTIATE_TEST_SUITE_P(
    Walk, EveryModel,
    testing::Values(Model{"qa", 2, "model qa: 1 system boards, 1 I/O units, 2 fan trays, 2 power supplies\n"},
                    Model{"qb1", 2, "model qb1: 1 system boards, 1 I/O units, 4 fan trays, 2 power supplies\n"},
                    Model{"qb2", 4, "model qb2: 1 system boards, 2 I/O units, 4 fan trays, 4 power supplies\n"},
                    Model{"qe1", 18, "model qe1: 4 system boards, 4 I/O units, 12 fan trays, 18 power supplies\n"},
                    Model{"qe2", 30, "model qe2: 8 system boards, 8 I/O units, 16 fan trays, 30 power supplies\n"},
                    Model{"qe3", 60, "model qe3: 16 system boards, 16 I/O units, 32 fan trays, 60 power supplies\n"}),
    [](const auto &model) { return std::string(model.param.name); });

}  // namespace
}  // namespace end_to_end
