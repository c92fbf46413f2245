#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <iterator>
#include <system_error>

#include "host/base/pipe.h"
#include "host/terminal/terminal.h"
#include "tests/eventually.h"

namespace {

using namespace std::chrono_literals;
using terminal::eldest;
using terminal::Ending;
using terminal::Mode;
using terminal::Process;
using terminal::Terminal;

constexpr auto kSoon = 5s;

std::vector<std::string> shell(const std::string &script) {
  return {"/bin/sh", "-c", script};
}

bool forks_fail = false;

void fail_forks(bool fail) {
  forks_fail = fail;
}

bool contains(const std::vector<std::string> &lines, const std::string &line) {
  return std::find(lines.begin(), lines.end(), line) != lines.end();
}

TEST(TerminalScreen, ShowsWhatTheCommandPrints) {
  Terminal terminal;
  terminal.start(shell("echo one; echo two"));
  EXPECT_EQ(terminal.wait_for_exit(kSoon), (Ending{false, 0}));
  const auto screen = terminal.screen();
  ASSERT_EQ(screen.size(), 24U);
  EXPECT_EQ(screen[0], "one");
  EXPECT_EQ(screen[1], "two");
  EXPECT_EQ(screen[2], "");
}

TEST(TerminalScreen, IsTheTextAsItStandsAfterCursorMovesAndErasures) {
  Terminal terminal;
  terminal.start(shell(R"(printf 'wrong\rright\n'; printf 'gone\033[2K\rhere\n'; printf '\033[5;10Hplaced')"));
  ASSERT_TRUE(terminal.wait_for("placed", kSoon));
  const auto screen = terminal.screen();
  EXPECT_EQ(screen[0], "right");
  EXPECT_EQ(screen[1], "here");
  EXPECT_EQ(screen[4], "         placed");
}

TEST(TerminalScreen, ShowsLettersBeyondAscii) {
  Terminal terminal;
  terminal.start(shell(R"(printf '\303\251 \342\202\254 \360\237\224\247!')"));
  EXPECT_TRUE(terminal.wait_for("\303\251 \342\202\254 \360\237\224\247!", kSoon));
}

TEST(TerminalScreen, KeepsWhatScrollsAway) {
  Terminal terminal;
  terminal.start(shell("for i in $(seq 30); do echo line $i; done"));
  ASSERT_TRUE(terminal.wait_for_exit(kSoon));
  EXPECT_FALSE(contains(terminal.screen(), "line 1"));
  EXPECT_TRUE(contains(terminal.everything_shown(), "line 1"));
  EXPECT_TRUE(contains(terminal.everything_shown(), "line 30"));
}

TEST(TerminalScreen, HasTheSizeThatTheCommandIsTold) {
  Terminal terminal({10, 40});
  terminal.start(shell("stty size"));
  EXPECT_TRUE(terminal.wait_for("10 40", kSoon));
  EXPECT_EQ(terminal.screen().size(), 10U);
}

TEST(TerminalScreen, SaysWhenATextDoesNotComeUp) {
  Terminal terminal;
  terminal.start(shell("echo one; sleep 5"));
  EXPECT_TRUE(terminal.wait_for("one", kSoon));
  EXPECT_FALSE(terminal.wait_for("two", 100ms));
}

TEST(TerminalScreen, GivesUpOnATextWhenTheCommandHasEnded) {
  Terminal terminal;
  terminal.start(shell("echo one"));
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_FALSE(terminal.wait_for("two", 60s));
  EXPECT_LT(std::chrono::steady_clock::now() - begin, 10s);
}

TEST(TerminalScreen, GivesUpOnATextWhileTheCommandPrintsOnAndOn) {
  Terminal terminal;
  terminal.start({"yes"});
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_FALSE(terminal.wait_for("no", 100ms));
  EXPECT_LT(std::chrono::steady_clock::now() - begin, 10s);
}

TEST(TerminalKeys, ReachTheCommand) {
  Terminal terminal;
  terminal.start(shell("read word; echo got $word"));
  terminal.type("yes\n");
  EXPECT_TRUE(terminal.wait_for("got yes", kSoon));
}

// More than the kernel keeps for a command.
const std::string kMuch = [] {
  std::string lines;
  while (lines.size() < 300'000) lines += "yes\n";
  return lines;
}();

TEST(TerminalKeys, ThatTheCommandReadsSlowlyAllReachIt) {
  Terminal terminal;
  terminal.start(shell("stty -echo; echo ready; sleep 0.2; wc -l"));
  ASSERT_TRUE(terminal.wait_for("ready", kSoon));
  EXPECT_TRUE(terminal.type(kMuch + "\004", kSoon));
  EXPECT_TRUE(terminal.wait_for("75000", kSoon)) << terminal.screen()[1];
}

TEST(TerminalKeys, ThatNobodyReadsAreGivenUpInTime) {
  Terminal terminal;
  terminal.start(shell("stty -echo; echo ready; exec sleep 60"));
  ASSERT_TRUE(terminal.wait_for("ready", kSoon));
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_FALSE(terminal.type(kMuch, 100ms));
  EXPECT_LT(std::chrono::steady_clock::now() - begin, 10s);
}

TEST(TerminalKeys, ThatTheCommandLeavesUnreadAreLostWithIt) {
  Terminal terminal;
  terminal.start(shell("stty -echo; echo ready; sleep 0.2"));
  ASSERT_TRUE(terminal.wait_for("ready", kSoon));
  EXPECT_FALSE(terminal.type(kMuch, 60s));
  EXPECT_EQ(terminal.wait_for_exit(kSoon), (Ending{false, 0}));
}

TEST(TerminalKeys, ThatNobodyReadsAreGivenUpWhenTheAlarmRings) {
  base::Pipe alarm;
  Terminal terminal({}, alarm.out.get());
  terminal.start(shell("stty -echo; echo ready; exec sleep 60"));
  ASSERT_TRUE(terminal.wait_for("ready", kSoon));
  ASSERT_EQ(write(alarm.in.get(), "", 1), 1);
  EXPECT_THROW(terminal.type(kMuch, 60s), terminal::Interrupted);
  terminal.end(0s);
}

TEST(TerminalKeys, CanBeTypedAtACommandThatPrintsOnAndOn) {
  Terminal terminal;
  terminal.start({"yes"});
  EXPECT_TRUE(terminal.type("\003"));
  EXPECT_EQ(terminal.wait_for_exit(kSoon), (Ending{true, SIGINT}));
}

// Where is the cursor, it asks, and does not read the answers.
TEST(TerminalAnswers, ThatNobodyReadsHoldNothingUp) {
  Terminal terminal;
  terminal.start(shell(R"sh(stty -echo; printf '\033[6n%.0s' $(seq 12000); echo asked; sleep 60)sh"));
  EXPECT_TRUE(terminal.wait_for("asked", kSoon));
  EXPECT_FALSE(terminal.wait_for("never", 100ms));
}

TEST(TerminalAnswers, ReachACommandThatReadsThem) {
  Terminal terminal;
  terminal.start(shell(R"sh(stty -echo -icanon; printf 'ab\033[6n'; head -c 6 | od -An -c)sh"));
  EXPECT_TRUE(terminal.wait_for("033   [   1   ;   3   R", kSoon));
}

TEST(TerminalKeys, CtrlCInterruptsTheCommand) {
  Terminal terminal;
  terminal.start(shell("echo ready; exec sleep 60"));
  ASSERT_TRUE(terminal.wait_for("ready", kSoon));
  terminal.type("\003");
  EXPECT_EQ(terminal.wait_for_exit(kSoon), (Ending{true, SIGINT}));
}

TEST(TerminalKeys, CtrlDEndsTheInput) {
  Terminal terminal;
  terminal.start(shell("read word || echo nothing"));
  terminal.type("\004");
  EXPECT_TRUE(terminal.wait_for("nothing", kSoon));
}

TEST(TerminalCommand, HasTheTerminalAsItsOwnAndRunsInTheForeground) {
  Terminal terminal;
  terminal.start(shell("echo own >/dev/tty; ps -o stat= -p $$"));
  EXPECT_TRUE(terminal.wait_for("own", kSoon));
  EXPECT_TRUE(terminal.wait_for("+", kSoon));  // ps marks the foreground group.
}

TEST(TerminalCommand, EndsWithAStatusOrASignal) {
  Terminal terminal;
  terminal.start(shell("exit 42"));
  EXPECT_EQ(terminal.wait_for_exit(kSoon), (Ending{false, 42}));
  terminal.start(shell("kill -TERM $$"));
  EXPECT_EQ(terminal.wait_for_exit(kSoon), (Ending{true, SIGTERM}));
  terminal.start(shell("sleep 5"));
  EXPECT_EQ(terminal.wait_for_exit(50ms), std::nullopt);
}

TEST(TerminalCommand, ThatCannotBeRunIsAnError) {
  Terminal terminal;
  try {
    terminal.start({"/nowhere/at/all"});
    FAIL() << "no error";
  } catch (const std::system_error &error) {
    EXPECT_EQ(error.code().value(), ENOENT);
    EXPECT_NE(std::string(error.what()).find("/nowhere/at/all"), std::string::npos);
  }
}

TEST(TerminalCommand, ThatCannotBeForkedIsAnError) {
  Terminal terminal;
  fail_forks(true);
  try {
    terminal.start({"true"});
    ADD_FAILURE() << "no error";
  } catch (const std::system_error &error) {
    EXPECT_EQ(error.code().value(), EAGAIN) << error.what();
  }
  fail_forks(false);
  terminal.start({"true"});
  EXPECT_EQ(terminal.wait_for_exit(kSoon), (Ending{false, 0}));
}

// Lets the process have so many descriptors more than it has.
class Room {
 public:
  explicit Room(rlim_t more) {
    getrlimit(RLIMIT_NOFILE, &before_);
    const int next = dup(STDIN_FILENO);
    close(next);
    const rlimit tight{static_cast<rlim_t>(next) + more, before_.rlim_max};
    setrlimit(RLIMIT_NOFILE, &tight);
  }
  ~Room() { setrlimit(RLIMIT_NOFILE, &before_); }
  Room(const Room &) = delete;
  Room &operator=(const Room &) = delete;

 private:
  rlimit before_{};
};

std::ptrdiff_t open_descriptors() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), std::filesystem::directory_iterator());
}

// Seven are needed: two for the terminal, four for two pipes, one to look into /proc when the session ends.
TEST(TerminalDescriptors, AreNoneLeftWhereOneCannotBeHad) {
  const auto before = open_descriptors();
  int failed = 0;
  for (rlim_t more = 0; more < 10; ++more) {
    try {
      const Room room(more);
      Terminal terminal;
      terminal.start({"true"});
      terminal.wait_for_exit(kSoon);
    } catch (const std::system_error &) {
      ++failed;
    }
    EXPECT_EQ(open_descriptors(), before) << "with room for " << more;
  }
  EXPECT_GE(failed, 6);
  EXPECT_LT(failed, 10);
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a process is left";
}

TEST(TerminalProcesses, AreKilledAlsoWhereTheyCannotBeListed) {
  Terminal terminal;
  terminal.start(shell("trap '' TERM HUP; echo ready; while :; do sleep 1; done"));
  ASSERT_TRUE(terminal.wait_for("ready", kSoon));
  const pid_t left = terminal.command();
  const Room none(0);
  EXPECT_THROW(terminal.processes(), std::system_error);
  terminal.end(0s);
  EXPECT_TRUE(eventually([&] { return kill(left, 0) != 0; }));
}

TEST(TerminalCommand, IsToldWhenTheLineIsCut) {
  Terminal terminal;
  char path[] = "/tmp/test_terminal.XXXXXX";
  const int file = mkstemp(path);
  ASSERT_GE(file, 0);
  terminal.start(
      shell(std::string("trap 'echo hung up >") + path + "; exit 3' HUP; echo ready; while :; do sleep 0.05; done"));
  ASSERT_TRUE(terminal.wait_for("ready", kSoon));
  terminal.hang_up();
  EXPECT_EQ(terminal.wait_for_exit(kSoon), (Ending{false, 3}));
  char text[16] = {};
  EXPECT_GT(read(file, text, sizeof text - 1), 0);
  EXPECT_STREQ(text, "hung up\n");
  close(file);
  unlink(path);
}

TEST(TerminalMode, IsWhatTheCommandLeft) {
  Terminal terminal;
  EXPECT_EQ(terminal.mode(), (Mode{true, true, true}));
  terminal.start(shell("stty -echo"));
  ASSERT_TRUE(terminal.wait_for_exit(kSoon));
  EXPECT_EQ(terminal.mode(), (Mode{false, true, true}));
  terminal.start(shell("stty echo -icanon -isig"));
  ASSERT_TRUE(terminal.wait_for_exit(kSoon));
  EXPECT_EQ(terminal.mode(), (Mode{true, false, false}));
}

TEST(TerminalProcesses, AreSeenAfterTheCommandHasLeftThem) {
  Terminal terminal;
  terminal.start(shell("sleep 60 & echo left"));
  ASSERT_TRUE(terminal.wait_for_exit(kSoon));
  EXPECT_EQ(terminal.processes().size(), 1U);
  EXPECT_TRUE(terminal.process("sleep"));
}

TEST(TerminalProcesses, AreFoundByNameBeforeTheirChildrenEvenWhereIdsBeganAnew) {
  const std::vector<Process> processes{{5, 9, "fan"}, {7, 5, "fan"}, {9, 2, "fan"}, {2, 1, "shell"}};
  EXPECT_EQ(eldest(processes, "fan"), 9);
  EXPECT_EQ(eldest(processes, "shell"), 2);
  EXPECT_FALSE(eldest(processes, "led"));
}

TEST(TerminalProcesses, AreNoneAfterACommandThatLeavesNothing) {
  Terminal terminal;
  terminal.start(shell("sleep 0"));
  ASSERT_TRUE(terminal.wait_for_exit(kSoon));
  EXPECT_TRUE(terminal.processes().empty());
}

TEST(TerminalProcesses, AreKilledAndReapedWithTheTerminal) {
  pid_t left = 0;
  {
    Terminal terminal;
    terminal.start(shell("trap '' TERM HUP; echo ready; while :; do sleep 1; done"));
    ASSERT_TRUE(terminal.wait_for("ready", kSoon));
    left = terminal.command();
    EXPECT_EQ(kill(left, 0), 0);
  }
  EXPECT_NE(kill(left, 0), 0);
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
  EXPECT_EQ(errno, ECHILD);
}

// The real pager, in the way in which lists are shown: no standard input, no standard error, two arguments too many.
TEST(TerminalPager, ShowsPageByPage) {
  Terminal terminal;
  terminal.start(
      shell("seq -f 'unit %g' 40 >/tmp/pages.$$; /bin/busybox more /tmp/pages.$$ '2>' /dev/null <&- 2>&-; "
            "rm /tmp/pages.$$"));
  ASSERT_TRUE(terminal.wait_for("--More--", kSoon));
  EXPECT_TRUE(contains(terminal.screen(), "unit 1"));
  EXPECT_FALSE(contains(terminal.everything_shown(), "unit 40"));
  EXPECT_FALSE(terminal.mode().echo);
  terminal.type(" ");
  EXPECT_EQ(terminal.wait_for_exit(kSoon), (Ending{false, 0}));
  EXPECT_TRUE(contains(terminal.screen(), "unit 40"));
  EXPECT_TRUE(terminal.mode().echo);
}

}  // namespace

// Stands before the C library's function of this name.
extern "C" pid_t fork() {
  if (forks_fail) {
    errno = EAGAIN;
    return -1;
  }
  static const auto real = reinterpret_cast<pid_t (*)()>(dlsym(RTLD_NEXT, "fork"));
  return real();
}
