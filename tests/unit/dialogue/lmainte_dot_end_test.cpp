#include <sys/wait.h>

#include <climits>
#include <csignal>

#include <gtest/gtest.h>

#include "tests/unit/doubles/library_test.h"
#include "tests/unit/doubles/system_calls.h"

namespace {

using doubles::Lines;
using doubles::machine;

// The indicator is played: how it takes SIGTERM is told beforehand.
class LmainteDotEnd : public doubles::LibraryTest {
 protected:
  // Starts an indicator, which has the process id 500, and forgets how.
  static void start(const doubles::Program &indicator) {
    machine().programs = {indicator};
    const DotParam request = {1, nullptr, 60};
    EXPECT_EQ(lmainte_dot_start(&request), 500);
    machine().calls.clear();
  }
  static Lines own_trace() { return doubles::trace_of(0x110C0380); }
};

TEST_F(LmainteDotEnd, StopsTheIndicatorAndWaitsForItsEnd) {
  start(doubles::hangs_until_sigterm_and_exits(0, 1));
  machine().clock = 12;
  lmainte_dot_end(500);
  EXPECT_EQ(machine().calls, (Lines{"waitpid 500 nohang", "kill 500 15", "waitpid 500"}));
  EXPECT_EQ(machine().clock, 13);
  EXPECT_EQ(own_trace(), (Lines{"100 110C0380", "8001 110C0382 0", "8001 110C0383 500", "100 110C0381"}));
}

TEST_F(LmainteDotEnd, IndicatorThatHasEndedIsReapedAndGetsNoSignal) {
  start(doubles::exits(0, 60));
  machine().clock = 60;
  lmainte_dot_end(500);
  EXPECT_EQ(machine().calls, (Lines{"waitpid 500 nohang"}));
  EXPECT_EQ(own_trace(), (Lines{"100 110C0380", "8001 110C0382 500", "100 110C0381"}));
}

TEST_F(LmainteDotEnd, ProcessThatIsNoChildGetsNoSignal) {
  for (const int32_t pid : {1, 4711, INT_MAX}) {
    machine().start();
    lmainte_dot_end(pid);
    EXPECT_EQ(machine().calls, (Lines{"waitpid " + std::to_string(pid) + " nohang"}));
    EXPECT_EQ(doubles::trace(), (Lines{"100 110C0380", "8001 110C0382 -1", "100 110C0381"}));
  }
}

// To kill, 0 and below are groups of processes.
TEST_F(LmainteDotEnd, NumberThatIsNoProcessIsRefused) {
  for (const int32_t pid : {0, -1, -500, INT_MIN}) {
    machine().start();
    lmainte_dot_end(pid);
    EXPECT_EQ(machine().calls, Lines{});
    EXPECT_EQ(doubles::trace(), (Lines{"100 110C0380", "805 110C1381 " + std::to_string(pid), "100 110C0381"}));
  }
}

TEST_F(LmainteDotEnd, WaitThatASignalInterruptsIsTakenUpAgain) {
  start(doubles::hangs_until_sigterm_and_exits(0, 1));
  machine().fail("waitpid 500", 2, EINTR);
  machine().fail("waitpid 500", 2, EINTR);
  lmainte_dot_end(500);
  EXPECT_EQ(machine().calls, (Lines{"waitpid 500 nohang", "kill 500 15", "waitpid 500", "waitpid 500", "waitpid 500"}));
}

TEST_F(LmainteDotEnd, WaitThatFailsOtherwiseIsNotRepeated) {
  start(doubles::hangs_until_sigterm_and_exits(0, 1));
  machine().fail("waitpid 500", 2, ECHILD);
  lmainte_dot_end(500);
  EXPECT_EQ(machine().calls, (Lines{"waitpid 500 nohang", "kill 500 15", "waitpid 500"}));
  machine().forget_children();
}

TEST_F(LmainteDotEnd, SignalThatCannotBeSentIsWaitedForAllTheSame) {
  start(doubles::exits(0, 60));
  machine().fail("kill", 1, EPERM);
  lmainte_dot_end(500);
  EXPECT_EQ(machine().clock, 60);
}

TEST_F(LmainteDotEnd, LeavesNoRealChild) {
  machine().children_are_real = true;
  const DotParam request = {1, nullptr, 6};
  EXPECT_EQ(doubles::printed_by([&] { lmainte_dot_end(lmainte_dot_start(&request)); }), "   0.done\n\n");
  EXPECT_EQ(__real_waitpid(-1, nullptr, WNOHANG), -1);
  EXPECT_EQ(errno, ECHILD);
}

}  // namespace
