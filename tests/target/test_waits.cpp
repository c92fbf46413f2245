// What waits, on the emulated machine, where no box gives a time of its own.
#include <sys/select.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

#include <gtest/gtest.h>

#include "tests/target/begins_first.h"

namespace {

TEST(Waits, APlatformIsThereForWhoBeginsBeforeIt) {
  EXPECT_EQ(what_was_called_first.is_done, 1);
  EXPECT_EQ(what_was_called_first.poll, 0);
  EXPECT_EQ(what_was_called_first.usleep, 0);
  EXPECT_EQ(what_was_called_first.select, 0);
  EXPECT_EQ(what_was_called_first.pselect, 0);
  EXPECT_EQ(what_was_called_first.sigtimedwait, -1);
  EXPECT_NE(what_was_called_first.scdb_open, 0);
}

TEST(Waits, ASelectThatASignalEndsLeavesWhatWasLeft) {
  struct sigaction nothing {
  }, before{};
  nothing.sa_handler = [](int) {};
  sigaction(SIGALRM, &nothing, &before);
  timeval limit{30, 0};
  ualarm(10000, 0);
  const int ready = select(0, nullptr, nullptr, nullptr, &limit);
  const int error = errno;
  sigaction(SIGALRM, &before, nullptr);
  EXPECT_EQ(ready, -1);
  EXPECT_EQ(error, EINTR);
  EXPECT_LT(limit.tv_sec, 30);
  EXPECT_GT(limit.tv_sec, 0);
}

}  // namespace
