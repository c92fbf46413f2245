#include "host/play/text.h"

#include <gtest/gtest.h>

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

}  // namespace
