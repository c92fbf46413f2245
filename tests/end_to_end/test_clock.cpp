// The time of a box: `spbox run --speed`, with real programs.
#include <csignal>
#include <fstream>
#include <sstream>
#include <thread>

#include "host/box/place.h"
#include "host/clock/guest.h"
#include "host/terminal/background_program.h"
#include "tests/end_to_end/box_test.h"
#include "tests/eventually.h"

namespace {

using end_to_end::Words;

class Clock : public end_to_end::BoxTest {
 protected:
  Clock() {
    stay_in_real_time();  // `spbox run` keeps the box's
    make_box("qa");
  }

  Words at_speed(const std::string &speed, const Words &command) const {
    Words words{SPBOX, "run", "--speed", speed, box(), "--"};
    words.insert(words.end(), command.begin(), command.end());
    return words;
  }
  std::string page() const { return box::Place(box()).clock(); }
};

// Also where nobody may take a descriptor from another process.
TEST_F(Clock, IsHadByEachCallThatWaitsOrTellsTheTime) {
  Words command = at_speed("full", {CLOCK_CALLS});
  command.insert(command.begin(), {CLOCK_CALLS, "private"});
  const auto done = run_to_end(command);
  EXPECT_EQ(done.exit_status, 0);
  std::istringstream lines(done.output);
  int calls = 0;
  for (std::string line; std::getline(lines, line); ++calls) {
    EXPECT_TRUE(line.ends_with(": ok")) << line;
  }
  EXPECT_EQ(calls, 40) << done.output;
  EXPECT_FALSE(box_time::is_kept(page()));
}

// Programs of another machine wait by calls of their own, with a timer in the place of a limit.
TEST_F(Clock, IsWhatSelectLeavesOfItsLimitOnAnotherMachine) {
  EXPECT_EQ(run_to_end(at_speed("full", {CLOCK_CALLS, "select", TARGET_PLATFORM})).output,
            "0 0.000000; 1 997; -1 1 48\n");
}

TEST_F(Clock, EndsWhatHasALimitByATimer) {
  EXPECT_EQ(run_to_end(at_speed("full", {"timeout", "100", "sleep", "1000"})).exit_status, 124);
}

// With more work beside it than the machine has processors.
TEST_F(Clock, KeepsTheOrderOnALoadedMachine) {
  std::vector<terminal::BackgroundProgram> load;
  for (int i = 0; i < 6; ++i) load.emplace_back(Words{"nice", "sh", "-c", "while :; do :; done"});
  for (const char *speed : {"full", "20"}) {
    EXPECT_EQ(run_to_end(at_speed(speed, {CLOCK_CALLS, "order"})).output, "012012012012\n") << speed;
  }
}

TEST_F(Clock, PassesForAHundredThreads) {
  std::string numbers;
  for (int number = 1; number <= 100; ++number) numbers += std::to_string(number) + " ";
  EXPECT_EQ(run_to_end(at_speed("full", {CLOCK_CALLS, "many"})).output, numbers);
}

TEST_F(Clock, IsThatOfAllWhoWorkOnTheBox) {
  terminal::BackgroundProgram command(at_speed("full", {"sh", "-c", "while [ ! -e /tmp/go ]; do sleep 100; done"}));
  ASSERT_TRUE(eventually([&] { return box_time::is_kept(page()); }));
  const auto other = run_to_end(at_speed("2", {"true"}));
  EXPECT_EQ(other.exit_status, 1);
  EXPECT_NE(other.output.find("the time of this box is kept already"), std::string::npos) << other.output;
  EXPECT_EQ(run_to_end(in_box({"sleep", "1000"})).exit_status, 0) << "a command of another spbox";
  const auto technician = run_to_end({SPBOX, "technician", box(), "--do", "after 600; pull /PSU#0"});
  EXPECT_NE(technician.output.find(" 600.0 s  pull /PSU#0"), std::string::npos) << technician.output;
  std::ofstream(box() / "tmp/go") << "go";
  EXPECT_EQ(command.wait(end_to_end::kLater), 0);
}

// What stays behind its keeper sleeps, and does not look for the time again and again.
TEST_F(Clock, CostsNothingWhereItsKeeperHasLeft) {
  const auto done = run_to_end(at_speed(
      "full",
      {"sh", "-c", "setsid sh -c 'echo $$ >/tmp/sleeper; exec sleep 50000' >/dev/null 2>&1 </dev/null & sleep 1"}));
  ASSERT_EQ(done.exit_status, 0) << done.output;
  pid_t sleeper = 0;
  ASSERT_TRUE(std::ifstream(box() / "tmp/sleeper") >> sleeper);
  const auto wakings = [&] {
    std::ifstream status("/proc/" + std::to_string(sleeper) + "/status");
    long count = -1;
    for (std::string word; status >> word;) {
      if (word == "voluntary_ctxt_switches:") status >> count;
    }
    return count;
  };
  const long before = wakings();
  std::this_thread::sleep_for(std::chrono::milliseconds(500));
  const long after = wakings();
  kill(sleeper, SIGKILL);
  EXPECT_GE(before, 0);
  EXPECT_LE(after - before, 25);
}

TEST_F(Clock, IsNotKeptWhereNobodyAsksForIt) {
  const auto done = run_to_end(in_box({"sh", "-c", "cat /etc/ld.so.preload; ls /mgb/lib /.etc"}));
  EXPECT_EQ(done.output.find("clock"), std::string::npos) << done.output;
  EXPECT_NE(done.output.find("/.etc"), std::string::npos) << done.output;  // there is none
}

TEST_F(Clock, HasASpeedThatMakesSense) {
  for (const char *speed : {"0", "1001", "fast", ""}) {
    const auto done = run_to_end(at_speed(speed, {"true"}));
    EXPECT_EQ(done.exit_status, 2) << done.output;
  }
}

}  // namespace
