#include "host/base/number.h"

#include <gtest/gtest.h>

namespace {

TEST(NumberIn, IsTheWholeTextOrNothing) {
  EXPECT_EQ(base::number_in<int>("-12"), -12);
  EXPECT_EQ(base::number_in<std::uint32_t>("4294967295"), 4294967295u);
  EXPECT_EQ(base::number_in<double>("0.5"), 0.5);
  for (const char *text : {"", "12x", "12 ", " 12", "x", "+1", "99999999999"}) {
    EXPECT_EQ(base::number_in<int>(text), std::nullopt) << text;
  }
  EXPECT_EQ(base::number_in<std::uint32_t>("-1"), std::nullopt);
}

}  // namespace
