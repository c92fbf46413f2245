#include <climits>

#include <gtest/gtest.h>

#include "tests/unit/doubles/library_test.h"

namespace {

using doubles::Lines;

class LmainteGetPid : public doubles::LibraryTest {};

const std::string kEntry = "100 110C0770";
const std::string kExit = "100 110C0771";

struct GoodRow {
  const char *text;
  int32_t pid;
};

TEST_F(LmainteGetPid, ReadsTheNumberUpToTheEndOrAComma) {
  const std::vector<GoodRow> rows = {
      {"1234", 1234}, {"1234,xyz", 1234}, {"1234,", 1234},           {"1,2,3", 1}, {"0", 0}, {"0000042", 42},
      {",", 0},       {",1234", 0},       {"2147483647", INT32_MAX},
  };
  for (const auto &row : rows) {
    doubles::machine().start();
    EXPECT_EQ(lmainte_get_pid(row.text), row.pid) << row.text;
    EXPECT_EQ(doubles::trace(), (Lines{kEntry, kExit})) << row.text;
    EXPECT_EQ(doubles::machine().calls, Lines{});
  }
}

TEST_F(LmainteGetPid, BlanksAndASignMayStandBefore) {
  for (const char *text : {" 77", "\t77", "\n77", "\v77", "\f77", "\r77", " \t\n\v\f\r77", "+77", "  +77,x"})
    EXPECT_EQ(lmainte_get_pid(text), 77) << text;
  EXPECT_EQ(lmainte_get_pid("-5"), -5);
  EXPECT_EQ(lmainte_get_pid(" -5,"), -5);
  EXPECT_EQ(lmainte_get_pid("-1"), -1);
}

TEST_F(LmainteGetPid, NumbersWrapAndEndAsWordsOf32BitsDo) {
  const std::vector<GoodRow> rows = {
      {"2147483648", INT32_MIN},
      {"4294967295", -1},
      {"4294967296", -1},
      {"4294967297", -1},
      {"4294967338,", -1},
      {"18446744073709551615", -1},
      {"18446744073709551616", -1},
      {"99999999999999999999999999", -1},
      {"-2147483648", INT32_MIN},
      {"-4294967295", 1},
      {"-4294967296", -1},
      {"-18446744073709551615", -1},
      {" -99999999999999999999999999", -1},
  };
  for (const auto &row : rows) EXPECT_EQ(lmainte_get_pid(row.text), row.pid) << row.text;
  for (const auto &line : doubles::trace()) EXPECT_TRUE(line == kEntry || line == kExit) << line;
}

struct BadRow {
  const char *text;
  std::string words;  // the value, and the character where it stops
};

TEST_F(LmainteGetPid, AnythingElseIsRecordedWithItsValueAndItsCharacter) {
  const std::vector<BadRow> rows = {
      {"12a", " 12 97"},
      {"abc", " 0 97"},
      {"12 ", " 12 32"},
      {"12\n", " 12 10"},
      {"12.5", " 12 46"},
      {"0x10", " 0 120"},
      {" ,", " 0 32"},
      {"+,", " 0 43"},
      {"-", " 0 45"},
      {"   ", " 0 32"},
      {"- 5", " 0 45"},
      {"--5", " 0 45"},
      {"\xFF", " 0 255"},
      {"7\x80", " 7 128"},
      {"-5x", " -5 120"},
      {"1;2,3", " 1 59"},
      {"4294967296x", " -1 120"},
  };
  for (const auto &row : rows) {
    doubles::machine().start();
    EXPECT_EQ(lmainte_get_pid(row.text), -1) << row.text;
    EXPECT_EQ(doubles::trace(), (Lines{kEntry, "805 110C1773" + row.words, kExit})) << row.text;
  }
}

TEST_F(LmainteGetPid, EmptyTextSaysThatNobodyWorks) {
  EXPECT_EQ(lmainte_get_pid(""), 0);
  EXPECT_EQ(doubles::trace(), (Lines{kEntry, "805 110C1772", kExit}));
}

TEST_F(LmainteGetPid, MissingTextIsRefused) {
  EXPECT_EQ(lmainte_get_pid(nullptr), -1);
  EXPECT_EQ(doubles::trace(), (Lines{kEntry, "805 110C1771", kExit}));
}

}  // namespace
