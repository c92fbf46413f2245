#include "host/base/pipe.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

namespace {

TEST(Pipe, CarriesBytesAndEndsWithItsEnds) {
  base::Pipe pipe;
  EXPECT_EQ(fcntl(pipe.out.get(), F_GETFD), FD_CLOEXEC);
  EXPECT_EQ(fcntl(pipe.in.get(), F_GETFD), FD_CLOEXEC);
  char byte = 'x';
  ASSERT_EQ(write(pipe.in.get(), &byte, 1), 1);
  byte = 0;
  EXPECT_EQ(read(pipe.out.get(), &byte, 1), 1);
  EXPECT_EQ(byte, 'x');
  pipe.in.reset();
  EXPECT_EQ(read(pipe.out.get(), &byte, 1), 0);
}

TEST(Pipe, DoesNotWaitWhereThatIsAskedFor) {
  const base::Pipe pipe(O_NONBLOCK);
  char byte = 0;
  EXPECT_EQ(read(pipe.out.get(), &byte, 1), -1);
  EXPECT_EQ(errno, EAGAIN);
}

// The undefined-behaviour checker opens a pipe to look at an exception, so under sanitizers there is nothing to see here.
#ifndef __SANITIZE_ADDRESS__
TEST(Pipe, SaysWhyThereIsNone) {
  rlimit limit{};
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
  const rlimit none{0, limit.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
  int reason = 0;
  try {
    const base::Pipe pipe;
  } catch (const std::system_error &error) {
    reason = error.code().value();
  }
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
  EXPECT_EQ(reason, EMFILE);
}
#endif

}  // namespace
