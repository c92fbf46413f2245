// What becomes of a list whose pager is killed or missing, whose file goes, or whose operator wants out.

#include <csignal>

#include "tests/end_to_end/box_test.h"

namespace end_to_end {
namespace {

using terminal::Ending;
using terminal::Mode;

constexpr Mode kAtAQuestion{true, true, true};

class KilledPager : public BoxTest, public testing::WithParamInterface<int> {};

TEST_P(KilledPager, IsNoFailureOfTheList) {
  make_box("qe2");
  start({SHOW_UNITS, "psu"});
  ASSERT_TRUE(sees("--More--"));
  send(GetParam(), "busybox");
  EXPECT_EQ(ending(), (Ending{false, 0}));
  expect_nothing_left();
}

TEST_P(KilledPager, LeavesAQuestionWhereTypingIsSeenAndCorrected) {
  make_box("qe2");
  start_procedure("replace_unit psu");
  answers("--More--");
  send(GetParam(), "busybox");
  answers("Which power supply");
  EXPECT_EQ(terminal_.mode(), kAtAQuestion);
  types("18\x7f\x37\n");  // the 8 is taken back: 17
  answers("Pull out /PSU#41 now", "q\n");
  EXPECT_EQ(ending(), (Ending{false, 2}));
  expect_in_order();
}

INSTANTIATE_TEST_SUITE_P(By, KilledPager, testing::Values(SIGKILL, SIGTERM, SIGSEGV),
                         [](const auto &signal) { return std::string("SIG") + sigabbrev_np(signal.param); });

class Pager : public BoxTest {};

TEST_F(Pager, ThatIsMissingIsSaid) {
  make_box("qe1");
  terminal_.start({SPBOX, "run", "--no-pager", box(), "--", SHOW_UNITS, "ddca"});
  EXPECT_EQ(ending(), (Ending{false, 1}));
  expect_screen("pager_missing");
  expect_nothing_left();
}

TEST_F(Pager, ShowsToTheEndAFileThatIsGoneAndTheCommandSaysSo) {
  make_box("qe2");
  start({SHOW_UNITS, "psu"});
  ASSERT_TRUE(sees("--More--"));
  remove_list_file();
  types(" ");
  EXPECT_EQ(ending(), (Ending{false, 1}));
  EXPECT_TRUE(was_shown("30. PSU#54          Normal"));
  EXPECT_TRUE(was_shown("show_units: the units could not be shown (result 8)."));
  expect_nothing_left();
}

TEST_F(Pager, RunsThroughInOneGoWhereThereIsNoTerminal) {
  make_box("qe2");
  const auto done = run_to_end(in_box({SHOW_UNITS, "psu"}));
  EXPECT_EQ(done.exit_status, 0);
  EXPECT_EQ(done.output.substr(0, 27), "Model qe2: power supplies\n\n");
  EXPECT_NE(done.output.find("\n30. PSU#54          Normal\n\n30 in all.\n"), std::string::npos) << done.output;
  EXPECT_EQ(done.output.find("--More--"), std::string::npos);
  expect_no_list_file();
}

// Nothing of the I/O expansion units stands in the box: a driver brings their records along.
class Expansion : public BoxTest {
 protected:
  void SetUp() override { make_box("qe1"); }

  void expect_list(const std::string &function, const std::string &screen) {
    start({"sh", "-c", std::string("cd /tmp && exec ") + EXPANSION + " " + function});
    EXPECT_EQ(ending(), (Ending{false, 0}));
    expect_screen(screen);
    expect_nothing_left();
  }
};

TEST_F(Expansion, BoatsFollowTheIoUnitsOfTheServer) {
  expect_list("iounit", "expansion_iounit");
}
TEST_F(Expansion, SlotsFollowTheirUnitWhichHasTheNumberAndPowerOfTheFirst) {
  expect_list("ioxpci", "expansion_ioxpci");
}
TEST_F(Expansion, SlotsOfAnIoUnitTakeANumberOnlyWhenInstalled) {
  expect_list("ioupci", "expansion_ioupci");
}
TEST_F(Expansion, UnitsAndTheirPowerSuppliesAreEmptyLists) {
  expect_list("iox", "expansion_nothing");
  expect_list("ioxpsu", "expansion_nothing");
}
TEST_F(Expansion, PowerSuppliesHaveATableThatShowsNothing) {
  expect_list("ioxpsu_status", "expansion_nothing");
  EXPECT_TRUE(std::filesystem::exists(box() / "tmp/tmp"));
}

}  // namespace
}  // namespace end_to_end
