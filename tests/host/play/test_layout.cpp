#include "host/play/layout.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

TEST(Text, DescribesKeysForPeople) {
  EXPECT_EQ(play::describe_keys("12\n"), "\"12\", Enter");
  EXPECT_EQ(play::describe_keys(" \003\033"), "Space, Ctrl-C, Escape");
  EXPECT_EQ(play::describe_keys("a b"), "\"a\", Space, \"b\"");
  EXPECT_EQ(play::describe_keys("\xc3\xa9"
                                "a\xff\xc2\x9b"),
            "\"\xc3\xa9"
            "a\", \\xff, \\xc2, \\x9b");
}

TEST(Text, WritesAdviceAsSteps) {
  unsetenv("SPBOX_CALLED");
  EXPECT_EQ(play::as_steps("`spbox units /tmp/x/box` and `spbox show /tmp/x/box UNIT` help.", "/tmp/x/box"),
            "`spbox units` and `spbox show UNIT` help.");
  EXPECT_EQ(play::as_steps("`spbox units /tmp/x/boxes`, `spbox break`, spbox units box, `spbox", "/tmp/x/box"),
            "`spbox units /tmp/x/boxes`, `spbox break`, spbox units box, `spbox");
  setenv("SPBOX_CALLED", "./dev spbox", 1);
  EXPECT_EQ(play::as_steps("`./dev spbox mend 'my box' x` mends it.", "my box"), "`spbox mend x` mends it.");
  unsetenv("SPBOX_CALLED");
}

}  // namespace
