// What a command prints of a name is shown by the operator's terminal, and never obeyed.

#include "examples/shown.h"

#include <gtest/gtest.h>

namespace {

struct ShownRow {
  const char *says;
  std::string bytes, shown;
};

TEST(ShownToTheOperator, IsATextThatNoTerminalObeys) {
  const ShownRow rows[] = {
      {"plain text", "PW-1600 ~#", "PW-1600 ~#"},
      {"nothing", "", ""},
      {"an escape", "\x1b[2J", R"(\x1b[2J)"},
      {"a newline, a rubout and a zero byte", std::string("a\n\x7f\0b", 5), R"(a\x0a\x7f\x00b)"},
      {"UTF-8 of two, three and four bytes", "\xc3\xa9\xe2\x82\xac\xf0\x9f\x94\xa7",
       "\xc3\xa9\xe2\x82\xac\xf0\x9f\x94\xa7"},
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
  for (const ShownRow &row : rows) EXPECT_EQ(shown(row.bytes), row.shown) << row.says;
}

}  // namespace
