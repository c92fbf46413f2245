// What is particular to the clearing of a status: the request's own line is the format of the argument line.

#include <gtest/gtest.h>

#include "tests/unit/doubles/library_test.h"
#include "tests/unit/ops/operations.h"

namespace {

using doubles::machine;

class LmainteClearStatus : public doubles::LibraryTest {
 protected:
  static void expect_arguments(const ClearRequest &request, const char *arguments) {
    machine().children_are_real = true;
    EXPECT_EQ(lmainte_clear_status(10, &request), 0);
    EXPECT_STREQ(machine().executed().arguments, arguments);
  }
};

TEST_F(LmainteClearStatus, EmptyArgumentsAreAccepted) {
  expect_arguments(doubles::a_request(""), "/mgb/bin/clearpci\n");
}

TEST_F(LmainteClearStatus, ArgumentsAreFormattedOnce) {
  expect_arguments(doubles::a_request("-u 100%% %%s"), "/mgb/bin/clearpci\n-u\n100%\n%s\n");
}

TEST_F(LmainteClearStatus, NothingBehindTheEndOfTheArgumentsIsRead) {
  auto request = doubles::a_request("-u /IOU#0");
  request.arguments[10] = 'x';
  expect_arguments(request, "/mgb/bin/clearpci\n-u\n/IOU#0\n");
}

TEST_F(LmainteClearStatus, LimitOfOneIsEnough) {
  machine().programs = {doubles::exits(0)};
  EXPECT_EQ(lmainte_clear_status(1, &doubles::the_request()), 0);
}

}  // namespace
