#include <gtest/gtest.h>

#include "tests/unit/doubles/library_test.h"

namespace {

using doubles::Lines;
using doubles::machine;

class LmainteClearStatus : public doubles::LibraryTest {
 protected:
  static ClearRequest request(const std::string &arguments) {
    ClearRequest request = {};
    request.unit_id[0] = 0x68010203;
    request.unit_id[1] = 17;
    for (auto &word : request.reserved) word = 0xB5B5B5B5;
    arguments.copy(request.arguments, sizeof request.arguments - 1);
    return request;
  }
  static int32_t clear(const doubles::Program &program, int32_t time_limit = 10) {
    machine().programs = {program};
    const auto some = request("-u /IOU#0/PCI#1");
    return lmainte_clear_status(time_limit, &some);
  }
  static Lines own_trace() { return doubles::trace_of(0x110C0470); }
};

TEST_F(LmainteClearStatus, RunsTheProgramWithTheRequestsArguments) {
  machine().children_are_real = true;
  const auto some = request("-u /IOU#0/PCI#1 -c status");
  EXPECT_EQ(lmainte_clear_status(10, &some), 0);
  EXPECT_STREQ(machine().executed().path, "/mgb/bin/clearpci");
  EXPECT_STREQ(machine().executed().arguments, "/mgb/bin/clearpci\n-u\n/IOU#0/PCI#1\n-c\nstatus\n");
}

TEST_F(LmainteClearStatus, NoArgumentsAreAsGoodAsSome) {
  machine().children_are_real = true;
  const auto none = request("");
  EXPECT_EQ(lmainte_clear_status(10, &none), 0);
  EXPECT_STREQ(machine().executed().arguments, "/mgb/bin/clearpci\n");
}

TEST_F(LmainteClearStatus, ArgumentsAreFormattedOnce) {
  machine().children_are_real = true;
  const auto some = request("-u 100%% %%s");
  EXPECT_EQ(lmainte_clear_status(10, &some), 0);
  EXPECT_STREQ(machine().executed().arguments, "/mgb/bin/clearpci\n-u\n100%\n%s\n");
}

TEST_F(LmainteClearStatus, NothingBehindTheEndOfTheArgumentsIsRead) {
  machine().children_are_real = true;
  auto some = request("-u /IOU#0");
  some.arguments[10] = 'x';
  EXPECT_EQ(lmainte_clear_status(10, &some), 0);
  EXPECT_STREQ(machine().executed().arguments, "/mgb/bin/clearpci\n-u\n/IOU#0\n");
}

// Of the 256 exit statuses three have a meaning.
TEST_F(LmainteClearStatus, ExitStatusIsTranslated) {
  for (int status = 0; status < 256; ++status) {
    machine().start();
    const int32_t expected = status == 0 ? 0 : status == 128 || status == 220 ? 220 : 8;
    EXPECT_EQ(clear(doubles::exits(status)), expected) << status;
    const std::string value = std::to_string(status);
    Lines story = {"100 110C0470", "100 110C0472 1744896515 17", "100 110C0473 " + value};
    if (status != 0) story.push_back("805 110C1473 " + value);
    story.emplace_back("100 110C0471");
    EXPECT_EQ(own_trace(), story) << status;
  }
}

TEST_F(LmainteClearStatus, ProgramThatOutlivesItsLimitFails) {
  EXPECT_EQ(clear(doubles::hangs(), 7), 8);
  EXPECT_EQ(machine().calls_of({"sleep"}).size(), 7u);
  EXPECT_EQ(own_trace().at(2), "100 110C0473 127");
}

TEST_F(LmainteClearStatus, ProgramThatCannotBeStartedFails) {
  machine().fail("fork");
  EXPECT_EQ(clear(doubles::exits(0)), 8);
}

TEST_F(LmainteClearStatus, LimitBelowOneRunsNothing) {
  for (const int32_t limit : {0, -1, INT32_MIN}) {
    machine().start();
    EXPECT_EQ(clear(doubles::exits(0), limit), 8);
    EXPECT_EQ(machine().calls, Lines{});
    EXPECT_EQ(doubles::trace(), (Lines{"100 110C0470", "805 110C1471", "100 110C0471"}));
  }
}

TEST_F(LmainteClearStatus, LimitOfOneIsEnough) {
  EXPECT_EQ(clear(doubles::exits(0), 1), 0);
}

TEST_F(LmainteClearStatus, MissingRequestRunsNothing) {
  EXPECT_EQ(lmainte_clear_status(10, nullptr), 8);
  EXPECT_EQ(machine().calls, Lines{});
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C0470", "805 110C1472", "100 110C0471"}));
}

TEST_F(LmainteClearStatus, LimitIsLookedAtFirst) {
  EXPECT_EQ(lmainte_clear_status(0, nullptr), 8);
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C0470", "805 110C1471", "100 110C0471"}));
}

}  // namespace
