// What a program in the background says.
#include "host/terminal/background_program.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace terminal {
namespace {

TEST(BackgroundProgram, KeepsEachLineOfProcessesThatWriteAtOnce) {
  BackgroundProgram program(
      {"sh", "-c", "for each in 1 2 3 4; do seq 2000 | while read n; do echo $n; done & done; wait"});
  EXPECT_EQ(program.wait(), 0);
  EXPECT_EQ(std::ranges::count(program.output(), '\n'), 4 * 2000);
}

}  // namespace
}  // namespace terminal
