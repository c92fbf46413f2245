#include "host/base/shown.h"

#include <gtest/gtest.h>

namespace {

struct Row {
  const char *says;
  std::string bytes, shown;
};

TEST(Shown, IsATextThatNoTerminalObeys) {
  const Row rows[] = {
      {"plain text stays", "PW-1600 ~#", "PW-1600 ~#"},
      {"an empty text stays empty", "", ""},
      {"a backslash stays", R"(\x1b)", R"(\x1b)"},
      {"an escape is written out", "\x1b[2J", R"(\x1b[2J)"},
      {"a newline, a rubout and a zero byte are written out", std::string("a\n\x7f\0b", 5), R"(a\x0a\x7f\x00b)"},
      {"UTF-8 of two, three and four bytes stays", "\xc3\xa9\xe2\x82\xac\xf0\x9f\x94\xa7",
       "\xc3\xa9\xe2\x82\xac\xf0\x9f\x94\xa7"},
      {"a control character of two bytes is written out",
       "\xc2\x80\xc2\x9b"
       "2J\xc2\x9f",
       R"(\xc2\x80\xc2\x9b2J\xc2\x9f)"},
      {"the first character above the controls stays", "\xc2\xa0", "\xc2\xa0"},
      {"a control character of one byte is written out", "\x9b 2J", R"(\x9b 2J)"},
      {"a byte that begins no character is written out", "\xff\x80z", R"(\xff\x80z)"},
      {"a character that is cut off is written out", "\xe2\x82", R"(\xe2\x82)"},
      {"a character in too many bytes is written out", "\xc0\xaf\xe0\x80\xaf\xf0\x80\x80\xaf",
       R"(\xc0\xaf\xe0\x80\xaf\xf0\x80\x80\xaf)"},
      // NOLINTNEXTLINE(misc-misleading-bidirectional): it has to be
      {"what turns the order of the text around is written out", "\xe2\x80\xae\xe2\x81\xa6\xd8\x9c",
       R"(\xe2\x80\xae\xe2\x81\xa6\xd8\x9c)"},
      {"what is not seen is written out", "\xc2\xad\xe2\x80\x8b\xef\xbb\xbf\xf3\xa0\x80\xa1",
       R"(\xc2\xad\xe2\x80\x8b\xef\xbb\xbf\xf3\xa0\x80\xa1)"},
      {"what ends a line elsewhere is written out", "\xe2\x80\xa8\xe2\x80\xa9", R"(\xe2\x80\xa8\xe2\x80\xa9)"},
      {"their neighbours stay", "\xe2\x80\x90\xe2\x80\xa7\xe2\x80\xaf\xe2\x81\xb0",
       "\xe2\x80\x90\xe2\x80\xa7\xe2\x80\xaf\xe2\x81\xb0"},
      {"a surrogate is written out", "\xed\xa0\x80", R"(\xed\xa0\x80)"},
      {"a character in four bytes does not begin with more than four bits", "\xf8\x90\x80\x80\xf9\x98\x80\x96",
       R"(\xf8\x90\x80\x80\xf9\x98\x80\x96)"},
      {"numbers above the last character are written out", "\xf4\x90\x80\x80\xf8\x88\x80\x80\x80",
       R"(\xf4\x90\x80\x80\xf8\x88\x80\x80\x80)"},
  };
  for (const Row &row : rows) EXPECT_EQ(base::shown(row.bytes), row.shown) << row.says;
}

TEST(Shown, LinesKeepTheirEndsAndNothingElse) {
  EXPECT_EQ(base::shown_lines("one\ntwo\r\n\tthree\x1b\n"), "one\ntwo\\x0d\n\\x09three\\x1b\n");
}

}  // namespace
