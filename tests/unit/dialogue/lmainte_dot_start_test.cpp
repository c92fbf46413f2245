#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <csignal>

#include <gtest/gtest.h>

#include "tests/unit/dialogue/golden.h"
#include "tests/unit/doubles/library_test.h"
#include "tests/unit/doubles/system_calls.h"

namespace {

using doubles::in_a_process_of_its_own;
using doubles::Lines;
using doubles::machine;

constexpr int kNever = -1;

// What a child process leaves of each of its first seconds of sleep: how much of its output has arrived.
using Arrived = std::array<int, 64>;

Arrived &arrived() {
  static void *const memory = mmap(nullptr, sizeof(Arrived), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  return *static_cast<Arrived *>(memory);
}

void note_what_arrived() {
  struct stat output = {};
  const auto second = static_cast<size_t>(machine().clock);
  if (second < arrived().size() && fstat(STDOUT_FILENO, &output) == 0)
    arrived()[second] = static_cast<int>(output.st_size);
}

void hear(int) {}

sigset_t mask_of(const std::vector<int> &signals) {
  sigset_t set;
  sigemptyset(&set);
  for (const int signal : signals) sigaddset(&set, signal);
  return set;
}

// The indicator is a real child process. The clock is not: it sleeps without waiting.
class LmainteDotStart : public doubles::LibraryTest {
 protected:
  void SetUp() override {
    LibraryTest::SetUp();
    machine().children_are_real = true;
    arrived().fill(-1);
    stop_after(kNever);
  }

  // Lets SIGTERM come while the child sleeps in this second.
  static void stop_after(int seconds) {
    machine().asleep = [seconds] {
      if (!machine().in_child) return;
      note_what_arrived();
      if (machine().clock == seconds) raise(SIGTERM);
    };
  }

  // What an indicator of so many seconds writes, with what the command writes before and after.
  std::string shown(int32_t seconds, const char *message = nullptr, const char *before = "", const char *after = "") {
    const DotParam request = {1, message, seconds};
    return doubles::printed_by([&] {
      std::fputs(before, stdout);
      const int32_t child = lmainte_dot_start(&request);
      EXPECT_GT(child, 0);
      EXPECT_EQ(__real_waitpid(child, &ended_, 0), child);
      std::fputs(after, stdout);
    });
  }
  std::string shown_until(int stop) {
    machine().clock = 0;
    stop_after(stop);
    return shown(1000);
  }

  // Where SIGTERM comes before the child has done anything.
  std::string shown_stopped_at_once() {
    std::function<void()> wait_for_the_child = [&] {
      if (machine().in_child)
        raise(SIGTERM);
      else
        machine().interruption = wait_for_the_child;
    };
    machine().interruption = wait_for_the_child;
    auto text = shown(1000);
    machine().interruption = nullptr;
    return text;
  }

  int ended_ = -1;  // status of the child
};

TEST_F(LmainteDotStart, ShowsTheSecondsThatPass) {
  doubles::Worlds worlds;
  for (const int seconds : {1, 5, 6, 29, 30, 31, 65, 66, 239, 240, 241, 600, 601, 1201})
    worlds.emplace_back("runs " + std::to_string(seconds) + " s", [this, seconds] { return shown(seconds); });
  for (const int stop : {1, 5, 6, 12, 30, 31, 240, 241})
    worlds.emplace_back("stopped at " + std::to_string(stop) + " s", [this, stop] { return shown_until(stop); });
  worlds.emplace_back("stopped at 0 s", [this] { return shown_stopped_at_once(); });
  const auto add_text = [&](const char *says, const char *message, const char *before = "", const char *after = "") {
    worlds.emplace_back(says, [=, this] {
      stop_after(kNever);
      return shown(6, message, before, after);
    });
  };
  add_text("a message goes before it", "Testing /CMU#0: ");
  add_text("a message with its own line goes before it", "Testing\n");
  add_text("a percent sign in the message is no conversion", "100%s %d %n");
  add_text("an empty message is no text", "");
  add_text("text of the caller comes first and once", nullptr, "What the command said", "and says\n");
  add_text("text of the caller comes before the message", "Testing: ", "What the command said, ", "and says\n");
  doubles::expect_golden("lmainte_dot_start", worlds);
}

TEST_F(LmainteDotStart, NumberOfFiveDigitsTakesItsRoom) {
  machine().asleep = [] {};
  const auto text = shown(10021);
  EXPECT_EQ(text.substr(text.rfind('\n', text.size() - 3) + 1),
            "9840.....9870.....9900.....9930.....9960.....9990.....10020done\n\n");
}

TEST_F(LmainteDotStart, SleepsASecondAtATime) {
  shown(2);
  EXPECT_EQ(machine().child_calls(),
            (Lines{"sigaction 15", "sigprocmask unblock 15", "time", "sleep 1", "time", "sleep 1", "time"}));
}

TEST_F(LmainteDotStart, EveryMarkArrivesInItsSecond) {
  shown(31);
  // The second in which the child sleeps, counted from 1: a mark is written before it.
  EXPECT_EQ(arrived()[1], 4);
  EXPECT_EQ(arrived()[5], 4);
  EXPECT_EQ(arrived()[6], 5);
  EXPECT_EQ(arrived()[10], 5);
  EXPECT_EQ(arrived()[11], 6);
  EXPECT_EQ(arrived()[30], 9);
  EXPECT_EQ(arrived()[31], 13);
}

TEST_F(LmainteDotStart, MessageArrivesBeforeTheChildIsMade) {
  shown(1, "Testing: ");
  EXPECT_EQ(arrived()[1], 13);
}

// ---- clocks

TEST_F(LmainteDotStart, ClockThatJumpsAheadIsCaughtUpByOneMarkASecond) {
  machine().wall_clock = [](int second) { return 1000 + second + (second >= 3 ? 20 : 0); };
  EXPECT_EQ(shown(60), "   0.....  30.....done\n\n");
  // In the fourth pass the clock shows 23.
  const int expected[] = {4, 4, 4, 5, 6, 7, 8, 9, 9, 9, 13};
  for (size_t pass = 0; pass < std::size(expected); ++pass) EXPECT_EQ(arrived()[pass + 1], expected[pass]) << pass;
  EXPECT_EQ(arrived()[40], 18);
  EXPECT_EQ(arrived()[41], -1);
}

TEST_F(LmainteDotStart, ClockThatJumpsBeyondTheEndEndsIt) {
  machine().wall_clock = [](int second) { return 1000 + second + (second >= 12 ? 5000 : 0); };
  EXPECT_EQ(shown(60), "   0..done\n\n");
  EXPECT_EQ(arrived()[13], -1);
}

TEST_F(LmainteDotStart, ClockThatIsSetBackShowsNothingUntilItHasCaughtUp) {
  machine().wall_clock = [](int second) { return 1000 + second - (second >= 7 ? 20 : 0); };
  EXPECT_EQ(shown(16), "   0...done\n\n");
  EXPECT_EQ(arrived()[6], 5);
  EXPECT_EQ(arrived()[30], 5);
  EXPECT_EQ(arrived()[31], 6);
  EXPECT_EQ(arrived()[36], 7);
  EXPECT_EQ(arrived()[37], -1);
}

TEST_F(LmainteDotStart, ClockThatFailsOnceDelaysAMark) {
  machine().fail("time", 6, EFAULT);
  EXPECT_EQ(shown(8), "   0.done\n\n");
  EXPECT_EQ(arrived()[6], 4);
  EXPECT_EQ(arrived()[7], 5);
  const auto trace = doubles::child_trace();
  EXPECT_EQ(std::count(trace.begin(), trace.end(), "800A 110C1374 14"), 1);
}

TEST_F(LmainteDotStart, ClockThatFailsAtFirstEndsItWhenItWorks) {
  machine().fail("time", 1, EFAULT);
  EXPECT_EQ(shown(60), "   0done\n\n");
  EXPECT_EQ(arrived()[1], 4);
  EXPECT_EQ(arrived()[2], -1);
}

TEST_F(LmainteDotStart, ClockThatAlwaysFailsShowsNoMarkUntilItIsStopped) {
  machine().fail("time", 0, EFAULT);
  EXPECT_EQ(shown_until(20), "   0done\n\n");
  EXPECT_EQ(arrived()[20], 4);
}

TEST_F(LmainteDotStart, LongestTimeAndLatestClockAreNoOverflow) {
  machine().wall_clock = [](int second) { return INT32_MAX - 100 + second; };
  stop_after(12);
  EXPECT_EQ(shown(INT32_MAX), "   0..done\n\n");
}

// It is the 19th of January 2038 then. On the service processor the clock has 32 bits, and goes on below zero.
TEST_F(LmainteDotStart, ClockWhose31BitsAreFullGoesOnAndEndsIt) {
  machine().wall_clock = [](int second) { return int64_t{INT32_MAX} - 31 + second; };
  EXPECT_EQ(shown(60), "   0.....  30.....done\n\n");
  EXPECT_EQ(arrived()[60], 18);
  EXPECT_EQ(arrived()[61], -1);
}

// ---- the child

TEST_F(LmainteDotStart, ChildEndsWithoutTheCallersExitHandlers) {
  shown(1);
  EXPECT_TRUE(WIFEXITED(ended_));
  EXPECT_EQ(WEXITSTATUS(ended_), 0);
  EXPECT_TRUE(machine().child_left_by_exit());
}

TEST_F(LmainteDotStart, StoppedChildEndsWell) {
  shown_until(12);
  EXPECT_TRUE(WIFEXITED(ended_));
  EXPECT_EQ(WEXITSTATUS(ended_), 0);
}

TEST_F(LmainteDotStart, ChildRecordsItsHandlerItsMarksAndWhetherItWasStopped) {
  shown(11);
  EXPECT_EQ(doubles::child_trace(), (Lines{"100 110C0390", "100 110C0392 0 15", "100 110C0391", "100 110C0398",
                                           "100 110C0399", "100 110C0373 5", "100 110C0373 10", "100 110C0374 0"}));
}

TEST_F(LmainteDotStart, StoppedChildRecordsThatToo) {
  shown_until(6);
  const auto trace = doubles::child_trace();
  ASSERT_EQ(trace.size(), 8u);
  EXPECT_EQ(trace[5], "100 110C0373 5");
  EXPECT_EQ(trace[6], "100 110C0379");
  EXPECT_EQ(trace[7], "100 110C0374 1");
}

TEST_F(LmainteDotStart, WithoutItsHandlerItRunsButIsStoppedInMidLine) {
  machine().fail("sigaction 15", 1, EINVAL);
  EXPECT_EQ(shown(6), "   0.done\n\n");
  const auto trace = doubles::child_trace();
  EXPECT_EQ(std::count(trace.begin(), trace.end(), "805 110C1375 8"), 1);
  EXPECT_EQ(shown_until(12), "   0..");
  EXPECT_TRUE(WIFSIGNALED(ended_));
  EXPECT_EQ(WTERMSIG(ended_), SIGTERM);
}

TEST_F(LmainteDotStart, FlagThatTheCallerLeftEndsItAfterASecond) {
  in_a_process_of_its_own([this] {
    sig_catch = 1;
    EXPECT_EQ(shown(60), "   0done\n\n");
    EXPECT_EQ(arrived()[1], 4);
    EXPECT_EQ(arrived()[2], -1);
  });
}

TEST_F(LmainteDotStart, OnlyOneInTheFlagEndsIt) {
  in_a_process_of_its_own([this] {
    sig_catch = 2;
    EXPECT_EQ(shown(6), "   0.done\n\n");
  });
}

// ---- the caller

TEST_F(LmainteDotStart, CallerGetsTheProcessIdAndRecordsIt) {
  machine().children_are_real = false;
  const DotParam request = {1, nullptr, 60};
  EXPECT_EQ(lmainte_dot_start(&request), 500);
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C0370", "8001 110C0372 500", "100 110C0371"}));
  machine().forget_children();
}

TEST_F(LmainteDotStart, CallersFlagStays) {
  shown_until(12);
  EXPECT_EQ(sig_catch, 0);
}

TEST_F(LmainteDotStart, CallersMaskAndHandlersStay) {
  for (const bool forks : {true, false}) {
    for (const auto &mask : {std::vector<int>{}, {SIGUSR1}, {SIGUSR1, SIGTERM}}) {
      in_a_process_of_its_own([&] {
        struct sigaction before = {};
        before.sa_handler = hear;
        before.sa_flags = SA_RESTART;
        ASSERT_EQ(__real_sigaction(SIGTERM, &before, nullptr), 0);
        const sigset_t set = mask_of(mask);
        ASSERT_EQ(__real_sigprocmask(SIG_SETMASK, &set, nullptr), 0);
        if (forks) {
          EXPECT_EQ(shown(1), "   0done\n\n");
        } else {
          machine().fail("fork");
          const DotParam request = {1, nullptr, 60};
          EXPECT_EQ(lmainte_dot_start(&request), -1);
        }
        struct sigaction after = {};
        ASSERT_EQ(__real_sigaction(SIGTERM, nullptr, &after), 0);
        EXPECT_EQ(after.sa_handler, hear);
        EXPECT_NE(after.sa_flags & SA_RESTART, 0);
        EXPECT_EQ(doubles::blocked_signals(), mask);
      });
    }
  }
}

TEST_F(LmainteDotStart, CallerWhoHasSigtermBlockedCanStopItAllTheSame) {
  in_a_process_of_its_own([this] {
    const sigset_t set = mask_of({SIGTERM});
    ASSERT_EQ(__real_sigprocmask(SIG_BLOCK, &set, nullptr), 0);
    EXPECT_EQ(shown_until(12), "   0..done\n\n");
  });
}

TEST_F(LmainteDotStart, FailedForkHasPrintedTheMessage) {
  machine().fail("fork", 1, EAGAIN);
  const DotParam request = {1, "Testing: ", 60};
  EXPECT_EQ(doubles::printed_by([&] { EXPECT_EQ(lmainte_dot_start(&request), -1); }), "Testing: ");
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C0370", "800A 110C1373 11", "100 110C0371"}));
}

struct RefusedRow {
  const char *says;
  DotParam request;
  const char *error;
};

TEST_F(LmainteDotStart, RequestIsCheckedBeforeAnythingIsPrinted) {
  const RefusedRow rows[] = {{"disabled", {0, "Testing: ", 60}, "805 110C1372 0 60"},
                             {"no seconds", {1, "Testing: ", 0}, "805 110C1372 1 0"},
                             {"a negative number of seconds", {7, "Testing: ", -1}, "805 110C1372 7 -1"},
                             {"the smallest number of seconds", {1, nullptr, INT_MIN}, "805 110C1372 1 -2147483648"}};
  for (const auto &row : rows) {
    machine().start();
    EXPECT_EQ(doubles::printed_by([&] { EXPECT_EQ(lmainte_dot_start(&row.request), -1); }), "") << row.says;
    EXPECT_EQ(machine().calls, Lines{}) << row.says;
    EXPECT_EQ(doubles::trace(), (Lines{"100 110C0370", row.error, "100 110C0371"})) << row.says;
  }
}

TEST_F(LmainteDotStart, MissingRequestIsRefused) {
  EXPECT_EQ(lmainte_dot_start(nullptr), -1);
  EXPECT_EQ(machine().calls, Lines{});
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C0370", "805 110C1371", "100 110C0371"}));
}

TEST_F(LmainteDotStart, AnyOtherWordThanZeroEnables) {
  machine().children_are_real = false;
  for (const int32_t enable : {1, 2, -1, INT_MIN}) {
    const DotParam request = {enable, nullptr, 1};
    EXPECT_GT(lmainte_dot_start(&request), 0) << enable;
  }
  machine().forget_children();
}

// ---- the message catalogue

TEST_F(LmainteDotStart, LastWordAloneIsTranslated) {
  machine().catalogue = {{"done\n", "fertig, 100%%\n"}, {"   0", "null"}, {"%4lu", "%lu s"}, {".", "o"}, {"M", "N"}};
  EXPECT_EQ(shown(31, "M"), "M   0.....  30fertig, 100%\n\n");
}

// ---- the handler

class DispDone : public doubles::LibraryTest {};

TEST_F(DispDone, SetsTheFlagAndRecordsThat) {
  in_a_process_of_its_own([] {
    EXPECT_EQ(sig_catch, 0);
    EXPECT_EQ(doubles::printed_by([] { disp_done(SIGTERM); }), "");
    EXPECT_EQ(sig_catch, 1);
    disp_done(SIGTERM);
    EXPECT_EQ(sig_catch, 1);
    EXPECT_EQ(doubles::trace(), (Lines{"100 110C0379", "100 110C0379"}));
    EXPECT_EQ(machine().calls, Lines{});
  });
}

TEST_F(DispDone, LeavesAFlagThatIsSet) {
  in_a_process_of_its_own([] {
    sig_catch = 7;
    disp_done(SIGTERM);
    EXPECT_EQ(sig_catch, 7);
  });
}

TEST_F(DispDone, LeavesErrnoAlone) {
  in_a_process_of_its_own([] {
    errno = 42;
    disp_done(SIGTERM);
    EXPECT_EQ(errno, 42);
  });
}

TEST_F(DispDone, LeavesARecordThatItInterruptsWhole) {
  in_a_process_of_its_own([] {
    machine().children_are_real = false;
    machine().interruption = [] { disp_done(SIGTERM); };
    const DotParam request = {1, nullptr, 60};
    EXPECT_EQ(lmainte_dot_start(&request), 500);
    EXPECT_EQ(doubles::trace(), (Lines{"100 110C0379", "100 110C0370", "8001 110C0372 500", "100 110C0371"}));
  });
}

}  // namespace
