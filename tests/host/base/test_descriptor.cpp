#include "host/base/descriptor.h"

#include <fcntl.h>
#include <gtest/gtest.h>

namespace {

bool is_open(int fd) {
  return fcntl(fd, F_GETFD) >= 0;
}

int some_file() {
  return open("/dev/null", O_RDONLY | O_CLOEXEC);
}

TEST(Descriptor, IsClosedByItsOwnerAndErrnoStays) {
  int fd = -1;
  {
    const base::Descriptor owner(some_file());
    fd = owner.get();
    ASSERT_TRUE(is_open(fd));
    errno = EDOM;
  }
  EXPECT_EQ(errno, EDOM);
  EXPECT_FALSE(is_open(fd));
}

TEST(Descriptor, IsGivenAwayByReleaseAndByMoving) {
  base::Descriptor first(some_file());
  base::Descriptor second(std::move(first));
  const int fd = second.release();
  EXPECT_EQ(second.get(), -1);
  EXPECT_EQ(second.release(), -1);
  second.reset();
  ASSERT_TRUE(is_open(fd)) << "whoever got it closes it";
  close(fd);
}

}  // namespace
