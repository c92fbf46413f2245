#include <gtest/gtest.h>

#include "tests/unit/doubles/library_test.h"

namespace {

using doubles::Lines;
using doubles::machine;

class LmainteAskSelect : public doubles::LibraryTest {
 protected:
  // What a question leaves on standard output, between the prompt and what happens to the terminal.
  std::string spoken(const char *prompt) {
    machine().speaks = true;
    return doubles::printed_by([&] { result_ = lmainte_ask_select(1, &choice_, "%s", prompt); });
  }
  int32_t ask() {
    printed_ = doubles::printed_by([this] { result_ = lmainte_ask_select(1, &choice_, "Which? "); });
    return result_;
  }

  int choice_ = 0;
  int32_t result_ = 99;
  std::string printed_;
};

TEST_F(LmainteAskSelect, FlushesEchoesAsksAndSwitchesEchoOff) {
  machine().answer = 3;
  EXPECT_EQ(spoken("Which? "), "<flush><echo on><ask>\n<echo off>");
  EXPECT_EQ(result_, 3);
  EXPECT_EQ(machine().calls,
            (Lines{"tcflush 0 input", "tcgetattr 1", "tcsetattr 1 now", "ask", "tcgetattr 1", "tcsetattr 1 now"}));
}

TEST_F(LmainteAskSelect, PrintsANewlineAndNothingElse) {
  ask();
  EXPECT_EQ(printed_, "\n");
}

TEST_F(LmainteAskSelect, LeavesEchoOffWhateverItWas) {
  machine().terminal.c_lflag = ECHO;
  ask();
  EXPECT_EQ(machine().terminal.c_lflag & ECHO, 0u);
  ask();
  EXPECT_EQ(machine().terminal.c_lflag & ECHO, 0u);
}

TEST_F(LmainteAskSelect, ReturnsWhateverTheQuestionReturned) {
  for (const int32_t answer : {0, 1, -1, -5, 8, INT32_MIN, INT32_MAX}) {
    machine().start();
    machine().answer = answer;
    EXPECT_EQ(ask(), answer);
    EXPECT_EQ(doubles::trace_of(0x110C0000), (Lines{"100 110C0000", "100 110C0002 " + std::to_string(answer),
                                                    "100 110C0001 " + std::to_string(answer)}));
  }
}

TEST_F(LmainteAskSelect, HandsItsArgumentsOn) {
  lmainte_ask_select(-7, &choice_, "Replace %s, number %d? ", "PSU#3", 4);
  ASSERT_EQ(machine().asked.size(), 1u);
  EXPECT_EQ(machine().asked[0].first, -7);
  EXPECT_EQ(machine().asked[0].second, &choice_);
  EXPECT_EQ(machine().asked[0].prompt, "Replace PSU#3, number 4? ");
}

TEST_F(LmainteAskSelect, CutsThePromptAt1023Characters) {
  for (const size_t length : {1022U, 1023U, 1024U, 2000U}) {
    machine().asked.clear();
    spoken(std::string(length, 'p').c_str());
    EXPECT_EQ(machine().asked.at(0).prompt, std::string(std::min<size_t>(length, 1023), 'p'));
  }
}

TEST_F(LmainteAskSelect, EmptyPromptIsAPrompt) {
  spoken("");
  EXPECT_EQ(machine().asked.at(0).prompt, "");
}

TEST_F(LmainteAskSelect, MissingPointerToTheAnswerIsRefused) {
  EXPECT_EQ(doubles::printed_by([this] { result_ = lmainte_ask_select(1, nullptr, nullptr); }), "");
  EXPECT_EQ(result_, -1);
  EXPECT_EQ(machine().calls, Lines{});
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C0000", "805 110C1001", "100 110C0001 -1"}));
}

TEST_F(LmainteAskSelect, MissingPromptIsRefused) {
  EXPECT_EQ(doubles::printed_by([this] { result_ = lmainte_ask_select(1, &choice_, nullptr); }), "");
  EXPECT_EQ(result_, -1);
  EXPECT_EQ(machine().calls, Lines{});
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C0000", "805 110C1002", "100 110C0001 -1"}));
}

TEST_F(LmainteAskSelect, FailedFlushAsksNothing) {
  machine().fail("tcflush");
  EXPECT_EQ(ask(), -1);
  EXPECT_EQ(printed_, "");
  EXPECT_EQ(machine().calls, (Lines{"tcflush 0 input"}));
  EXPECT_EQ(doubles::trace_of(0x110C0000), (Lines{"100 110C0000", "805 110C1003 8", "100 110C0001 -1"}));
}

TEST_F(LmainteAskSelect, FailedEchoAsksNothing) {
  machine().fail("tcsetattr 1", 1);
  EXPECT_EQ(ask(), -1);
  EXPECT_EQ(printed_, "");
  EXPECT_EQ(machine().calls, (Lines{"tcflush 0 input", "tcgetattr 1", "tcsetattr 1 now"}));
  EXPECT_EQ(doubles::trace_of(0x110C0000), (Lines{"100 110C0000", "805 110C1004 8", "100 110C0001 -1"}));
}

TEST_F(LmainteAskSelect, AnswerIsDiscardedWhenEchoStaysOn) {
  machine().answer = 3;
  machine().fail("tcsetattr 1", 2);
  EXPECT_EQ(ask(), -1);
  EXPECT_EQ(printed_, "\n");
  EXPECT_EQ(doubles::trace_of(0x110C0000),
            (Lines{"100 110C0000", "100 110C0002 3", "805 110C1005 8", "100 110C0001 -1"}));
}

TEST_F(LmainteAskSelect, NeedsTerminalsOnBothSides) {
  for (const int fd : {0, 1}) {
    machine().start();
    machine().is_terminal[fd] = false;
    EXPECT_EQ(ask(), -1) << fd;
    EXPECT_TRUE(machine().asked.empty()) << fd;
  }
}

}  // namespace
