// The progress indicator on a terminal.

#include <algorithm>
#include <csignal>
#include <stdexcept>
#include <string>

#include "tests/end_to_end/box_test.h"
#include "tests/end_to_end/signals.h"

namespace end_to_end {
namespace {

using terminal::Ending;

constexpr unsigned long long kMaskOfSigterm = 1ULL << (SIGTERM - 1);

// A driver prints "before " without a newline, starts the indicator with the text "Testing", waits, and stops it. It fails
// when its own signal mask or handlers are not as they were.
class Progress : public BoxTest {
 protected:
  void SetUp() override { make_box("qa"); }

  void start_progress(const char *limit, const char *seconds, const char *function = "dots") {
    start({CALL, function, limit, seconds});
    ASSERT_TRUE(sees("Testing   0"));
  }

  // The driver and its child, the younger of the two.
  std::vector<pid_t> driver_and_indicator() {
    std::vector<pid_t> both;
    for (const auto &process : terminal_.processes()) {
      if (process.name == "call") both.push_back(process.pid);
    }
    std::sort(both.begin(), both.end());
    if (both.size() != 2) throw std::runtime_error("not a driver and its child: " + std::to_string(both.size()));
    return both;
  }
};

class ProgressInRealTime : public Progress {
 protected:
  ProgressInRealTime() { stay_in_real_time(); }
};

TEST_F(ProgressInRealTime, GrowsByADotInFiveSecondsAndEndsInOrder) {
  start_progress("60", "7");
  EXPECT_EQ(ending(), (Ending{false, 0}));
  expect_screen("progress_7_seconds");
  expect_nothing_left();
}

// The signal that stops it may come while it writes its first number, which is lost then.
TEST_F(Progress, StoppedAtOnceIsDoneAllTheSame) {
  start({CALL, "dots", "60", "0"});
  EXPECT_EQ(ending(), (Ending{false, 0}));
  if (was_shown("Testing   0"))
    expect_screen("progress_stopped_at_once");
  else
    expect_screen("progress_stopped_before_it_began");
  expect_nothing_left();
}

TEST_F(Progress, EndsByItselfAtItsLimitAndWaitsForItsCaller) {
  start_progress("1", "10");
  EXPECT_TRUE(sees("done", seconds{8})) << "long before its caller would stop it";
  EXPECT_EQ(ending(), (Ending{false, 0}));
  expect_screen("progress_ends_by_itself");
  expect_nothing_left();
}

TEST_F(Progress, ListensToSigtermOnlyAndLeavesItsCallersSignalsAlone) {
  start_progress("60", "3");
  const auto pids = driver_and_indicator();
  const auto driver = signals_of(pids[0]);
  const auto indicator = signals_of(pids[1]);
  EXPECT_EQ(driver.blocked, "0000000000000000");
  EXPECT_EQ(indicator.blocked, "0000000000000000");
  EXPECT_EQ(std::stoull(driver.caught, nullptr, 16) & kMaskOfSigterm, 0U);
  EXPECT_EQ(std::stoull(indicator.caught, nullptr, 16) & kMaskOfSigterm, kMaskOfSigterm);
  EXPECT_EQ(ending(), (Ending{false, 0}));
  expect_nothing_left();
}

TEST_F(Progress, ThatIsKilledEndsTheLineWhereItIs) {
  start_progress("60", "2");
  ASSERT_EQ(kill(driver_and_indicator()[1], SIGKILL), 0);
  EXPECT_EQ(ending(), (Ending{false, 0}));
  expect_screen("progress_killed");
  expect_nothing_left();
}

TEST_F(Progress, IsGoneAfterCtrlC) {
  start_progress("60", "30");
  types("\003");
  EXPECT_EQ(ending(), died_of(SIGINT));
  expect_screen("progress_interrupted");
  expect_nothing_left();
}

TEST_F(Progress, IsGoneAfterCtrlCInACommandThatEndsInOrder) {
  start_progress("60", "30", "dots_gracefully");
  types("\003");
  EXPECT_EQ(ending(), died_of(SIGINT));
  expect_screen("progress_interrupted_gracefully");
  expect_nothing_left();
}

}  // namespace
}  // namespace end_to_end
