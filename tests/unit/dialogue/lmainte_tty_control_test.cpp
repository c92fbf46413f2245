#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <vector>

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include "tests/unit/doubles/library_test.h"
#include "tests/unit/doubles/system_calls.h"

namespace {

using doubles::Lines;
using doubles::machine;

constexpr tcflag_t termios::*kInput = &termios::c_iflag;
constexpr tcflag_t termios::*kLocal = &termios::c_lflag;

// Everything that a terminal has, as numbers.
std::vector<unsigned> fields(const termios &terminal) {
  std::vector<unsigned> all = {terminal.c_iflag, terminal.c_oflag, terminal.c_cflag, terminal.c_lflag};
  all.insert(all.end(), terminal.c_cc, terminal.c_cc + NCCS);
  return all;
}

class LmainteTtyControl : public doubles::LibraryTest {
 protected:
  void SetUp() override {
    LibraryTest::SetUp();
    machine().terminal = some_terminal(0);
  }

  // A terminal with other characters than any that are set here, and with these flags.
  static termios some_terminal(tcflag_t flags) {
    termios terminal = {};
    terminal.c_iflag = terminal.c_oflag = terminal.c_cflag = terminal.c_lflag = flags;
    for (unsigned n = 0; n < NCCS; ++n) terminal.c_cc[n] = static_cast<cc_t>(100 + n);
    return terminal;
  }

  Lines calls() { return machine().calls; }
};

struct FlagRow {
  const char *says;
  int32_t mode, setting;
  tcflag_t termios::*word;
  tcflag_t flag;
  bool on;
};

constexpr FlagRow kFlags[] = {
    {"1 switches echo on", 0, 1, kLocal, ECHO, true},
    {"0 switches echo off", 0, 0, kLocal, ECHO, false},
    {"2 is not on", 0, 2, kLocal, ECHO, false},
    {"-1 is not on", 0, -1, kLocal, ECHO, false},
    {"1 switches signals on", 3, 1, kLocal, ISIG, true},
    {"0 switches signals off", 3, 0, kLocal, ISIG, false},
    {"257 is not on", 3, 257, kLocal, ISIG, false},
    {"1 switches flow control on", 6, 1, kInput, IXON, true},
    {"0 switches flow control off", 6, 0, kInput, IXON, false},
};

TEST_F(LmainteTtyControl, SwitchesOneFlagAndLeavesAllOthers) {
  for (const auto &row : kFlags) {
    for (const tcflag_t all : {tcflag_t{0}, ~tcflag_t{0}}) {
      auto expected = some_terminal(all);
      if (row.on)
        expected.*row.word |= row.flag;
      else
        expected.*row.word &= ~row.flag;
      machine().terminal = some_terminal(all);
      EXPECT_EQ(lmainte_tty_control(row.mode, row.setting), 0) << row.says;
      EXPECT_EQ(fields(machine().terminal), fields(expected)) << row.says;
    }
  }
}

struct CharacterRow {
  const char *says;
  int32_t mode, setting;
  size_t slot;
  cc_t character;
};

constexpr CharacterRow kCharacters[] = {
    {"the minimum count becomes 4", 1, 1, VMIN, 4},
    {"the minimum count becomes 255", 1, 0, VMIN, 255},
    {"2 is not on for the minimum count", 1, 2, VMIN, 255},
    {"the quit character becomes Ctrl-C", 4, 1, VQUIT, 3},
    {"the quit character becomes 255", 4, 0, VQUIT, 255},
    {"-1 is not on for the quit character", 4, -1, VQUIT, 255},
    {"the erase character becomes Ctrl-backslash", 5, 1, VERASE, 28},
    {"the erase character becomes 255", 5, 0, VERASE, 255},
};

TEST_F(LmainteTtyControl, SetsOneCharacterAndLeavesAllOthers) {
  for (const auto &row : kCharacters) {
    auto expected = some_terminal(0);
    expected.c_cc[row.slot] = row.character;
    machine().terminal = some_terminal(0);
    EXPECT_EQ(lmainte_tty_control(row.mode, row.setting), 0) << row.says;
    EXPECT_EQ(fields(machine().terminal), fields(expected)) << row.says;
  }
}

TEST_F(LmainteTtyControl, AttributesAreThoseOfStandardOutputAndChangeAtOnce) {
  for (const int32_t mode : {0, 1, 3, 4, 5, 6}) {
    machine().calls.clear();
    EXPECT_EQ(lmainte_tty_control(mode, 1), 0);
    EXPECT_EQ(calls(), (Lines{"tcgetattr 1", "tcsetattr 1 now"})) << mode;
  }
}

TEST_F(LmainteTtyControl, FlushWorksOnStandardInput) {
  EXPECT_EQ(lmainte_tty_control(2, 1), 0);
  EXPECT_EQ(lmainte_tty_control(2, 0), 0);
  EXPECT_EQ(lmainte_tty_control(2, -1), 0);
  EXPECT_EQ(lmainte_tty_control(2, 2), 0);
  EXPECT_EQ(calls(), (Lines{"tcflush 0 input", "tcflush 0 output", "tcflush 0 output", "tcflush 0 output"}));
}

TEST_F(LmainteTtyControl, RecordsModeAndSettingAndTheResult) {
  lmainte_tty_control(0, 2);
  lmainte_tty_control(2, 1);
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C0010", "100 110C0012 0 2", "100 110C0011 0", "100 110C0010",
                                     "100 110C0012 2 1", "100 110C0011 0"}));
}

TEST_F(LmainteTtyControl, UnknownModeTouchesNothing) {
  for (const int32_t mode : {7, -1, 256, INT32_MIN, INT32_MAX}) {
    machine().start();
    const std::string values = " " + std::to_string(mode) + " 1";
    EXPECT_EQ(lmainte_tty_control(mode, 1), 8) << mode;
    EXPECT_EQ(calls(), Lines{}) << mode;
    EXPECT_EQ(doubles::trace(),
              (Lines{"100 110C0010", "100 110C0012" + values, "805 110C1012" + values, "100 110C0011 8"}))
        << mode;
  }
}

TEST_F(LmainteTtyControl, OutputThatIsNoTerminalFailsAllButTheFlush) {
  machine().is_terminal[1] = false;
  for (const int32_t mode : {0, 1, 3, 4, 5, 6}) EXPECT_EQ(lmainte_tty_control(mode, 1), 8) << mode;
  EXPECT_EQ(lmainte_tty_control(2, 1), 0);
}

TEST_F(LmainteTtyControl, InputThatIsNoTerminalFailsTheFlushAlone) {
  machine().is_terminal[0] = false;
  EXPECT_EQ(lmainte_tty_control(2, 1), 8);
  EXPECT_EQ(lmainte_tty_control(0, 1), 0);
}

TEST_F(LmainteTtyControl, AttributesThatCannotBeReadEndTheCall) {
  machine().fail("tcgetattr", 1, ENOTTY);
  EXPECT_EQ(lmainte_tty_control(0, 1), 8);
  EXPECT_EQ(calls(), (Lines{"tcgetattr 1"}));
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C0010", "800A 110C1011 -1 25", "100 110C0011 8"}));
}

TEST_F(LmainteTtyControl, AttributesThatCannotBeSetEndTheCall) {
  machine().fail("tcsetattr", 1, EIO, 3);
  EXPECT_EQ(lmainte_tty_control(0, 1), 8);
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C0010", "100 110C0012 0 1", "800A 110C1014 3 5", "100 110C0011 8"}));
  EXPECT_EQ(fields(machine().terminal), fields(some_terminal(0)));
}

TEST_F(LmainteTtyControl, FlushThatFailsEndsTheCall) {
  machine().fail("tcflush", 1, EINTR);
  EXPECT_EQ(lmainte_tty_control(2, 0), 8);
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C0010", "100 110C0012 2 0", "800A 110C1013 -1 4", "100 110C0011 8"}));
}

// ---- on a pseudo-terminal

class LmainteTtyControlOnATerminal : public doubles::LibraryTest {
 protected:
  // Runs with standard input and output on a terminal of their own. What fails there is told on the true output.
  void on_a_terminal(const std::function<void()> &body) {
    doubles::in_a_process_of_its_own([&] {
      master_ = posix_openpt(O_RDWR | O_NOCTTY);
      ASSERT_GE(master_, 0) << std::strerror(errno);
      ASSERT_EQ(grantpt(master_), 0);
      ASSERT_EQ(unlockpt(master_), 0);
      const int slave = open(ptsname(master_), O_RDWR | O_NOCTTY);
      ASSERT_GE(slave, 0) << std::strerror(errno);
      const int output = dup(1);
      dup2(slave, 0);
      dup2(slave, 1);
      machine().terminal_is_real = true;
      testing::TestPartResultArray results;
      {
        const testing::ScopedFakeTestPartResultReporter kept(&results);
        body();
      }
      std::fflush(stdout);
      dup2(output, 1);
      tell(results);
    });
  }

  static void tell(const testing::TestPartResultArray &results) {
    for (int i = 0; i < results.size(); ++i) {
      const testing::TestPartResult &result = results.GetTestPartResult(i);
      if (result.failed()) ADD_FAILURE_AT(result.file_name(), result.line_number()) << result.message();
    }
  }

  static termios attributes() {
    termios now = {};
    EXPECT_EQ(__real_tcgetattr(1, &now), 0);
    return now;
  }
  static int waiting() {
    int count = -1;
    EXPECT_EQ(ioctl(0, FIONREAD, &count), 0);
    return count;
  }
  // Types a line and returns once it has arrived.
  void type(const char *text) {
    EXPECT_GT(write(master_, text, std::strlen(text)), 0);
    pollfd input = {0, POLLIN, 0};
    EXPECT_EQ(poll(&input, 1, 10000), 1);
  }

  int master_ = -1;
};

TEST_F(LmainteTtyControlOnATerminal, ChangesWhatItSays) {
  on_a_terminal([] {
    const auto before = attributes();
    EXPECT_EQ(lmainte_tty_control(0, 0), 0);
    EXPECT_EQ(attributes().c_lflag, before.c_lflag & ~tcflag_t{ECHO});
    EXPECT_EQ(lmainte_tty_control(0, 1), 0);
    EXPECT_EQ(fields(attributes()), fields(before));
    EXPECT_EQ(lmainte_tty_control(3, 0), 0);
    EXPECT_EQ(lmainte_tty_control(6, 0), 0);
    EXPECT_EQ(attributes().c_lflag & ISIG, 0u);
    EXPECT_EQ(attributes().c_iflag & IXON, 0u);
  });
}

TEST_F(LmainteTtyControlOnATerminal, SetsItsCharacters) {
  on_a_terminal([] {
    for (const int32_t mode : {1, 4, 5}) EXPECT_EQ(lmainte_tty_control(mode, 1), 0);
    EXPECT_EQ(attributes().c_cc[VMIN], 4);
    EXPECT_EQ(attributes().c_cc[VQUIT], 3);
    EXPECT_EQ(attributes().c_cc[VERASE], 28);
    EXPECT_EQ(lmainte_tty_control(4, 0), 0);
    EXPECT_EQ(attributes().c_cc[VQUIT], 255);
  });
}

TEST_F(LmainteTtyControlOnATerminal, DiscardsWhatWasTyped) {
  on_a_terminal([this] {
    type("1\n");
    EXPECT_EQ(waiting(), 2);
    EXPECT_EQ(lmainte_tty_control(2, 0), 0);
    EXPECT_EQ(waiting(), 2);
    EXPECT_EQ(lmainte_tty_control(2, 1), 0);
    EXPECT_EQ(waiting(), 0);
  });
}

}  // namespace
