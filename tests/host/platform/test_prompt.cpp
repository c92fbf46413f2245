#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/time.h>

#include <csignal>
#include <cstdio>
#include <string>

#include "host/include/lmainte_host.h"
#include "include/lmainte_platform.h"
#include "tests/host/box/child.h"

namespace {

constexpr std::int32_t kUntouched = -77;

std::string read_all(int fd) {
  std::string text;
  char piece[256];
  for (ssize_t got = 0; (got = read(fd, piece, sizeof piece)) > 0;) text.append(piece, static_cast<std::size_t>(got));
  close(fd);
  return text;
}

// What the operator saw, then the result and the choice, then what the prompt left of the input.
struct Dialogue {
  std::string shown;
  std::string outcome;
  std::string left;
};

// Asks in a process whose standard input holds `typed` and then ends.
Dialogue ask(const std::string &typed, std::int32_t choices = 4) {
  int in[2];
  int out[2];
  int report[2];
  if (pipe(in) != 0 || pipe(out) != 0 || pipe(report) != 0) return {};
  if (write(in[1], typed.data(), typed.size()) != static_cast<ssize_t>(typed.size())) return {};
  close(in[1]);
  const int status = in_child([&] {
    dup2(in[0], STDIN_FILENO);
    dup2(out[1], STDOUT_FILENO);
    std::int32_t choice = kUntouched;
    const std::int32_t result = cli_ask_select(choices, &choice, "Unit? ");
    dprintf(report[1], "%d", result);
    if (choice != kUntouched) dprintf(report[1], ", choice %d", choice);
    std::fflush(stdout);
    return 0;
  });
  close(out[1]);
  close(report[1]);
  Dialogue dialogue{read_all(out[0]), read_all(report[0]), read_all(in[0])};
  if (status != 0) dialogue.outcome = "died: " + std::to_string(status);
  return dialogue;
}

constexpr char kHint[] = "Type a number from 1 to 4, or q to give up.\n";

struct Row {
  const char *says;
  std::string typed;
  std::string outcome;
  int hints;
  std::string left;
};

TEST(Prompt, TakesAnAnswerAndAsksAgainUntilItIsOne) {
  const Row rows[] = {
      {"a number is a choice", "3\n", "0, choice 3", 0, ""},
      {"the first choice is 1", "1\n", "0, choice 1", 0, ""},
      {"the last choice is the number of choices", "4\n", "0, choice 4", 0, ""},
      {"spaces around an answer do not count", " \t2  \r\n", "0, choice 2", 0, ""},
      {"q gives up", "q\n", "1", 0, ""},
      {"Q gives up", " Q\n", "1", 0, ""},
      {"0 is no choice", "0\n2\n", "0, choice 2", 1, ""},
      {"a number too high is no choice", "5\n2\n", "0, choice 2", 1, ""},
      {"a number beyond all bounds is no choice", "4294967297\n18446744073709551617\n2\n", "0, choice 2", 2, ""},
      {"a sign makes no number", "-1\n+1\n2\n", "0, choice 2", 2, ""},
      {"a word is no choice", "two\nquit\n2\n", "0, choice 2", 2, ""},
      {"something behind the number makes it none", "2 3\n2x\n0x2\n2\n", "0, choice 2", 3, ""},
      {"an empty line is no choice", "\n   \n2\n", "0, choice 2", 2, ""},
      {"a zero byte is no choice", std::string("2\0\n1\n", 5), "0, choice 1", 1, ""},
      {"a line too long is one bad answer", std::string(500, '2') + "\n" + std::string(65, ' ') + "\n3\n",
       "0, choice 3", 2, ""},
      {"a line too long is not cut down to an answer", "3" + std::string(64, ' ') + "\n2\n", "0, choice 2", 1, ""},
      {"a line that just fits is read whole", std::string(63, ' ') + "3\n", "0, choice 3", 0, ""},
      {"what follows the answer stays for the next reader", "3\nnext\n", "0, choice 3", 0, "next\n"},
      {"what follows giving up stays too", "q\nnext\n", "1", 0, "next\n"},
      {"an end without an answer is the end of input", "", "2", 0, ""},
      {"an end after a bad answer is the end of input", "nine\n", "2", 1, ""},
      {"a last line without a newline is an answer", "3", "0, choice 3", 0, ""},
      {"a last line without a newline can be a bad one", "nine", "2", 1, ""},
  };
  for (const Row &row : rows) {
    const Dialogue dialogue = ask(row.typed);
    std::string shown = "Unit? ";
    for (int i = 0; i < row.hints; ++i) shown += std::string(kHint) + "Unit? ";
    EXPECT_EQ(dialogue.outcome, row.outcome) << row.says;
    EXPECT_EQ(dialogue.shown, shown) << row.says;
    EXPECT_EQ(dialogue.left, row.left) << row.says;
  }
}

TEST(Prompt, SaysWhatASingleChoiceIs) {
  const Dialogue dialogue = ask("2\n1\n", 1);
  EXPECT_EQ(dialogue.outcome, "0, choice 1");
  EXPECT_EQ(dialogue.shown, "Unit? Type 1, or q to give up.\nUnit? ");
}

TEST(Prompt, RefusesBadArgumentsAndPrintsNothing) {
  for (std::int32_t choices : {0, -1}) {
    const Dialogue dialogue = ask("1\n", choices);
    EXPECT_EQ(dialogue.outcome, "-1");
    EXPECT_EQ(dialogue.shown, "");
    EXPECT_EQ(dialogue.left, "1\n");
  }
  std::int32_t choice = 0;
  EXPECT_EQ(cli_ask_select(1, nullptr, "Unit? "), LMAINTE_HOST_ASK_FAILED);
  EXPECT_EQ(cli_ask_select(1, &choice, nullptr), LMAINTE_HOST_ASK_FAILED);
}

TEST(Prompt, APromptThatCannotBeShownIsAFailure) {
  EXPECT_EQ(in_child([] {
              dup2(open("/dev/full", O_WRONLY), STDOUT_FILENO);
              std::int32_t choice = 0;
              return cli_ask_select(1, &choice, "Unit? ") == LMAINTE_HOST_ASK_FAILED ? 0 : 1;
            }),
            0);
}

TEST(Prompt, AnInputThatCannotBeReadIsAFailure) {
  EXPECT_EQ(in_child([] {
              dup2(open("/dev/null", O_WRONLY), STDOUT_FILENO);
              close(STDIN_FILENO);
              std::int32_t choice = 0;
              return cli_ask_select(1, &choice, "Unit? ") == LMAINTE_HOST_ASK_FAILED ? 0 : 1;
            }),
            0);
}

// A process that asks on a terminal of its own, and an operator at its other end.
class Terminal {
 public:
  explicit Terminal(bool non_blocking = false) : pid_(forkpty(&operator_, nullptr, nullptr, nullptr)) {
    if (pid_ == 0) {
      struct sigaction action {};
      action.sa_handler = [](int) {};
      sigaction(SIGINT, &action, nullptr);
      if (non_blocking) fcntl(STDIN_FILENO, F_SETFL, O_RDWR | O_NONBLOCK);
      std::int32_t choice = kUntouched;
      const std::int32_t result = cli_ask_select(4, &choice, "Unit? ");
      _exit(result * 10 + (choice == kUntouched ? 9 : choice));
    }
  }
  ~Terminal() {
    if (pid_ > 0) kill(pid_, SIGKILL), waitpid(pid_, nullptr, 0);
    close(operator_);
  }
  Terminal(const Terminal &) = delete;
  Terminal &operator=(const Terminal &) = delete;

  // Waits until the screen ends with `text`. Everything shown so far.
  std::string wait_for(const std::string &text) {
    char byte = 0;
    while (screen_.size() < text.size() || screen_.compare(screen_.size() - text.size(), text.size(), text) != 0) {
      if (read(operator_, &byte, 1) != 1) return screen_ + "[closed]";
      screen_ += byte;
    }
    return screen_;
  }
  void type(const std::string &text) const {
    ASSERT_EQ(write(operator_, text.data(), text.size()), static_cast<ssize_t>(text.size()));
  }
  // Ten times the result, and the choice or 9.
  int end() {
    int status = 0;
    waitpid(pid_, &status, 0);
    pid_ = 0;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  }

 private:
  int operator_ = -1;
  pid_t pid_;
  std::string screen_;
};

TEST(PromptOnATerminal, EchoesTheAnswerAndLetsItBeCorrected) {
  Terminal terminal;
  terminal.wait_for("Unit? ");
  terminal.type(
      "9\x7F"
      "2\n");
  EXPECT_EQ(terminal.end(), 2);
}

TEST(PromptOnATerminal, AsksAgainOnALineOfItsOwn) {
  Terminal terminal;
  terminal.wait_for("Unit? ");
  terminal.type("9\n");
  EXPECT_EQ(terminal.wait_for(" up.\r\nUnit? "), "Unit? 9\r\nType a number from 1 to 4, or q to give up.\r\nUnit? ");
  terminal.type("4\n");
  EXPECT_EQ(terminal.end(), 4);
}

TEST(PromptOnATerminal, ControlDIsTheEndOfInput) {
  Terminal terminal;
  terminal.wait_for("Unit? ");
  terminal.type("\x04");
  EXPECT_EQ(terminal.end(), 29);
}

TEST(PromptOnATerminal, ControlCHandsBackToACommandThatHandlesIt) {
  Terminal terminal;
  terminal.wait_for("Unit? ");
  usleep(50'000);
  terminal.type("\x03");
  EXPECT_EQ(terminal.end(), 39);
}

TEST(PromptOnATerminal, WaitsOnATerminalLeftInNonBlockingMode) {
  Terminal terminal(true);
  terminal.wait_for("Unit? ");
  usleep(50'000);
  terminal.type("3\n");
  EXPECT_EQ(terminal.end(), 3);
}

}  // namespace
