// What a procedure tells fits on a terminal of 80 columns, whatever stands in it.

#include "examples/procedure/telling.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

namespace {

using procedure::folded;
using procedure::in_lines;

struct ToldRow {
  const char *says;
  const char *text;
  size_t columns;
  const char *lines;
};

TEST(Telling, BreaksLinesAtTheirBlanks) {
  const ToldRow rows[] = {
      {"a line that fits stays", "one two", 7, "one two"},
      {"one more letter does not fit", "one twos", 7, "one\ntwos"},
      {"as many words as fit", "a b c d e f", 5, "a b c\nd e f"},
      {"a word that is longer than a line stays whole", "a longword b", 4, "a\nlongword\nb"},
      {"each line of a text for itself", "one two\nthree four", 5, "one\ntwo\nthree\nfour"},
      {"blank lines stay", "\n\none", 5, "\n\none"},
      {"the blank behind a question stays", "why? ", 5, "why? "},
      {"and goes to a line of its own before it is lost", "what now? ", 9, "what now?\n"},
      {"nothing", "", 5, ""},
  };
  for (const ToldRow &row : rows) EXPECT_EQ(in_lines(row.text, row.columns), row.lines) << row.says;
}

TEST(Telling, MarksTheEndAndTheBeginningOfBrokenLines) {
  EXPECT_EQ(folded("one two three", 80, " \\", "    "), "one two three");
  EXPECT_EQ(folded("one two three", 9, " \\", "  "), "one two \\\n  three");
  EXPECT_EQ(folded("one two three", 8, " \\", "  "), "one \\\n  two \\\n  three");
}

TEST(Telling, LeavesNoLineOver80Columns) {
  std::string sentence;
  for (int words = 1; words < 200; ++words) {
    sentence += std::string(1 + static_cast<size_t>(words * 7 % 13), 'x') + " ";
    std::istringstream lines(in_lines(sentence));
    for (std::string line; std::getline(lines, line);) EXPECT_LE(line.size(), 80u) << line;
  }
}

TEST(Telling, ShowsWhatATerminalWouldObey) {
  EXPECT_EQ(in_lines("one\x1b[2J two", 11), "one\\x1b[2J\ntwo") << "a line is as long as what is shown of it";
}

TEST(Telling, TakesValuesAsPrintfDoes) {
  EXPECT_EQ(procedure::text_of("%s is %s (result %d).", "/PSU#0", "good", 0), "/PSU#0 is good (result 0).");
}

// Whoever prints around tell() and ask() prints lines that may be too long.
TEST(Telling, IsTheOnlyWayInWhichAProcedurePrints) {
  std::set<std::string> printing;
  for (const auto &file : std::filesystem::directory_iterator(EXAMPLES "/procedure")) {
    std::ifstream in(file.path());
    std::ostringstream text;
    text << in.rdbuf();
    for (const char *call : {"printf(", "puts(", "putchar(", "cout"}) {
      if (text.str().find(call) != std::string::npos) printing.insert(file.path().filename());
    }
  }
  EXPECT_EQ(printing, (std::set<std::string>{"advice.h", "beside.h", "telling.h"}));
}

}  // namespace
