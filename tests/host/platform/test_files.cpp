#include <fcntl.h>
#include <sys/stat.h>
#include <sys/time.h>

#include <array>
#include <cerrno>
#include <csignal>

#include "include/lmainte_platform.h"
#include "tests/host/platform/box_fixture.h"

namespace {

class PlatformFiles : public testing::Test {
 protected:
  PlatformFiles() { std::ofstream(file) << "0123456789"; }

  // Opens the file in another process, which gives up after a while. 0 when it got it.
  int opened_elsewhere(int flags = O_RDWR) const {
    return in_child([&] {
      const itimerval patience{{0, 0}, {0, 200'000}};
      setitimer(ITIMER_REAL, &patience, nullptr);
      return lcmn_lopen(file.c_str(), flags, 0) >= 0 ? 0 : 1;
    });
  }

  Scratch scratch;
  std::filesystem::path file = scratch / "file";
};

TEST_F(PlatformFiles, ReadsAndWritesAtTheDescriptorsPosition) {
  const int fd = lcmn_lopen(file.c_str(), O_RDWR, 0);
  ASSERT_GE(fd, 0);
  std::array<char, 16> text{};
  EXPECT_EQ(lcmn_read(fd, text.data(), 4), 4);
  EXPECT_STREQ(text.data(), "0123");
  EXPECT_EQ(lcmn_write(fd, "xy", 2), 2);
  EXPECT_EQ(lcmn_read(fd, text.data(), 16), 4);
  EXPECT_STREQ(text.data(), "6789");
  EXPECT_EQ(lcmn_read(fd, text.data(), 16), 0);
  EXPECT_EQ(lcmn_write(fd, "", 0), 0);
  EXPECT_EQ(lcmn_close(fd), 0);
}

TEST_F(PlatformFiles, ReportsFailuresWithErrno) {
  std::array<char, 4> text{};
  errno = 0;
  EXPECT_LT(lcmn_lopen((scratch / "missing").c_str(), O_RDWR, 0), 0);
  EXPECT_EQ(errno, ENOENT);
  EXPECT_FALSE(std::filesystem::exists(scratch / "missing"));
  EXPECT_LT(lcmn_lopen(nullptr, O_RDWR, 0), 0);
  EXPECT_EQ(errno, EFAULT);
  EXPECT_LT(lcmn_read(-1, text.data(), 4), 0);
  EXPECT_EQ(errno, EBADF);
  errno = 0;
  EXPECT_LT(lcmn_write(-1, text.data(), 4), 0);
  EXPECT_EQ(errno, EBADF);
  errno = 0;
  EXPECT_NE(lcmn_close(-1), 0);
  EXPECT_EQ(errno, EBADF);
  const int fd = lcmn_lopen(file.c_str(), O_RDONLY, 0);
  EXPECT_LT(lcmn_read(fd, text.data(), -1), 0);
  EXPECT_EQ(errno, EINVAL);
  errno = 0;
  EXPECT_LT(lcmn_write(fd, text.data(), -1), 0);
  EXPECT_EQ(errno, EINVAL);
  EXPECT_LT(lcmn_write(fd, text.data(), 1), 0) << "opened for reading";
  EXPECT_EQ(lcmn_close(fd), 0);
}

TEST_F(PlatformFiles, MakesAFileWithThePermissionsAsked) {
  const mode_t before = umask(022);
  const int fd = lcmn_lopen((scratch / "new").c_str(), O_RDWR | O_CREAT, 0664);
  umask(before);
  ASSERT_GE(fd, 0);
  struct stat status {};
  ASSERT_EQ(fstat(fd, &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0644U);
  EXPECT_NE(fcntl(fd, F_GETFD) & FD_CLOEXEC, 0) << "no program inherits it";
  EXPECT_EQ(lcmn_close(fd), 0);
}

TEST_F(PlatformFiles, KeepsOthersOutUntilItIsClosed) {
  for (int flags : {O_RDWR, O_RDONLY}) {
    const int fd = lcmn_lopen(file.c_str(), flags, 0);
    ASSERT_GE(fd, 0);
    EXPECT_EQ(opened_elsewhere(O_RDWR), -SIGALRM);
    EXPECT_EQ(opened_elsewhere(O_RDONLY), -SIGALRM);
    EXPECT_EQ(lcmn_close(fd), 0);
    EXPECT_EQ(opened_elsewhere(), 0);
  }
}

TEST_F(PlatformFiles, KeepsASecondUserOfTheSameProcessOutToo) {
  EXPECT_EQ(in_child([&] {
              if (lcmn_lopen(file.c_str(), O_RDWR, 0) < 0) return 1;
              const itimerval patience{{0, 0}, {0, 200'000}};
              setitimer(ITIMER_REAL, &patience, nullptr);
              lcmn_lopen(file.c_str(), O_RDWR, 0);
              return 2;
            }),
            -SIGALRM);
}

TEST_F(PlatformFiles, WaitsForTheOtherUser) {
  Child holder([&](const auto &say_ready) {
    const int fd = lcmn_lopen(file.c_str(), O_RDWR, 0);
    say_ready();
    usleep(50'000);
    lcmn_write(fd, "abc", 3);
    return lcmn_close(fd);
  });
  ASSERT_TRUE(holder.is_ready());
  const int fd = lcmn_lopen(file.c_str(), O_RDWR, 0);
  std::array<char, 4> text{};
  EXPECT_EQ(lcmn_read(fd, text.data(), 3), 3);
  EXPECT_STREQ(text.data(), "abc");
  EXPECT_EQ(lcmn_close(fd), 0);
  EXPECT_EQ(holder.end(), 0);
}

TEST_F(PlatformFiles, AUserThatDiesKeepsNobodyOut) {
  Child holder([&](const auto &say_ready) {
    lcmn_lopen(file.c_str(), O_RDWR, 0);
    say_ready();
    pause();
    return 0;
  });
  ASSERT_TRUE(holder.is_ready());
  EXPECT_EQ(opened_elsewhere(), -SIGALRM);
  holder.die();
  EXPECT_EQ(opened_elsewhere(), 0);
}

TEST_F(PlatformFiles, AChildThatLivesOnKeepsNobodyOutAfterClose) {
  const int fd = lcmn_lopen(file.c_str(), O_RDWR, 0);
  Child child([&](const auto &say_ready) {
    say_ready();
    pause();
    return 0;
  });
  ASSERT_TRUE(child.is_ready());
  EXPECT_EQ(lcmn_close(fd), 0);
  EXPECT_EQ(opened_elsewhere(), 0);
}

TEST_F(PlatformFiles, ASignalEndsTheWait) {
  const int fd = lcmn_lopen(file.c_str(), O_RDWR, 0);
  EXPECT_EQ(in_child([&] {
              struct sigaction action {};
              action.sa_handler = [](int) {};
              sigaction(SIGALRM, &action, nullptr);
              const itimerval soon{{0, 0}, {0, 50'000}};
              setitimer(ITIMER_REAL, &soon, nullptr);
              const int own = lcmn_lopen(file.c_str(), O_RDWR, 0);
              return own < 0 && errno == EINTR ? 0 : 1;
            }),
            0);
  EXPECT_EQ(lcmn_close(fd), 0);
}

}  // namespace
