#include "host/spbox/text.h"

#include <gtest/gtest.h>

namespace {

TEST(Table, ShowsEveryCellAndIsAsWideAsWhatIsShown) {
  EXPECT_EQ(spbox::aligned({{"\x1b", "x"}, {"ab", "y"}}), "\\x1b  x\nab    y\n");
}

}  // namespace
