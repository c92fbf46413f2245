#include "host/script/form.h"

#include <gtest/gtest.h>

#include "host/script/values.h"

namespace {

using namespace std::chrono_literals;
using script::Words;

constexpr script::Form kForms[] = {
    {"exit", 1, 1, "exit STATUS", "ends"},
    {"when led", 2, 2, "when led UNIT STATE", "waits until the LED\nis so"},
    {"say", 0, script::kAny, "say WORDS...", "speaks"},
};

// The row's verb, and the words that are left; or what is wrong.
std::string found_in(Words words) {
  try {
    const script::Form &row = script::take_row(std::span<const script::Form>(kForms), words);
    return std::string(row.verb) + ": " + script::joined(words);
  } catch (const std::invalid_argument &wrong) {
    return wrong.what();
  }
}

TEST(Form, FindsTheRowOfAStatement) {
  EXPECT_EQ(found_in({"exit", "0"}), "exit: 0");
  EXPECT_EQ(found_in({"when", "led", "/PSU#3", "on"}), "when led: /PSU#3 on");
  EXPECT_EQ(found_in({"say"}), "say: ");
  EXPECT_EQ(found_in({"say", "a", "b", "c"}), "say: a b c");
}

TEST(Form, TellsHowAStepIsWritten) {
  EXPECT_EQ(found_in({"exit"}), "write it as: exit STATUS");
  EXPECT_EQ(found_in({"exit", "0", "1"}), "write it as: exit STATUS");
  EXPECT_EQ(found_in({"when", "led", "/PSU#3"}), "write it as: when led UNIT STATE");
  for (const Words &words : {Words{"jump"}, Words{"exits", "0"}}) {
    EXPECT_EQ(found_in(words), "there is no step \"" + words[0] + "\"; there are exit, when led and say");
  }
  EXPECT_EQ(found_in({"when"}), "there is no step \"when\"; there are exit, when led and say");
  EXPECT_EQ(found_in({"when", "moon", "full"}), "there is no step \"when\"; there are exit, when led and say");
}

TEST(Form, IsALineOfTheHelpOrMore) {
  EXPECT_EQ(script::help_of(kForms[0], 16), "  exit STATUS   ends\n");
  EXPECT_EQ(script::help_of(kForms[1], 16),
            "  when led UNIT STATE\n"
            "                waits until the LED\n"
            "                is so\n");
}

TEST(Values, AreSecondsUpToADay) {
  EXPECT_EQ(script::seconds_in("0"), 0ms);
  EXPECT_EQ(script::seconds_in("0.5"), 500ms);
  EXPECT_EQ(script::seconds_in("86400"), 86400000ms);
  for (const char *word : {"", "soon", "-1", "3s", "86401", "nan"}) {
    EXPECT_THROW(script::seconds_in(word), std::invalid_argument) << word;
  }
  EXPECT_EQ(script::seconds_text(500ms) + ", " + script::seconds_text(10s), "0.5 s, 10 s");
}

TEST(Values, AreWholeNumbers) {
  EXPECT_EQ(script::number_in("0", 255, "an exit status"), 0);
  EXPECT_EQ(script::number_in("255", 255, "an exit status"), 255);
  for (const char *word : {"", "256", "-1", "1x"}) {
    EXPECT_THROW(script::number_in(word, 255, "an exit status"), std::invalid_argument) << word;
  }
}

}  // namespace
