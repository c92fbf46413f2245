#include "host/spbox/text.h"

#include <gtest/gtest.h>

namespace {

TEST(Table, ShowsEveryCellAndIsAsWideAsWhatIsShown) {
  EXPECT_EQ(spbox::aligned({{"\x1b", "x"}, {"ab", "y"}}), "\\x1b  x\nab    y\n");
}

TEST(Table, GoesOnBelowACellWhereTheWindowEnds) {
  using Lines = std::vector<std::string>;
  EXPECT_EQ(spbox::aligned_lines({{"1", "one two three"}, {"22", "four"}}, 11, 1),
            (Lines{"1   one two\n    three", "22  four"}));
  EXPECT_EQ(spbox::aligned_lines({{"1", "abcdefghijkl"}}, 7, 1), (Lines{"1  abcd\n   efgh\n   ijkl"})) << "no blank";
  EXPECT_EQ(spbox::aligned_lines({{"1", "one", "a b", "cd"}}, 11, 1), (Lines{"1  one\n   a b  cd"})) << "between cells";
  EXPECT_EQ(spbox::wrapped("ää öö üü", 5, 2), "ää öö\n  üü");
  EXPECT_EQ(spbox::wrapped("as long as it is", spbox::kNoWidth, 2), "as long as it is");
}

}  // namespace
