// What an operator chooses from, and answers, before anything is switched.

#include "tests/end_to_end/box_test.h"

namespace end_to_end {
namespace {

using terminal::Ending;

class Walk : public BoxTest {};

TEST_F(Walk, ShowsTheListOfAKindAPageAtATime) {
  make_box("qe2");
  start_procedure("replace_unit psu");
  answers("--More--");
  EXPECT_TRUE(was_shown("The power supplies of this server"));
  EXPECT_TRUE(was_shown(" 1. PSU#0           Normal"));
  EXPECT_FALSE(was_shown("30. PSU#54          Normal"));
  types(" ");
  answers("Which power supply do you replace?");
  EXPECT_TRUE(was_shown("30. PSU#54          Normal"));
  EXPECT_TRUE(was_shown("30 power supplies."));
}

TEST_F(Walk, ShowsTheStateOfEveryUnitInTheList) {
  make_box("qb2");
  spbox({"pull", "/PSU#0"});
  spbox({"fault", "/PSU#1"});
  spbox({"degrade", "/PSU#2"});
  start_procedure("replace_unit psu");
  answers("Which power supply");
  EXPECT_TRUE(was_shown(" 1. PSU#0           Not installed"));
  EXPECT_TRUE(was_shown(" 2. PSU#1           Faulted"));
  EXPECT_TRUE(was_shown(" 3. PSU#2           Degraded"));
  EXPECT_TRUE(was_shown(" 4. PSU#3           Normal"));
}

TEST_F(Walk, MapsANumberOfTheListToTheUnitBehindIt) {
  make_box("qe2");
  start_procedure("replace_unit psu");
  answers("--More--", "q");
  answers("Which power supply", "16\n");  // The sixteenth is no /PSU#15: that name does not exist.
  answers("Pull out /PSU#40 now");
  EXPECT_EQ(led("/PSU#40"), "blink");
  EXPECT_TRUE(flag("/PSU#40"));
}

TEST_F(Walk, GoesOnWhenTheOperatorLeavesThePagerEarly) {
  make_box("qe2");
  start_procedure("replace_unit psu");
  answers("--More--", "q");
  answers("Which power supply");
  EXPECT_FALSE(was_shown("30. PSU#54"));
  types("q\n");
  EXPECT_EQ(ending(), (Ending{false, 2}));
  expect_in_order();
}

TEST_F(Walk, SwitchesNothingOnAUnitWhenTheOperatorGivesUpAtTheList) {
  make_box("qa");
  start_procedure("replace_unit psu");
  answers("Which power supply", "q\n");
  EXPECT_EQ(ending(), (Ending{false, 2}));
  EXPECT_TRUE(was_shown("Given up."));
  const auto trace = spbox({"trace"}).output;
  for (const char *function : {"lmainte_judge_control_fru", "lmainte_control_led", "lmainte_set_mainteflag"}) {
    EXPECT_EQ(trace.find(function), std::string::npos) << function;
  }
  expect_in_order();
}

TEST_F(Walk, AsksAgainUntilTheAnswerIsOnTheList) {
  make_box("qa");
  start_procedure("replace_unit psu");
  answers("Which power supply");
  int hints = 0;
  for (const char *answer : {"0\n", "3\n", "-1\n", "1x\n", "\n", "4294967297\n"}) {
    types(answer);
    EXPECT_TRUE(comes_up_again("Type a number from 1 to 2, or q to give up.", ++hints)) << answer;
  }
  types("1\n");
  EXPECT_TRUE(sees("Pull out /PSU#0 now"));
}

TEST_F(Walk, ShowsTypingAtItsQuestionsOnly) {
  make_box("qe2");
  start_procedure("replace_unit psu");
  answers("--More--");
  EXPECT_FALSE(terminal_.mode().echo);
  types("q");
  answers("Which power supply");
  EXPECT_TRUE(terminal_.mode().echo);
  types("31");
  EXPECT_TRUE(sees("give up: 31"));
}

struct Mistake {
  const char *says;
  Words command;
  const char *output;
};

TEST_F(Walk, NeedsATerminalAndAtMostAKindThatThereIs) {
  make_box("qa");
  const std::string replace = procedure("replace_unit");
  const char *const kUsage = "usage: replace_unit [KIND], where KIND is one of: cmu iou fan psu ddc\n";
  const Mistake mistakes[] = {
      {"no terminal", {replace}, "replace_unit: this is no terminal. Start it on the operator's terminal.\n"},
      {"no such kind", {replace, "psu2"}, kUsage},
      {"two kinds", {replace, "psu", "fan"}, kUsage}};
  for (const auto &mistake : mistakes) {
    const auto done = run_to_end(in_box(mistake.command));
    EXPECT_EQ(done.exit_status, 1) << mistake.says;
    EXPECT_EQ(done.output, mistake.output) << mistake.says;
  }
  expect_in_order();
}

TEST_F(Walk, SaysThatTheServerHasNoneOfAKind) {
  make_box("qb1");
  start_procedure("add_unit ddc");
  EXPECT_EQ(ending(), (Ending{false, 1}));
  EXPECT_TRUE(was_shown("This server has no DDC units."));
  expect_in_order();
}

struct Model {
  const char *name;
  int power_supplies;
  bool has_ddc;
  const char *says;
};

std::ostream &operator<<(std::ostream &out, const Model &model) {
  return out << model.name;
}

class EveryModel : public BoxTest, public testing::WithParamInterface<Model> {};

TEST_P(EveryModel, IsReadAndItsKindsAndItsPowerSuppliesAreListed) {
  make_box(GetParam().name);
  EXPECT_EQ(run_to_end({SPBOX, "run", box(), "--", SHOW_MODEL}).output, GetParam().says);
  start_procedure("remove_unit");
  answers("What do you remove? Type its number, q to give up:");
  for (const char *kind : {" 1. CPU/memory units", " 2. I/O units", " 3. fan trays", " 4. power supplies"}) {
    EXPECT_TRUE(was_shown(kind)) << kind;
  }
  EXPECT_EQ(was_shown(" 5. DDC units"), GetParam().has_ddc);
  types("4\n");
  reads_on_to("Which power supply do you remove?");
  EXPECT_TRUE(was_shown(std::to_string(GetParam().power_supplies) + " power supplies."));
  EXPECT_TRUE(was_shown("The power supplies of this server"));
}

INSTANTIATE_TEST_SUITE_P(
    Walk, EveryModel,
    testing::Values(
        Model{"qa", 2, false, "model qa: 1 system boards, 1 I/O units, 2 fan trays, 2 power supplies\n"},
        Model{"qb1", 2, false, "model qb1: 1 system boards, 1 I/O units, 4 fan trays, 2 power supplies\n"},
        Model{"qb2", 4, false, "model qb2: 1 system boards, 2 I/O units, 4 fan trays, 4 power supplies\n"},
        Model{"qe1", 18, true, "model qe1: 4 system boards, 4 I/O units, 12 fan trays, 18 power supplies\n"},
        Model{"qe2", 30, false, "model qe2: 8 system boards, 8 I/O units, 16 fan trays, 30 power supplies\n"},
        Model{"qe3", 60, false, "model qe3: 16 system boards, 16 I/O units, 32 fan trays, 60 power supplies\n"}),
    [](const auto &model) { return std::string(model.param.name); });

}  // namespace
}  // namespace end_to_end
