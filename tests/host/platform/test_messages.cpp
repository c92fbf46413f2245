#include <dirent.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>

#include "host/box/daemon_socket.h"
#include "host/include/lmainte_host.h"
#include "include/lmainte.h"
#include "include/lmainte_platform.h"
#include "tests/host/platform/box_fixture.h"

namespace {

struct Short {
  lmainte_host_message head;
  uint32_t word;
};

struct Reply {
  lmainte_host_message head;
  std::array<uint8_t, 1008> rest;
};

std::size_t descriptors_open() {
  DIR *folder = opendir("/proc/self/fd");
  std::size_t count = 0;
  while (readdir(folder) != nullptr) ++count;
  closedir(folder);
  return count;
}

// A daemon in the test's own hands.
class Daemon {
 public:
  explicit Daemon(const box::Place &place, const char *name = "monitor") {
    std::filesystem::create_directories(place.daemons());
    listener_ = box::daemon_socket(place.daemons(), name, bind);
    EXPECT_GE(listener_, 0) << strerror(errno);
    EXPECT_EQ(listen(listener_, 4), 0);
  }
  ~Daemon() {
    hang_up();
    close(listener_);
  }
  Daemon(const Daemon &) = delete;
  Daemon &operator=(const Daemon &) = delete;

  void accept() {
    const int taken = accept4(listener_, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    ASSERT_GE(taken, 0) << strerror(errno);
    peers_.push_back(taken);
  }
  void hang_up() {
    for (const int peer : peers_) close(peer);
    peers_.clear();
  }
  void say(const void *bytes, std::size_t size, std::size_t peer = 0) const {
    ASSERT_EQ(send(peers_.at(peer), bytes, size, MSG_NOSIGNAL), static_cast<ssize_t>(size)) << strerror(errno);
  }
  void answer(uint32_t sequence, uint32_t word, std::size_t peer = 0) const {
    const Short reply{{20, 9, 2, sequence}, word};
    say(&reply, sizeof reply, peer);
  }
  ssize_t hear(void *buffer, std::size_t size) const { return recv(peers_.at(0), buffer, size, 0); }

 private:
  int listener_;
  std::vector<int> peers_;
};

class Messages : public BoxTest {
 protected:
  void TearDown() override {
    for (const int channel : opened_) lmainte_host_close_channel(channel);
    BoxTest::TearDown();
  }

  int open(const char *name = "monitor") {
    const int channel = lmainte_host_open_channel(name);
    EXPECT_GE(channel, 0) << strerror(errno);
    opened_.push_back(channel);
    return channel;
  }
  int open(Daemon &daemon) {
    const int channel = open();
    daemon.accept();
    return channel;
  }

  // lcmn_select with a limit in microseconds.
  int32_t select(long microseconds = 0) {
    timeval limit{microseconds / 1'000'000, microseconds % 1'000'000};
    FD_ZERO(&ready);
    first = second = 99;
    return lcmn_select(&first, &second, &ready, nullptr, nullptr, &limit);
  }

  fd_set ready;
  uint8_t first = 99;
  uint8_t second = 99;

 private:
  std::vector<int> opened_;
};

Short request(uint32_t sequence, uint32_t word = 0) {
  return {{20, 9, 2, sequence}, word};
}

TEST_F(Messages, ARequestReachesTheDaemonAndItsReplyComesBack) {
  Daemon daemon(place);
  const int channel = open(daemon);
  const Short asked = request(7, 0x01020304);
  EXPECT_EQ(lcmn_send(channel, &asked), 20);
  Short heard{};
  EXPECT_EQ(daemon.hear(&heard, sizeof heard), 20);
  EXPECT_EQ(memcmp(&heard, &asked, sizeof asked), 0);

  daemon.answer(7, 0x0A0B0C0D);
  EXPECT_EQ(select(), 1);
  EXPECT_EQ(first, 0);
  EXPECT_EQ(second, 0);
  EXPECT_EQ(lcmn_process_iszero(&ready), 0);
  EXPECT_TRUE(FD_ISSET(channel, &ready));
  Reply reply{};
  EXPECT_EQ(lcmn_receive(channel, &reply), 20);
  EXPECT_EQ(reply.head.sequence, 7U);
  uint32_t word = 0;
  memcpy(&word, reply.rest.data(), 4);
  EXPECT_EQ(word, 0x0A0B0C0DU);
}

// In a process of its own: the library's records map the box's trace for good.
TEST_F(Messages, TheLibraryAsksADaemonThroughThem) {
  Daemon daemon(place);
  const int channel = open(daemon);
  const auto result_of = [&](uint32_t sequence) {
    return in_child([&] {
      const Short asked = request(sequence);
      Reply reply{};
      const int32_t result = lmainte_ipc_communicate(&asked, channel, 1, &reply);
      return result == 0 && reply.rest[0] + reply.rest[3] != 5 ? 100 : result;
    });
  };
  daemon.answer(1, 5);
  EXPECT_EQ(result_of(1), 0);
  daemon.hang_up();
  EXPECT_EQ(result_of(2), 8) << "the daemon is gone";
}

TEST_F(Messages, TheLongestMessageIsAThousandAndTwentyFourBytes) {
  Daemon daemon(place);
  const int channel = open(daemon);
  Reply asked{{1024, 0, 0, 3}, {}};
  asked.rest.back() = 0x5A;
  EXPECT_EQ(lcmn_send(channel, &asked), 1024);
  daemon.say(&asked, 1024);
  Reply reply{};
  EXPECT_EQ(lcmn_receive(channel, &reply), 1024);
  EXPECT_EQ(reply.rest.back(), 0x5A);
}

TEST_F(Messages, AMessageOfASizeOutOfRangeIsNotSent) {
  Daemon daemon(place);
  const int channel = open(daemon);
  for (const uint32_t size : {0U, 15U, 1025U, 0xFFFFFFFFU}) {
    const Short asked{{size, 0, 0, 0}, 0};
    EXPECT_EQ(lcmn_send(channel, &asked), -1) << size;
    EXPECT_EQ(errno, EMSGSIZE) << size;
  }
  Short heard;
  EXPECT_EQ(daemon.hear(&heard, sizeof heard), -1);
  EXPECT_EQ(errno, EAGAIN);
}

TEST_F(Messages, NullPointersAreRefused) {
  Daemon daemon(place);
  const int channel = open(daemon);
  timeval limit{};
  const struct {
    const char *says;
    int32_t result;
    int reason;
  } rows[] = {
      {"no name", lmainte_host_open_channel(nullptr), errno},
      {"no request", lcmn_send(channel, nullptr), errno},
      {"no room for the reply", lcmn_receive(channel, nullptr), errno},
      {"no first status", lcmn_select(nullptr, &second, &ready, nullptr, nullptr, &limit), errno},
      {"no second status", lcmn_select(&first, nullptr, &ready, nullptr, nullptr, &limit), errno},
      {"no set", lcmn_select(&first, &second, nullptr, nullptr, nullptr, &limit), errno},
      {"no limit", lcmn_select(&first, &second, &ready, nullptr, nullptr, nullptr), errno},
      {"a set for writing", lcmn_select(&first, &second, &ready, &ready, nullptr, &limit), errno},
      {"a set for exceptions", lcmn_select(&first, &second, &ready, nullptr, &ready, &limit), errno},
  };
  for (const auto &row : rows) {
    EXPECT_EQ(row.result, -1) << row.says;
    EXPECT_EQ(row.reason, EINVAL) << row.says;
  }
  EXPECT_NE(lcmn_process_iszero(nullptr), 0);
}

TEST_F(Messages, ALimitBelowZeroOrWithTooManyMicrosecondsIsRefused) {
  Daemon daemon(place);
  open(daemon);
  for (timeval limit : {timeval{-1, 0}, timeval{0, -1}, timeval{0, 1'000'000}}) {
    EXPECT_EQ(lcmn_select(&first, &second, &ready, nullptr, nullptr, &limit), -1) << limit.tv_sec;
    EXPECT_EQ(errno, EINVAL);
  }
}

TEST_F(Messages, ADescriptorThatIsNoChannelIsRefused) {
  const int other = ::open("/dev/null", O_RDWR | O_CLOEXEC);
  const Short asked = request(1);
  Reply reply;
  for (const int fd : {-1, other, 100000}) {
    EXPECT_EQ(lcmn_send(fd, &asked), -1) << fd;
    EXPECT_EQ(errno, EBADF) << fd;
    EXPECT_EQ(lcmn_receive(fd, &reply), -1) << fd;
    EXPECT_EQ(errno, EBADF) << fd;
    EXPECT_EQ(lmainte_host_close_channel(fd), -1) << fd;
    EXPECT_EQ(errno, EBADF) << fd;
  }
  close(other);
}

TEST_F(Messages, NothingInTimeIsTheFirstStatusAndAnEmptySet) {
  Daemon daemon(place);
  open(daemon);
  EXPECT_EQ(select(), 0);
  EXPECT_EQ(first, 1);
  EXPECT_EQ(second, 0);
  EXPECT_NE(lcmn_process_iszero(&ready), 0);
}

TEST_F(Messages, WithoutAChannelThereIsNothingToWaitFor) {
  EXPECT_EQ(select(1'000'000), -1);
  EXPECT_EQ(errno, ENOTCONN);
}

TEST_F(Messages, AllChannelsAreWatchedAndOnlyTheReadyOnesAreNamed) {
  Daemon daemon(place);
  const int quiet = open(daemon);
  const int talking = open(daemon);
  Daemon other(place, "other");
  const int also = open("other");
  other.accept();
  daemon.answer(0, 1, 1);
  other.answer(0, 1);
  EXPECT_EQ(select(), 2);
  EXPECT_FALSE(FD_ISSET(quiet, &ready));
  EXPECT_TRUE(FD_ISSET(talking, &ready));
  EXPECT_TRUE(FD_ISSET(also, &ready));
}

TEST_F(Messages, ADeadDaemonIsReadyAndThenAnError) {
  Daemon daemon(place);
  const int channel = open(daemon);
  const Short asked = request(1);
  EXPECT_EQ(lcmn_send(channel, &asked), 20);
  daemon.answer(1, 1);
  daemon.hang_up();
  Reply reply;
  EXPECT_EQ(select(), 1);
  EXPECT_EQ(first, 0);
  EXPECT_EQ(second, 1) << "a daemon has gone";
  EXPECT_TRUE(FD_ISSET(channel, &ready));
  EXPECT_EQ(lcmn_receive(channel, &reply), 20) << "its last words";
  EXPECT_EQ(lcmn_receive(channel, &reply), -1);
  EXPECT_EQ(errno, ECONNRESET);
  EXPECT_EQ(lcmn_send(channel, &asked), -1) << "and no signal";
  EXPECT_EQ(errno, EPIPE);
}

TEST_F(Messages, GarbledRepliesAreErrorsAndLeaveTheBufferAlone) {
  Daemon daemon(place);
  const int channel = open(daemon);
  std::array<uint8_t, 2048> bytes{};
  const struct {
    const char *says;
    uint32_t size;
    std::size_t sent;
  } rows[] = {
      {"shorter than a head", 12, 12},
      {"shorter than it says", 24, 20},
      {"longer than it says", 16, 20},
      {"longer than a message may be", 1028, 1028},
      {"one byte", 1, 1},
  };
  for (const auto &row : rows) {
    memcpy(bytes.data(), &row.size, 4);
    daemon.say(bytes.data(), row.sent);
    EXPECT_EQ(select(), 1) << row.says;
    Reply reply;
    memset(&reply, 0xA5, sizeof reply);
    Reply before = reply;
    EXPECT_EQ(lcmn_receive(channel, &reply), -1) << row.says;
    EXPECT_EQ(errno, EBADMSG) << row.says;
    EXPECT_EQ(memcmp(&reply, &before, sizeof reply), 0) << row.says;
  }
}

TEST_F(Messages, AReplyToAnEarlierRequestIsDropped) {
  Daemon daemon(place);
  const int channel = open(daemon);
  for (const uint32_t sequence : {1U, 2U}) {
    const Short asked = request(sequence);
    EXPECT_EQ(lcmn_send(channel, &asked), 20);
  }
  daemon.answer(1, 111);
  EXPECT_EQ(select(), 0) << "the late reply does not count as one";
  EXPECT_EQ(first, 1);
  daemon.answer(1, 112);
  daemon.answer(2, 222);
  Reply reply;
  EXPECT_EQ(lcmn_receive(channel, &reply), 20);
  EXPECT_EQ(reply.head.sequence, 2U);
}

TEST_F(Messages, NeitherSendingNorReceivingWaits) {
  Daemon daemon(place);
  const int channel = open(daemon);
  Reply reply;
  EXPECT_EQ(lcmn_receive(channel, &reply), -1);
  EXPECT_EQ(errno, EAGAIN);
  const Reply asked{{1024, 0, 0, 1}, {}};
  int sent = 0;
  while (sent < 100000 && lcmn_send(channel, &asked) > 0) ++sent;
  EXPECT_LT(sent, 100000) << "a daemon that reads nothing";
  EXPECT_EQ(errno, EAGAIN);
}

TEST_F(Messages, ASignalDoesNotShortenTheWait) {
  Daemon daemon(place);
  open(daemon);
  struct sigaction quiet = {};
  struct sigaction old;
  quiet.sa_handler = [](int) {};
  sigaction(SIGALRM, &quiet, &old);
  const itimerval every_five_ms{{0, 5'000}, {0, 5'000}};
  setitimer(ITIMER_REAL, &every_five_ms, nullptr);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(select(40'000), 0);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(40));
  const itimerval never{};
  setitimer(ITIMER_REAL, &never, nullptr);
  sigaction(SIGALRM, &old, nullptr);
}

TEST_F(Messages, ADaemonThatIsNotThereCannotBeReached) {
  EXPECT_EQ(lmainte_host_open_channel("monitor"), -1);
  EXPECT_EQ(errno, ENOENT);
  { const Daemon ended(place); }
  EXPECT_EQ(lmainte_host_open_channel("monitor"), -1);
  EXPECT_EQ(errno, ECONNREFUSED);
}

TEST_F(Messages, ANameThatIsNoFilesIsRefused) {
  const Daemon daemon(place);
  for (const std::string &name : {std::string(), std::string("a/b"), std::string("."), std::string(".."),
                                  std::string("/monitor"), std::string(64, 'x')}) {
    EXPECT_EQ(lmainte_host_open_channel(name.c_str()), -1) << name;
    EXPECT_EQ(errno, EINVAL) << name;
  }
}

TEST_F(Messages, ABoxInAFolderOfALongNameHasDaemonsToo) {
  const box::Place deep(scratch.path() / std::string(100, 'd') / std::string(100, 'e'));
  Daemon daemon(deep);
  setenv("SPBOX_ROOT", deep.root().c_str(), 1);
  open(daemon);
}

TEST_F(Messages, SixteenChannelsAreTheMostAndAClosedOneMakesRoom) {
  Daemon daemon(place);
  std::array<int, 16> channels;
  for (int &channel : channels) {
    channel = lmainte_host_open_channel("monitor");
    ASSERT_GE(channel, 0) << strerror(errno);
    daemon.accept();
  }
  EXPECT_EQ(lmainte_host_open_channel("monitor"), -1);
  EXPECT_EQ(errno, EMFILE);
  EXPECT_EQ(lmainte_host_close_channel(channels[3]), 0);
  channels[3] = lmainte_host_open_channel("monitor");
  EXPECT_GE(channels[3], 0);
  for (const int channel : channels) EXPECT_EQ(lmainte_host_close_channel(channel), 0);
}

TEST_F(Messages, NoDescriptorIsLeftAndExecveClosesAChannel) {
  Daemon daemon(place);
  const std::size_t before = descriptors_open();
  const int channel = lmainte_host_open_channel("monitor");
  ASSERT_GE(channel, 0);
  EXPECT_EQ(fcntl(channel, F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
  EXPECT_EQ(descriptors_open(), before + 1);
  EXPECT_EQ(lmainte_host_open_channel("nobody"), -1);
  EXPECT_EQ(lmainte_host_close_channel(channel), 0);
  EXPECT_EQ(descriptors_open(), before);
}

TEST_F(Messages, AChannelClosedBehindThePlatformsBackIsAnError) {
  Daemon daemon(place);
  const int channel = open(daemon);
  close(channel);
  EXPECT_EQ(select(1'000'000), -1);
  EXPECT_EQ(errno, EBADF);
}

}  // namespace
