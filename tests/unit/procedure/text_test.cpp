// What a procedure tells fits on a terminal of 80 columns, is never obeyed by it, and fits into its room.

#include "procedure/text.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using lmainte::procedure::folded;
using lmainte::procedure::in_lines;
using lmainte::procedure::shown;
using lmainte::procedure::Text;

struct ShownRow {
  const char *says;
  std::string bytes, shown;
};

TEST(ProcedureText, IsShownAndNeverObeyed) {
  const ShownRow rows[] = {
      {"plain text", "PW-1600 ~#", "PW-1600 ~#"},
      {"nothing", "", ""},
      {"an escape", "\x1b[2J", R"(\x1b[2J)"},
      {"a newline, a rubout and a zero byte", std::string("a\n\x7f\0b", 5), R"(a\x0a\x7f\x00b)"},
      {"UTF-8 of two, three and four bytes", "\xc3\xa9\xe2\x82\xac\xf0\x9f\x94\xa7",
       "\xc3\xa9\xe2\x82\xac\xf0\x9f\x94\xa7"},
      {"the first and the last one but one of three planes", "\xf1\x80\x80\x80\xf3\xbf\xbf\xbf",
       "\xf1\x80\x80\x80\xf3\xbf\xbf\xbf"},
      {"control characters of two bytes", "\xc2\x80 \xc2\x9f\xc2\xa0",
       R"(\xc2\x80 \xc2\x9f)"
       "\xc2\xa0"},
      {"a control character of one byte", "\x9b 2J", R"(\x9b 2J)"},
      {"a character that is cut off", "a\xe2\x82", R"(a\xe2\x82)"},
      {"a character whose third byte is no part of it", "\xe2\x82z", R"(\xe2\x82z)"},
      {"characters in too many bytes", "\xc1\xbf \xe0\x9f\xbf \xf0\x8f\xbf\xbf",
       R"(\xc1\xbf \xe0\x9f\xbf \xf0\x8f\xbf\xbf)"},
      // NOLINTNEXTLINE(misc-misleading-bidirectional): it has to be
      {"what turns the order of the text around, and its neighbours", "\xe2\x80\xa7\xe2\x80\xae\xe2\x80\xaf",
       "\xe2\x80\xa7\\xe2\\x80\\xae\xe2\x80\xaf"},
      {"what is not seen", "\xc2\xad\xe2\x80\x8b\xef\xbb\xbf\xf3\xa0\x80\xa1",
       R"(\xc2\xad\xe2\x80\x8b\xef\xbb\xbf\xf3\xa0\x80\xa1)"},
      {"a surrogate and its neighbours", "\xed\x9f\xbf \xed\xa0\x80 \xee\x80\x80",
       "\xed\x9f\xbf \\xed\\xa0\\x80 \xee\x80\x80"},
      {"the last character and the number above it", "\xf4\x8f\xbf\xbf \xf4\x90\x80\x80",
       "\xf4\x8f\xbf\xbf \\xf4\\x90\\x80\\x80"},
  };
  for (const ShownRow &row : rows) EXPECT_EQ(shown(row.bytes).view(), row.shown) << row.says;
}

struct ToldRow {
  const char *says;
  const char *text;
  size_t columns;
  const char *lines;
};

TEST(ProcedureText, IsBrokenAtItsBlanks) {
  const ToldRow rows[] = {
      {"a line that fits stays", "one two", 7, "one two"},
      {"one more letter does not fit", "one twos", 7, "one\ntwos"},
      {"as many words as fit", "a b c d e f", 5, "a b c\nd e f"},
      {"a word that is longer than a line stays whole", "a longword b", 4, "a\nlongword\nb"},
      {"each line of a text for itself", "one two\nthree four", 5, "one\ntwo\nthree\nfour"},
      {"blank lines stay", "\n\none", 5, "\n\none"},
      {"blanks side by side stay", "  a   b", 80, "  a   b"},
      {"the blank behind a question stays", "why? ", 5, "why? "},
      {"and goes to a line of its own before it is lost", "what now? ", 9, "what now?\n"},
      {"nothing", "", 5, ""},
      {"a line is as long as what is shown of it", "one\x1b[2J two", 11, "one\\x1b[2J\ntwo"},
  };
  for (const ToldRow &row : rows) EXPECT_EQ(in_lines(row.text, row.columns).view(), row.lines) << row.says;
}

TEST(ProcedureText, MarksTheEndAndTheBeginningOfBrokenLines) {
  EXPECT_EQ(folded("one two three", {.end = " \\", .begin = "    "}).view(), "one two three");
  EXPECT_EQ(folded("one two three", {.columns = 9, .end = " \\", .begin = "  "}).view(), "one two \\\n  three");
  EXPECT_EQ(folded("one two three", {.columns = 8, .end = " \\", .begin = "  "}).view(), "one \\\n  two \\\n  three");
}

TEST(ProcedureText, HasNoLineOver80Columns) {
  std::string sentence;
  for (int words = 1; words < 200; ++words) {
    sentence += std::string(1 + static_cast<size_t>(words * 7 % 13), 'x') + " ";
    std::istringstream lines{std::string(in_lines(sentence).view())};
    for (std::string line; std::getline(lines, line);) EXPECT_LE(line.size(), 80u) << line;
  }
}

TEST(ProcedureText, IsCutWhereItsRoomEnds) {
  const std::string most(Text::kRoom - 1, 'x');
  Text text(most);
  EXPECT_EQ(text.view(), most) << "this fits";
  EXPECT_EQ(text.add("y").add_format("%d", 1).view(), most) << "nothing more does";
  EXPECT_EQ(text.c_str()[most.size()], '\0');
  EXPECT_EQ(Text(most + "y").view(), most);
  EXPECT_EQ(lmainte::procedure::text_of("%s%s", most.c_str(), "y").view(), most);
  EXPECT_EQ(shown(std::string(1000, '\x01')).view().size(), Text::kRoom - 1) << "four bytes for each";
}

TEST(ProcedureText, TakesValuesAsPrintfDoes) {
  EXPECT_EQ(lmainte::procedure::text_of("%s is %s (result %d).", "/PSU#0", "good", 0).view(),
            "/PSU#0 is good (result 0).");
}

}  // namespace
