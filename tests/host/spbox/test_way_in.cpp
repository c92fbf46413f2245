#include "host/spbox/way_in.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>

#include "host/base/quoted.h"

namespace {

TEST(WayIn, IsTheToolAsItWasCalledAndTheFolderAsItWasGiven) {
  unsetenv("SPBOX_CALLED");
  const std::string tool = base::quoted(program_invocation_name);
  EXPECT_EQ(spbox::way_in("my box"), tool + " run 'my box'");
  setenv("SPBOX_CALLED", "./dev spbox", 1);
  EXPECT_EQ(spbox::way_in("build/demo-box"), "./dev spbox run build/demo-box");
  setenv("SPBOX_CALLED", "", 1);
  EXPECT_EQ(spbox::way_in("box"), tool + " run box");
}

TEST(WayIn, IsNothingWhereAProgramsNameIsEnough) {
  setenv("SPBOX_RUN", "", 1);
  EXPECT_EQ(spbox::way_in("box"), "");
  setenv("SPBOX_RUN", "spbox run another", 1);
  setenv("SPBOX_CALLED", "./dev spbox", 1);
  EXPECT_EQ(spbox::way_in("box"), "./dev spbox run box");
  unsetenv("SPBOX_RUN");
  unsetenv("SPBOX_CALLED");
}

}  // namespace
