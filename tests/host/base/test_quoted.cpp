#include "host/base/quoted.h"

#include <gtest/gtest.h>

namespace {

TEST(Quoted, LeavesPlainWordsAndPutsOthersInQuotes) {
  EXPECT_EQ(base::quoted("box"), "box");
  EXPECT_EQ(base::quoted("/srv/box-1_a.b"), "/srv/box-1_a.b");
  EXPECT_EQ(base::quoted("build/demo-box"), "build/demo-box");
  EXPECT_EQ(base::quoted("/PSU#3"), "/PSU#3");
  EXPECT_EQ(base::quoted("#3"), "'#3'");
  EXPECT_EQ(base::quoted("my box"), "'my box'");
  EXPECT_EQ(base::quoted("it's"), "'it'\\''s'");
  EXPECT_EQ(base::quoted("$HOME"), "'$HOME'");
  EXPECT_EQ(base::quoted("a;b"), "'a;b'");
  EXPECT_EQ(base::quoted("~"), "'~'");
  EXPECT_EQ(base::quoted(""), "''");
}

TEST(Quoted, KeepsBytesThatATerminalWouldObey) {
  EXPECT_EQ(base::quoted("odd\x1b[2J"), R"($'odd\x1b[2J')");
  EXPECT_EQ(base::quoted("it's\ta \\ \xc3\xa9"), "$'it\\'s\\x09a \\\\ \xc3\xa9'");
  EXPECT_EQ(base::quoted("caf\xc3\xa9"), "'caf\xc3\xa9'");
}

}  // namespace
