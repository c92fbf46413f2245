// The three procedures with a technician's hands beside the operator: each kind of unit from its list to its record in the
// log, the units that are refused, and the unit that is exchanged until one passes its test.

#include "tests/end_to_end/box_test.h"

namespace end_to_end {
namespace {

using terminal::Ending;

// One procedure on one unit. `number` is the unit's on the list; `chosen` are more answers before the marks.
struct Procedure {
  const char *name, *model, *command, *number, *unit;
  const char *chosen = "";
  bool is_named_in_log = true;  // a DDC unit's event has no unit
};

std::ostream &operator<<(std::ostream &out, const Procedure &procedure) {
  return out << procedure.command << " on " << procedure.model;
}

class Procedures : public BoxTest, public testing::WithParamInterface<Procedure> {
 protected:
  // Up to the first question for the technician's hands.
  void choose() {
    start_procedure(GetParam().command);
    answers("Type its number, q to give up:", std::string(GetParam().number) + "\n");
    if (*GetParam().chosen == '\0') return;
    reads_on_to("to be used? Type 1");
    types(GetParam().chosen);
  }

  void pull() {
    reads_on_to("Pull out " + unit() + " now. Type 1 when it is out, q to give up:");
    EXPECT_EQ(led(unit()), "blink");
    EXPECT_TRUE(flag(unit()));
    spbox({"pull", unit()});
    types("1\n");
  }

  void put_in() {
    answers("Put in " + unit() + " now. Type 1 when it is in place, q to give up:");
    EXPECT_EQ(led(unit()), "blink");
    EXPECT_TRUE(flag(unit()));
    spbox({"insert", unit()});
    types("1\n");
  }

  void expect_done(const std::string &what, const Words &detached = {}) {
    reads_on_to(unit() + " is " + what + ".");
    EXPECT_EQ(ending(), (Ending{false, 0}));
    expect_in_order(detached);
    const auto log = spbox({"log"}).output;
    const auto event = log.find("unit " + what);
    ASSERT_NE(event, std::string::npos) << log;
    EXPECT_EQ(log.find(unit(), event) != std::string::npos, GetParam().is_named_in_log) << log;
  }

  std::string unit() const { return GetParam().unit; }
};

class Replace : public Procedures {};

TEST_P(Replace, EndsWithANewUnitInOperation) {
  make_box(GetParam().model);
  choose();
  pull();
  put_in();
  expect_done("replaced");
}

INSTANTIATE_TEST_SUITE_P(
    Of, Replace,
    testing::Values(Procedure{"APowerSupplyOnQa", "qa", "replace_unit psu", "2", "/PSU#1"},
                    Procedure{"AFanTrayOnQb1", "qb1", "replace_unit fan", "3", "/FAN_B#0"},
                    Procedure{"ADdcUnitOnQe1", "qe1", "replace_unit ddc", "1", "/DDC_A#0", "", false},
                    Procedure{"ACpuMemoryUnitOnQe1", "qe1", "replace_unit cmu", "2", "/CMU#1", "2\n"},
                    Procedure{"AnIoUnitOnQe1", "qe1", "replace_unit iou", "4", "/IOU#3"}),
    [](const auto &procedure) { return std::string(procedure.param.name); });

class Add : public Procedures {};

TEST_P(Add, EndsWithTheUnitInOperation) {
  make_box(GetParam().model);
  take_out_of_operation(unit());
  spbox({"pull", unit()});
  choose();
  put_in();
  expect_done("added");
}

INSTANTIATE_TEST_SUITE_P(
    Of, Add,
    testing::Values(Procedure{"APowerSupplyOnQb2", "qb2", "add_unit psu", "4", "/PSU#3"},
                    Procedure{"AFanTrayOnQa", "qa", "add_unit fan", "1", "/FAN_A#0"},
                    Procedure{"ADdcUnitOnQe1", "qe1", "add_unit ddc", "2", "/DDC_A#1", "", false},
                    Procedure{"ACpuMemoryUnitInFourPartsOnQe1", "qe1", "add_unit cmu", "1", "/CMU#0", "3\n"},
                    Procedure{"AnIoUnitInOnePartOnQe1", "qe1", "add_unit iou", "4", "/IOU#3", "1\n"}),
    [](const auto &procedure) { return std::string(procedure.param.name); });

class Remove : public Procedures {};

TEST_P(Remove, EndsWithAnEmptyPlace) {
  make_box(GetParam().model);
  choose();
  pull();
  expect_done("removed", {unit()});
}

INSTANTIATE_TEST_SUITE_P(Of, Remove,
                         testing::Values(Procedure{"APowerSupplyOnQa", "qa", "remove_unit psu", "1", "/PSU#0"},
                                         Procedure{"AFanTrayOnQe1", "qe1", "remove_unit fan", "1", "/FAN_A#0"},
                                         Procedure{"ADdcUnitOnQe1", "qe1", "remove_unit ddc", "1", "/DDC_A#0", "",
                                                   false},
                                         Procedure{"ACpuMemoryUnitOnQe1", "qe1", "remove_unit cmu", "3", "/CMU#2"},
                                         Procedure{"AnIoUnitOnQe1", "qe1", "remove_unit iou", "4", "/IOU#3"}),
                         [](const auto &procedure) { return std::string(procedure.param.name); });

// What the box is made to be before, what the operator then reads.
struct Refusal {
  const char *name, *model;
  Words technician;
  const char *command, *says;
};

std::ostream &operator<<(std::ostream &out, const Refusal &refusal) {
  return out << refusal.command << ": " << refusal.says;
}

class Refused : public BoxTest, public testing::WithParamInterface<Refusal> {};

TEST_P(Refused, LeavesTheOthersToChooseFrom) {
  make_box(GetParam().model);
  if (!GetParam().technician.empty()) spbox(GetParam().technician);
  start_procedure(GetParam().command);
  answers("Type its number, q to give up:", "1\n");
  answers(GetParam().says);
  answers("q to give up:", "1\n");
  answers("Type its number, q to give up:", "q\n");
  EXPECT_EQ(ending(), (Ending{false, 2}));
  expect_in_order();
}

INSTANTIATE_TEST_SUITE_P(
    When, Refused,
    testing::Values(
        Refusal{"AUnitToAddIsInPlace", "qa", {}, "add_unit psu", "/PSU#0 may not be added now: it is in place."},
        Refusal{"AUnitToReplaceIsNotInPlace",
                "qa",
                {"pull", "/PSU#0"},
                "replace_unit psu",
                "/PSU#0 may not be replaced now: it is not in place."},
        Refusal{"AUnitToRemoveIsNotInPlace",
                "qb1",
                {"pull", "/FAN_A#0"},
                "remove_unit fan",
                "/FAN_A#0 may not be removed now: it is not in place."},
        Refusal{"AUnitIsTheLastOneThatWorks",
                "qa",
                {"fault", "/PSU#1"},
                "replace_unit psu",
                "/PSU#0 may not be replaced now: the server cannot do without it."},
        Refusal{"AServerHasToBeOffForABoard",
                "qb2",
                {"pull", "/IOU#0"},
                "add_unit iou",
                "/IOU#0 may not be added now: the server has to be off for it."},
        Refusal{"ABoardIsTheOnlyOneOfTheServer",
                "qb2",
                {},
                "remove_unit iou",
                "/IOU#0 may not be removed now: the server cannot do without it."}),
    [](const auto &refusal) { return std::string(refusal.param.name); });

class Exchange : public BoxTest {};

// A second fault takes what was put in out again.
TEST_F(Exchange, OfAUnitThatFailsItsTest) {
  make_box("qa");
  spbox({"pull", "/PSU#0"});
  start_procedure("add_unit psu");
  answers("Which power supply", "1\n");
  answers("Put in /PSU#0 now.");
  spbox({"insert", "/PSU#0"});
  spbox({"fault", "/PSU#0"});
  types("1\n");
  answers("/PSU#0 failed its test (result 208). Exchange it for another one.");
  pulls("/PSU#0");
  puts_in("/PSU#0");
  answers("/PSU#0 is added.");
  EXPECT_EQ(ending(), (Ending{false, 0}));
  expect_in_order();
}

TEST_F(Exchange, OfAFanTrayThatDoesNotTurnAsItShould) {
  make_box("qa");
  spbox({"pull", "/FAN_A#0"});
  bend("chkfanspeed", {"--exit", "225"});
  start_procedure("add_unit fan");
  answers("Which fan tray", "1\n");
  puts_in("/FAN_A#0");
  answers("/FAN_A#0 does not run at its speed (result 225). Exchange it for another one.");
  answers("Pull out /FAN_A#0 now.", "q\n");
  EXPECT_EQ(ending(), (Ending{false, 2}));
  expect_in_order({"/FAN_A#0"});
}

// A fault does not take a unit out of operation: the operator is not asked to pull it before somebody has.
TEST_F(Exchange, OfAUnitThatIsInOperationWhenItIsAdded) {
  make_box("qa");
  spbox({"fault", "/PSU#0"});
  start_procedure("add_unit psu");
  answers("Which power supply", "1\n");
  answers("Put in /PSU#0 now.", "1\n");
  answers("/PSU#0 failed its test (result 208). Exchange it for another one.");
  answers("Taking /PSU#0 out of operation");
  pulls("/PSU#0");
  puts_in("/PSU#0");
  answers("/PSU#0 is added.");
  EXPECT_EQ(ending(), (Ending{false, 0}));
  expect_in_order();
}

TEST_F(Exchange, OfAUnitThatWasOutOfOperationWhenItWasAdded) {
  make_box("qa");
  take_out_of_operation("/PSU#0");
  spbox({"fault", "/PSU#0"});
  start_procedure("add_unit psu");
  answers("Which power supply", "1\n");
  answers("Put in /PSU#0 now.", "1\n");
  answers("Pull out /PSU#0 now.", "q\n");
  answers("/PSU#0 stays in place, and has not passed.");
  EXPECT_EQ(ending(), (Ending{false, 2}));
  expect_in_order({"/PSU#0"});
}

// A domain does not run on a board that is not there: the new one can be tested.
TEST_F(Exchange, OfABoardThatNobodyTookOutOfOperation) {
  make_box("qe1");
  spbox({"pull", "/CMU#2"});
  start_procedure("add_unit cmu");
  answers("Which CPU/memory unit", "3\n");
  answers("Type 1, 2 or 3", "1\n");
  puts_in("/CMU#2");
  reads_on_to("/CMU#2 is added.");
  EXPECT_EQ(ending(), (Ending{false, 0}));
  expect_in_order();
}

class AnotherUnit : public BoxTest {
 protected:
  // The operator is asked to put one in; it is in when they give up.
  void gives_up_when_it_is_in(const Words &out) {
    answers("Put in /PSU#0 now.");
    spbox({"insert", "/PSU#0"});
    types("q\n");
    answers("/PSU#0 is in place, and was not tested.");
    answers("To test it and put it into operation: add_unit psu");
    EXPECT_EQ(ending(), (Ending{false, 2}));
    expect_in_order(out);
  }
};

TEST_F(AnotherUnit, IsNotPutIntoOperationWhenTheOperatorGivesUp) {
  make_box("qa");
  start_procedure("replace_unit psu");
  answers("Which power supply", "1\n");
  pulls("/PSU#0");
  gives_up_when_it_is_in({"/PSU#0"});
}

TEST_F(AnotherUnit, IsNamedWhenTheOperatorGivesUpAddingIt) {
  make_box("qa");
  spbox({"pull", "/PSU#0"});
  start_procedure("add_unit psu");
  answers("Which power supply", "1\n");
  gives_up_when_it_is_in({});
}

// Half a board is linked, and nobody is asked how a whole one would be used.
TEST_F(AnotherUnit, OfHalfABoardIsLinkedAndNoMore) {
  make_box("qe1");
  spbox({"pull", "/IOU#2"});
  start_procedure("replace_unit cmu");
  answers("Which CPU/memory unit", "3\n");
  reads_on_to("Pull out /CMU#2 now.");
  spbox({"pull", "/CMU#2"});
  types("1\n");
  puts_in("/CMU#2");
  answers("The other unit of its board is missing: /CMU#2 is linked, no more.");
  reads_on_to("/CMU#2 is replaced.");
  EXPECT_EQ(ending(), (Ending{false, 0}));
  expect_in_order();
}

class Hands : public BoxTest {};

TEST_F(Hands, ThatAreTooSlowAreAskedForAgain) {
  make_box("qa");
  start_procedure("remove_unit psu");
  answers("Which power supply", "1\n");
  answers("Pull out /PSU#0 now.", "1\n");
  answers("/PSU#0 is still in place.");
  answers("Pull out /PSU#0 now.", "q\n");
  EXPECT_EQ(ending(), (Ending{false, 2}));
  expect_in_order();
}

TEST_F(Hands, OnAnotherUnitAreAskedForAgain) {
  make_box("qb2");
  spbox({"pull", "/PSU#0"});
  start_procedure("add_unit psu");
  answers("Which power supply", "1\n");
  answers("Put in /PSU#0 now.");
  spbox({"pull", "/PSU#1"});
  spbox({"insert", "/PSU#1"});
  types("1\n");
  answers("/PSU#0 is not in place, or did not stay there.");
  answers("Put in /PSU#0 now.", "q\n");
  EXPECT_EQ(ending(), (Ending{false, 2}));
  expect_in_order();
}

}  // namespace
}  // namespace end_to_end
