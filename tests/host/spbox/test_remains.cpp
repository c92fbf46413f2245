// What a command that was killed leaves in its box, and who takes it away.
#include <unistd.h>

#include <array>
#include <csignal>
#include <fstream>
#include <sstream>

#include "host/box/inhabitants.h"
#include "host/box/trace_ring.h"
#include "host/terminal/background_program.h"
#include "tests/eventually.h"
#include "tests/host/spbox/spbox_test.h"

namespace {

namespace fs = std::filesystem;

constexpr std::uint32_t kStarted = 0x110C0024, kIndicator = 0x110C0372, kPagerRuns = 0x110C02E2;

class Remains : public SpboxTest {
 protected:
  void SetUp() override { make_box("qa"); }
  void TearDown() override {
    for (const pid_t process : box::inhabitants(place())) kill(process, SIGKILL);
  }

  // A process that its command has left behind.
  pid_t left_behind() const { return std::stoi(shell("sleep 100 >/dev/null 2>&1 & echo $!").output); }
  // Kills spbox while it runs a command, and returns what the command has written into its /tmp/ready.
  std::istringstream left_by_killed_spbox(const char *command) const {
    const std::string script =
        "cd " + scratch_.path().string() + "; " SPBOX " run box -- sh -c \"$0\" >/dev/null & " +
        "until test -e box/tmp/ready; do sleep 0.02; done; kill -KILL $!; wait 2>/dev/null; cat box/tmp/ready";
    return std::istringstream(run_to_end({"/bin/sh", "-c", script, command}).output);
  }
  bool is_there(pid_t process) const { return box::is_inside(process, place()); }
  void record(std::uint32_t event, const std::array<std::uint32_t, 4> &words) const {
    box::TraceRing ring;
    ASSERT_TRUE(ring.map(place().trace().c_str()));
    ring.append(7, 0x8001, 15, event, words.data(), 4);
  }
};

TEST_F(Remains, AKilledCommandTakesAlongWhatItStarted) {
  for (const char *const signal : {"KILL", "SEGV"}) {
    const Done result =
        shell("sleep 100 >/dev/null 2>&1 & setsid sh -c 'sleep 100 & sleep 100' >/dev/null 2>&1 & kill -" +
              std::string(signal) + " $$");
    EXPECT_GT(result.exit_status, 128);
    EXPECT_TRUE(box::inhabitants(place()).empty()) << signal;
  }
}

TEST_F(Remains, ACommandThatEndsByItselfMayLeaveWhatItLikes) {
  for (const char *const end : {"exit 0", "exit 7", "kill -TERM $$", "kill -INT $$"}) {
    const Done result = shell("sleep 100 >/dev/null 2>&1 & echo $!; " + std::string(end));
    const pid_t left = std::stoi(result.output);
    EXPECT_TRUE(is_there(left)) << end;
    kill(left, SIGKILL);
  }
}

TEST_F(Remains, ACommandDiesWithItsSpbox) {
  pid_t command = 0;
  ASSERT_TRUE(left_by_killed_spbox("echo $$ >/tmp/it; mv /tmp/it /tmp/ready; exec sleep 100") >> command);
  EXPECT_TRUE(eventually([&] { return !box::state_of(command); }));
}

// With a session of its own, and one more process in it. The process ids are in the box's /tmp.
constexpr const char *kLeavesTwo =
    "sleep 100 >/dev/null 2>&1 & echo $! >/tmp/it; setsid sh -c 'sleep 100 & echo $! >>/tmp/it; mv /tmp/it /tmp/ready; "
    "sleep 100' >/dev/null 2>&1 & sleep 100";

class AfterAKilledSpbox : public Remains, public testing::WithParamInterface<Words> {};

TEST_P(AfterAKilledSpbox, TheNextOneEndsWhatTheCommandHasStarted) {
  const pid_t other = left_behind();
  std::istringstream left = left_by_killed_spbox(kLeavesTwo);
  pid_t one = 0, two = 0;
  ASSERT_TRUE(left >> one >> two);
  EXPECT_TRUE(is_there(one) && is_there(two)) << "they outlive it";
  done(GetParam());
  for (const pid_t process : {one, two}) EXPECT_FALSE(box::state_of(process)) << process;
  EXPECT_EQ(kill(other, SIGKILL), 0) << "what an ended command has left stays";
  for (const auto &entry : fs::directory_iterator(place().root() / "mgb/lib")) {
    EXPECT_FALSE(entry.path().filename().string().starts_with("run.")) << entry.path();
  }
}

INSTANTIATE_TEST_SUITE_P(Verbs, AfterAKilledSpbox,
                         testing::Values(Words{"run", "box", "--", "true"},
                                         Words{"create", "box", "--model", "qb1", "--force"}),
                         [](const auto &row) { return row.param[0]; });

TEST_F(Remains, AKilledCommandsListFileIsRemovedWithIt) {
  EXPECT_EQ(shell("echo a list >/tmp/mainte_fru_list.$$; kill -KILL $$").exit_status, 137);
  EXPECT_EQ(shell("ls /tmp | grep fru_list").output, "");
}

TEST_F(Remains, TheNextCommandRemovesTheListFilesOfTheDead) {
  const pid_t alive = left_behind();
  for (const std::string &name :
       {std::string("mainte_fru_list.999999999"), std::string("mainte_fru_list.") + std::to_string(getpid()),
        "mainte_fru_list." + std::to_string(alive), std::string("mainte_fru_list.x"),
        std::string("another_list.999999999")}) {
    std::ofstream(place().tmp() / name) << "a list\n";
  }
  fs::create_symlink("mainte_fru_list.x", place().tmp() / "mainte_fru_list.999999998");
  EXPECT_EQ(shell("cd /tmp; ls *_list.*").output, "another_list.999999999\nmainte_fru_list." + std::to_string(alive) +
                                                      "\nmainte_fru_list.999999998\nmainte_fru_list.x\n");
}

TEST_F(Remains, TheNextCommandEndsTheLibrarysChildrenWhoseParentsDied) {
  const pid_t program = left_behind(), indicator = left_behind(), pager = left_behind(), other = left_behind();
  record(kStarted, {999999999, 1, 10, static_cast<std::uint32_t>(program)});
  record(kIndicator, {999999999, 1, static_cast<std::uint32_t>(indicator), 0});
  record(kPagerRuns, {static_cast<std::uint32_t>(pager), 1, 0, 0});
  shell("true");
  EXPECT_FALSE(is_there(program));
  EXPECT_FALSE(is_there(indicator));
  EXPECT_FALSE(is_there(pager));
  EXPECT_TRUE(is_there(other)) << "of this one the library knows nothing";
}

TEST_F(Remains, AChildWhoseParentWorksOnStays) {
  terminal::BackgroundProgram busy({"/usr/bin/env", "-C", scratch_.path(), SPBOX, "run", "box", "--", "sh", "-c",
                                    "sleep 100 & echo $! >/tmp/child; mv /tmp/child /tmp/ready; wait; true"});
  ASSERT_TRUE(eventually([&] { return fs::exists(place().tmp() / "ready"); }));
  pid_t child = 0;
  std::ifstream(place().tmp() / "ready") >> child;
  record(kStarted, {999999999, 1, 10, static_cast<std::uint32_t>(child)});
  shell("true");
  EXPECT_TRUE(is_there(child));
  kill(child, SIGKILL);
  EXPECT_EQ(busy.wait(), 0);
}

TEST_F(Remains, AProcessThatEndsWhileItIsLookedAtIsGone) {
  const std::string its_stat = "/proc/" + std::to_string(getpid()) + "/stat";
  const Done result = run_to_end(
      {"/bin/sh", "-c",
       "cd " + scratch_.path().string() +
           "; export ASAN_OPTIONS=detect_leaks=0;"  // the leak checker cannot work in a program that is traced
           " exec strace -f -qq -o /dev/null -P " +
           its_stat + " -e inject=read:error=ESRCH " SPBOX " run box -- sh -c 'sleep 100 & kill -KILL $$'"});
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.exit_status, 137);
  EXPECT_TRUE(box::inhabitants(place()).empty());
}

}  // namespace
