#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "host/terminal/screen.h"

namespace {

using terminal::Screen;

class ScreenTest : public testing::Test {
 protected:
  Screen screen_{{4, 20}, [](std::string_view) {}};
};

TEST_F(ScreenTest, ShowsATextWithinALine) {
  screen_.feed("one\r\ntwo three");
  EXPECT_TRUE(screen_.shows("wo thr"));
  EXPECT_FALSE(screen_.shows("one two"));
}

TEST_F(ScreenTest, TextIsNewUntilTheScreenGrowsOld) {
  screen_.feed("Sure?");
  EXPECT_TRUE(screen_.shows_new("Sure?"));
  screen_.grow_old();
  EXPECT_FALSE(screen_.shows_new("Sure?"));
  EXPECT_TRUE(screen_.shows("Sure?"));
}

TEST_F(ScreenTest, TheSameTextBelowIsNew) {
  screen_.feed("Sure?");
  screen_.grow_old();
  screen_.feed("\r\nSure?");
  EXPECT_TRUE(screen_.shows_new("Sure?"));
}

TEST_F(ScreenTest, TheSameTextWrittenOverItselfIsNew) {
  screen_.feed("Sure?");
  screen_.grow_old();
  screen_.feed("\rSur");
  EXPECT_FALSE(screen_.shows_new("Sure?"));
  screen_.feed("e?");
  EXPECT_TRUE(screen_.shows_new("Sure?"));
}

TEST_F(ScreenTest, OldTextStaysOldWhereverItScrolls) {
  screen_.feed("1\r\n2\r\nSure?");
  screen_.grow_old();
  screen_.feed("\r\n4\r\n5");
  EXPECT_EQ(screen_.rows()[1], "Sure?");
  EXPECT_FALSE(screen_.shows_new("Sure?"));
  EXPECT_TRUE(screen_.shows_new("5"));
}

TEST_F(ScreenTest, TextStaysAsOldAsItIsWhenTheWindowGetsAnotherSize) {
  screen_.feed("1\r\n2\r\nOld?");
  screen_.grow_old();
  screen_.feed("\r\nSure?");
  screen_.resize({2, 30});
  EXPECT_EQ(screen_.rows(), (std::vector<std::string>{"Old?", "Sure?"}));
  EXPECT_TRUE(screen_.shows_new("Sure?"));
  EXPECT_FALSE(screen_.shows_new("Old?"));
  screen_.grow_old();
  screen_.resize({6, 10});
  screen_.feed("\r\nMore?");
  EXPECT_TRUE(screen_.shows_new("More?"));
  EXPECT_FALSE(screen_.shows_new("Sure?"));
}

TEST_F(ScreenTest, NewTextStaysNewWhereverItScrolls) {
  screen_.feed("1\r\n2\r\n3\r\n");
  screen_.grow_old();
  screen_.feed("Sure?\r\n5\r\n6");
  EXPECT_EQ(screen_.rows()[1], "Sure?");
  EXPECT_TRUE(screen_.shows_new("Sure?"));
  EXPECT_FALSE(screen_.shows_new("3"));
}

TEST_F(ScreenTest, ABlankMayBeMovedOver) {
  screen_.feed("             ");
  screen_.grow_old();
  screen_.feed("\rDone\033[2Call");
  EXPECT_TRUE(screen_.shows_new("Done  all"));
}

TEST_F(ScreenTest, TextThatTheScreenLosesIsNotShown) {
  screen_.feed("Sure?\033[2K");
  EXPECT_FALSE(screen_.shows_new("Sure?"));
}

struct Combined {
  std::string_view what, bytes, first_row;
};

TEST(Screen, ACombiningCharacterThatComesLaterBelongsToTheOneBefore) {
  for (const Combined &row : {Combined{"in the first column", "e\u0301", "e\u0301"},
                              {"in the last column", "abcde\u0301", "abcde\u0301"},
                              {"in the last column, two of them", "abcde\u0301\u0302", "abcde\u0301\u0302"},
                              {"of a wide character in the last columns", "abc\u4e2d\u0301", "abc\u4e2d\u0301"},
                              {"in the last column, with text behind it", "abcde\u0301f", "abcde\u0301"},
                              {"in the last column, repeated", "abcd\x1b[be\u0301", "abcdd"},
                              {"behind another character that is not ASCII", "abcd\u00e4\u00f6", "abcd\u00e4"}}) {
    for (const std::size_t piece : {std::size_t{100}, std::size_t{1}, std::size_t{2}}) {
      Screen screen({3, 5}, [](std::string_view) {});
      for (std::string_view left = row.bytes; !left.empty(); left.remove_prefix(std::min(piece, left.size()))) {
        screen.feed(left.substr(0, piece));
      }
      EXPECT_EQ(screen.rows()[0], row.first_row) << row.what << ", in pieces of " << piece;
    }
  }
}

TEST(Screen, ACombiningCharacterBehindAControlLeavesTheOneBefore) {
  Screen screen({3, 5}, [](std::string_view) {});
  for (const char *piece : {"abcde", "\r", "\u0301"}) screen.feed(piece);
  EXPECT_EQ(screen.rows()[0].substr(screen.rows()[0].find('b')), "bcde");
}

TEST(Screen, IsOfAnySizeThatATerminalHas) {
  for (const terminal::Size size : {terminal::Size{1, 2}, {1, 3}, {2, 2}, {500, 500}}) {
    Screen screen(size, [](std::string_view) {});
    screen.feed("a\xe4\xb8\xad\r\n\xe4\xb8\xad\x1b[99b");
    EXPECT_TRUE(screen.shows("\xe4\xb8\xad")) << size.rows << " rows of " << size.columns;
  }
  for (const terminal::Size size : {terminal::Size{0, 80}, {24, 0}, {24, 1}, {-1, -1}}) {
    EXPECT_THROW(Screen(size, [](std::string_view) {}), std::invalid_argument) << size.rows << ' ' << size.columns;
  }
}

TEST(Screen, KeepsTheLinesThatScrolledOffLast) {
  Screen screen({2, 8}, [](std::string_view) {});
  for (int line = 0; line < 100'010; ++line) screen.feed(std::to_string(line) + "\r\n");
  ASSERT_EQ(screen.scrolled_off().size(), 100'000U);
  EXPECT_EQ(screen.scrolled_off().back(), "100008");
}

TEST(Screen, TakesInAllBytesBeforeItSaysThatItsAnswerFailed) {
  Screen screen({4, 20}, [](std::string_view) { throw std::runtime_error("nobody listens"); });
  EXPECT_THROW(screen.feed("before\033[6n after"), std::runtime_error) << "it was asked for its cursor";
  EXPECT_EQ(screen.rows()[0], "before after");
  EXPECT_NO_THROW(screen.feed("!"));
  EXPECT_EQ(screen.rows()[0], "before after!");
}

TEST_F(ScreenTest, KnowsHowItsLettersLook) {
  screen_.feed("one \x1b[1;31mred\x1b[0m \r\n\x1b[38;2;1;2;3;7mmine \x1b[0m\x1b[4;3;48;5;200mx\x1b[0m");
  const auto rows = screen_.painted();
  ASSERT_EQ(rows.size(), 4u);
  ASSERT_EQ(rows[0].size(), 2u);
  EXPECT_EQ(rows[0][0], (terminal::PaintedText{"one ", {}}));
  EXPECT_EQ(rows[0][1].text, "red");
  EXPECT_TRUE(rows[0][1].look.bold);
  EXPECT_FALSE(rows[0][1].look.back);
  EXPECT_EQ(rows[0][1].look.front->index, 1);
  ASSERT_EQ(rows[1].size(), 2u);
  EXPECT_EQ(rows[1][0].text, "mine ") << "a blank that looks like something stays";
  EXPECT_TRUE(rows[1][0].look.reverse);
  EXPECT_EQ(rows[1][0].look.front, (terminal::Colour{terminal::Colour::kAny, 1, 2, 3}));
  EXPECT_TRUE(rows[1][1].look.underline && rows[1][1].look.italic);
  EXPECT_EQ(rows[1][1].look.back->index, 200);
  EXPECT_TRUE(rows[2].empty());
}

}  // namespace
