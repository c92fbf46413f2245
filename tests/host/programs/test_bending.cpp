#include <signal.h>

#include <fstream>

#include "host/box/points.h"
#include "tests/eventually.h"
#include "tests/host/programs/control_program.h"

namespace {

using namespace std::chrono_literals;

class Bending : public ControlProgram {
 protected:
  void bend(const box::Bend &bend) { box::set_bend(*hardware_, "ctlled", bend); }

  pid_t start_blinking() const { return start("ctlled", "-u /PSU#3 -c blink"); }

  // Waits until the program has noted that it runs, which comes before it is bent.
  void await_start() const {
    ASSERT_TRUE(eventually([&] { return last_run("ctlled").has_value(); }));
  }

  // Whether SIGTERM is among these signals of a process: "SigIgn" those that it ignores, "SigCgt" those that it handles.
  static bool has_sigterm(const std::string &signals, pid_t pid) {
    std::ifstream status("/proc/" + std::to_string(pid) + "/status");
    for (std::string name; status >> name;) {
      if (name != signals + ":") continue;
      std::uint64_t set = 0;
      status >> std::hex >> set;
      return (set >> (SIGTERM - 1) & 1U) != 0;
    }
    return false;
  }

  static bool ends_within(pid_t pid, std::chrono::milliseconds limit, int *status) {
    return eventually([&] { return waitpid(pid, status, WNOHANG) == pid; }, limit);
  }
};

TEST_F(Bending, ExitStatusTakesThePlaceOfTheWork) {
  bend({.exit = 206});
  EXPECT_EQ(run("ctlled", "-u /PSU#3 -c blink"), 206);
  EXPECT_EQ(hardware("led /PSU#3"), "");
  EXPECT_EQ(last_run("ctlled")->status, 206);
}

TEST_F(Bending, ExitStatusZeroDoesNothingAndSaysThatItDid) {
  bend({.exit = 0});
  EXPECT_EQ(run("ctlled", "-u /PSU#3 -c blink"), 0);
  EXPECT_EQ(hardware("led /PSU#3"), "");
}

TEST_F(Bending, OneProgramOnly) {
  bend({.exit = 206});
  EXPECT_EQ(run("ctlfan", "-c high"), 0);
}

TEST_F(Bending, DelayComesBeforeTheWork) {
  bend({.delay = 1});
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(run("ctlled", "-u /PSU#3 -c blink"), 0);
  EXPECT_GE(std::chrono::steady_clock::now() - start, 1s);
  EXPECT_EQ(hardware("led /PSU#3"), "blink");
}

TEST_F(Bending, HangingEndsAtSigterm) {
  bend({.hang = true});
  const pid_t pid = start_blinking();
  await_start();
  int status = 0;
  EXPECT_FALSE(ends_within(pid, 100ms, &status));
  kill(pid, SIGTERM);
  status = base::wait_status_of(pid);
  EXPECT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(WTERMSIG(status), SIGTERM);
  EXPECT_FALSE(last_run("ctlled")->status);
}

TEST_F(Bending, HangingWithAnExitStatusEndsWithItAtSigterm) {
  bend({.hang = true, .exit = 1});
  const pid_t pid = start_blinking();
  ASSERT_TRUE(eventually([&] { return has_sigterm("SigCgt", pid); }));
  kill(pid, SIGTERM);
  const int status = base::wait_status_of(pid);
  EXPECT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 1);
}

TEST_F(Bending, IgnoringSigtermIsEndedBySigkillAlone) {
  bend({.ignore_term = true, .hang = true, .exit = 1});
  const pid_t pid = start_blinking();
  await_start();
  EXPECT_TRUE(has_sigterm("SigIgn", pid));
  kill(pid, SIGTERM);
  int status = 0;
  EXPECT_FALSE(ends_within(pid, 300ms, &status));
  kill(pid, SIGKILL);
  EXPECT_TRUE(ends_within(pid, 5s, &status));
  EXPECT_EQ(WTERMSIG(status), SIGKILL);
}

TEST_F(Bending, DyingIsByTheSignalThatIsSet) {
  for (const int signal : {SIGKILL, SIGSEGV, SIGTERM}) {
    bend({.ignore_term = signal == SIGTERM, .die = signal});
    const int status = base::wait_status_of(start_blinking());
    EXPECT_TRUE(WIFSIGNALED(status)) << signal;
    EXPECT_EQ(WTERMSIG(status), signal);
  }
  EXPECT_EQ(hardware("led /PSU#3"), "");
}

TEST_F(Bending, IsKeptWholeInTheBox) {
  bend({.ignore_term = true, .delay = 7, .hang = true, .die = 9, .exit = 3});
  const box::Bend kept = box::bend_of(box::TextDatabase(place_), "ctlled");
  EXPECT_TRUE(kept.ignore_term);
  EXPECT_EQ(kept.delay, 7u);
  EXPECT_TRUE(kept.hang);
  EXPECT_EQ(kept.die, 9);
  EXPECT_EQ(kept.exit, 3);
  EXPECT_TRUE(box::bend_of(box::TextDatabase(place_), "ctlfan").straight());
  bend({});
  EXPECT_TRUE(box::bend_of(box::TextDatabase(place_), "ctlled").straight());
  EXPECT_EQ(run("ctlled", "-u /PSU#3 -c blink"), 0);
}

TEST_F(Bending, CanBeOfOneStartAlone) {
  box::deviate(place_, {box::PointKind::kProgram, "ctlled", 2, {box::Way::kExit, 206}, 0});
  box::deviate(place_, {box::PointKind::kProgram, "ctlled", 3, {box::Way::kSignal, SIGTERM}, 0});
  box::deviate(place_, {box::PointKind::kProgram, "ctlled", 4, {box::Way::kHang, 0}, 0});
  EXPECT_EQ(run("ctlled", "-u /PSU#3 -c blink"), 0);
  EXPECT_EQ(run("ctlled", "-u /PSU#3 -c off"), 206);
  EXPECT_EQ(hardware("led /PSU#3"), "blink");
  EXPECT_EQ(base::wait_status_of(start("ctlled", "-u /PSU#3 -c off")), SIGTERM);
  const pid_t pid = start("ctlled", "-u /PSU#3 -c off");
  int status = 0;
  EXPECT_FALSE(ends_within(pid, 200ms, &status));
  kill(pid, SIGKILL);
  EXPECT_TRUE(ends_within(pid, 5s, &status));
  EXPECT_EQ(run("ctlled", "-u /PSU#3 -c off"), 0);
}

}  // namespace
