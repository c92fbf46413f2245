#include "host/spbox/text.h"

#include <gtest/gtest.h>

namespace {

struct Row {
  const char *says;
  std::string bytes, shown;
};

TEST(Printable, IsWhatHarmsNoTerminal) {
  const Row rows[] = {
      {"plain text stays", "PW-1600 ~#", "PW-1600 ~#"},
      {"an empty text stays empty", "", ""},
      {"an escape is written out", "\x1b[2J", R"(\x1B[2J)"},
      {"a newline, a rubout and a zero byte are written out", std::string("a\n\x7f\0b", 5), R"(a\x0A\x7F\x00b)"},
      {"UTF-8 of two, three and four bytes stays", "\xc3\xa9\xe2\x82\xac\xf0\x9f\x94\xa7",
       "\xc3\xa9\xe2\x82\xac\xf0\x9f\x94\xa7"},
      {"a control character of two bytes is written out",
       "\xc2\x9b"
       "2J",
       R"(\xC2\x9B2J)"},
      {"a byte that begins no character is written out", "\xff\x80z", R"(\xFF\x80z)"},
      {"a character that is cut off is written out", "\xe2\x82", R"(\xE2\x82)"},
      {"a character in too many bytes is written out", "\xc0\xaf\xe0\x80\xaf", R"(\xC0\xAF\xE0\x80\xAF)"},
      {"a surrogate is written out", "\xed\xa0\x80", R"(\xED\xA0\x80)"},
      {"numbers above the last character are written out", "\xf4\x90\x80\x80\xf8\x88\x80\x80\x80",
       R"(\xF4\x90\x80\x80\xF8\x88\x80\x80\x80)"},
  };
  for (const Row &row : rows) EXPECT_EQ(spbox::printable(row.bytes), row.shown) << row.says;
}

TEST(Printable, IsEveryCellOfATable) {
  EXPECT_EQ(spbox::aligned({{"\x1b", "x"}, {"ab", "y"}}), "\\x1B  x\nab    y\n");
}

}  // namespace
