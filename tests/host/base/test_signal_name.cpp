#include "host/base/signal_name.h"

#include <gtest/gtest.h>

namespace {

TEST(SignalName, IsTheFieldsNameOrTheNumber) {
  EXPECT_EQ(base::signal_name(15), "SIGTERM");
  EXPECT_EQ(base::signal_name(9), "SIGKILL");
  EXPECT_EQ(base::signal_name(99), "signal 99");
}

TEST(SignalNumber, TakesANumberOrANameWithOrWithoutSig) {
  EXPECT_EQ(base::signal_number("15"), 15);
  EXPECT_EQ(base::signal_number("SIGTERM"), 15);
  EXPECT_EQ(base::signal_number("KILL"), 9);
  for (const char *text : {"", "0", "-1", "65", "SIG", "TERMINATE", "term"}) {
    EXPECT_EQ(base::signal_number(text), 0) << text;
  }
}

}  // namespace
