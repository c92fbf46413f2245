#include <gtest/gtest.h>

#include <sstream>

#include "host/play/script.h"

namespace {

using play::describe_keys;
using play::read_script;
using play::ScriptError;

std::vector<play::Line> read(const std::string &text) {
  std::istringstream script(text);
  return read_script(script, "walk.play");
}

std::string error_of(const std::string &text) {
  try {
    read(text);
  } catch (const ScriptError &error) {
    return error.what();
  }
  return "no error";
}

TEST(Script, BlanksSeparateWords) {
  const auto steps = read("start  ls\t-l /tmp \n");
  ASSERT_EQ(steps.size(), 1U);
  EXPECT_EQ(steps[0].verb, "start");
  EXPECT_EQ(steps[0].words, (std::vector<std::string>{"ls", "-l", "/tmp"}));
}

TEST(Script, EmptyLinesAndCommentsAreNoSteps) {
  const auto steps = read("\n# the walk\n  \nexit 0\n");
  ASSERT_EQ(steps.size(), 1U);
  EXPECT_EQ(steps[0].number, 4);
}

TEST(Script, ACommentBeginsWithAWord) {
  EXPECT_EQ(read("spbox pull /PSU#3 # the #3\n")[0].words, (std::vector<std::string>{"pull", "/PSU#3"}));
  EXPECT_EQ(read("say \"# not one\"")[0].words, (std::vector<std::string>{"# not one"}));
}

TEST(Script, QuotedWordsKeepBlanksAndKnowEscapes) {
  const auto steps = read(R"(type "a b\n\t\r\e\"\\\003x\101")");
  ASSERT_EQ(steps.size(), 1U);
  EXPECT_EQ(steps[0].words, (std::vector<std::string>{"a b\n\t\r\033\"\\\003xA"}));
}

TEST(Script, AnEmptyQuotedWordIsAWord) {
  EXPECT_EQ(read("type \"\"")[0].words, (std::vector<std::string>{""}));
}

TEST(Script, ErrorsNameTheScriptAndTheLine) {
  EXPECT_EQ(error_of("exit 0\nwait \"List"), "walk.play:2: the closing \" is missing");
  EXPECT_EQ(error_of("wait \"\\q\""), "walk.play:1: unknown escape \\q");
}

TEST(Script, KeysAreDescribedForPeople) {
  EXPECT_EQ(describe_keys("12\n"), "\"12\", Enter");
  EXPECT_EQ(describe_keys(" \003\033"), "Space, Ctrl-C, Escape");
  EXPECT_EQ(describe_keys("a b"), "\"a\", Space, \"b\"");
}

}  // namespace
