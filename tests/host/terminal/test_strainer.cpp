// What reaches libvterm of what a command writes.
#include "host/terminal/strainer.h"

#include <gtest/gtest.h>

#include "host/terminal/screen.h"

namespace {

using terminal::Strainer;

struct Row {
  const char *says;
  std::string written, passed;
};

const std::string kNone = "\xef\xbf\xbd";
const std::string kMany(200, '1');

const Row kRows[] = {
    {"text, line ends and tabs", "one\ttwo\r\n", "one\ttwo\r\n"},
    {"characters of two, three and four bytes", "\xc3\xa9\xe4\xb8\xad\xf0\x9f\x94\xa7",
     "\xc3\xa9\xe4\xb8\xad\xf0\x9f\x94\xa7"},
    {"a control character of two bytes",
     "a\xc2\x9b"
     "2J",
     "a" + kNone + "2J"},
    {"a control character that taking out another one would make", "\xc2\xc2\x9b\x9b", kNone + kNone + kNone},
    {"a byte that is no character",
     "a\xff"
     "b\x80",
     "a" + kNone + "b" + kNone},
    {"a character that is cut off", "\xe4\xb8z", kNone + "z"},
    {"a character that a sequence cuts off", "\xe4\xb8\x1b[K", kNone + "\x1b[K"},
    {"zeros and rubouts", std::string("a\0b\x7f", 4), "ab"},
    {"a sequence", "\x1b[1;31mred\x1b[m", "\x1b[1;31mred\x1b[m"},
    {"one for a private mode", "\x1b[?1049h", "\x1b[?1049h"},
    {"one with a character before its end", "\x1b[2 q", "\x1b[2 q"},
    {"an escape with a character before its end", "\x1b(0q\x1b#6", "\x1b(0q\x1b#6"},
    {"an escape that libvterm would take for a sequence", "\x1b([5bx", "5bx"},
    {"a number above all terminals", "\x1b[99999999999999999999X", "\x1b[9999X"},
    {"sixteen numbers", "\x1b[1;2;3;4;5;6;7;8;9;10;11;12;13;14;15;16m", "\x1b[1;2;3;4;5;6;7;8;9;10;11;12;13;14;15;16m"},
    {"seventeen numbers", "\x1b[1;2;3;4;5;6;7;8;9;10;11;12;13;14;15;16;17mx", "x"},
    {"numbers without end", "\x1b[" + kMany + ";" + kMany, (kMany + ";" + kMany).substr(127)},
    {"a sequence with a leader in its middle", "\x1b[1?2hx", "x"},
    {"a control within a sequence", "\x1b[2\nJ", "\n\x1b[2J"},
    {"a sequence that is given up", "\x1b[2\x18Jx\x1b[3\x1aK", "JxK"},
    {"a sequence within another one", "\x1b[2\x1b[3C", "\x1b[3C"},
    {"a byte that is no part of a sequence", "\x1b[2\xffJ", "J"},
    {"a title, and text after it", "\x1b]0;title\x07text", "text"},
    {"a title with another end", "\x1b]0;t\xff\n\x1b\\text", "\x1b\\text"},
    {"a string that an escape ends", "\x1bPq\x1b[2Jx", "\x1b[2Jx"},
    {"the last character again", "ab\x1b[3b", "abbbb"},
    {"a wide character again", "\xe4\xb8\xad\x1b[2b", "\xe4\xb8\xad\xe4\xb8\xad\xe4\xb8\xad"},
    {"again without a number, and with zero", "a\x1b[b\x1b[0b", "aaa"},
    {"again where nothing was written", "\x1b[5b", ""},
    {"no repetition, but like one", "a\x1b[?5b\x1b[5 b", "a\x1b[?5b\x1b[5 b"},
};

TEST(StrainerTest, PassesWhatIsSound) {
  for (const Row &row : kRows) EXPECT_EQ(Strainer().passed(row.written), row.passed) << row.says;
}

TEST(StrainerTest, PassesTheSameHoweverItComes) {
  for (const Row &row : kRows) {
    Strainer strainer;
    std::string passed;
    for (const char byte : row.written) passed += strainer.passed({&byte, 1});
    EXPECT_EQ(passed, row.passed) << row.says;
  }
}

// Each of these ended the process, or never came back, without a strainer.
TEST(StrainerTest, KeepsTheScreenWhole) {
  for (const char *written : {"\x1b[5b", "a\xe4\xb8\xad\x1b[99b", "\xc2\x9b\x1b[4hab", "\x1b[2147483647b",
                              "\x1b[;;;;;;;;;;;;;;;;;;;;;;;;;;;;;;;;;;;;;;;;;;;;;;;;;;;;;;;;;;;;;;;;m"}) {
    terminal::Screen screen({2, 9}, [](std::string_view) {});
    screen.feed(written);
    screen.feed("\x1b[H\x1b[2Jstill there");
    EXPECT_EQ(screen.rows()[0], "still the") << written;
  }
}

}  // namespace
