#include <gtest/gtest.h>

#include "host/base/pauses.h"

namespace {

using std::chrono::microseconds;

TEST(Pauses, AreTwiceAsLongEachTimeUpToTheLongest) {
  base::Pauses pauses(microseconds(6400));
  for (const int expected : {100, 200, 400, 800, 1600, 3200, 6400, 6400, 6400}) {
    EXPECT_EQ(pauses.next(), microseconds(expected));
  }
}

}  // namespace
