#include "host/spbox/way_in.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>

namespace {

TEST(WayIn, QuotesWhatAShellWouldTakeApart) {
  struct Row {
    const char *text, *word;
  };
  const Row rows[] = {
      {"build/demo-box", "build/demo-box"},
      {"/CMU#2", "/CMU#2"},
      {"#2", "'#2'"},
      {"my box", "'my box'"},
      {"it's", "'it'\\''s'"},
      {"a;b", "'a;b'"},
      {"$HOME", "'$HOME'"},
      {"", "''"},
      {"~", "'~'"},
  };
  for (const Row &row : rows) EXPECT_EQ(spbox::shell_word(row.text), row.word);
}

TEST(WayIn, IsTheToolAsItWasCalledAndTheFolderAsItWasGiven) {
  unsetenv("SPBOX_CALLED");
  const std::string tool = spbox::shell_word(program_invocation_name);
  EXPECT_EQ(spbox::way_in("my box"), tool + " run 'my box'");
  setenv("SPBOX_CALLED", "./dev spbox", 1);
  EXPECT_EQ(spbox::way_in("build/demo-box"), "./dev spbox run build/demo-box");
  setenv("SPBOX_CALLED", "", 1);
  EXPECT_EQ(spbox::way_in("box"), tool + " run box");
}

}  // namespace
