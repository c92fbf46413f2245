// The daemon as a process: its connections, its end, and its turns with another one.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <iterator>
#include <optional>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "host/base/child.h"
#include "host/base/descriptor.h"
#include "host/box/contents.h"
#include "host/box/daemon_bend.h"
#include "host/box/daemon_socket.h"
#include "host/daemon/server.h"
#include "host/include/lmainte_host.h"
#include "include/lmainte.h"
#include "tests/eventually.h"
#include "tests/host/box/child.h"
#include "tests/host/box/scratch.h"

namespace {

constexpr int kPatience = 10'000;  // milliseconds, of a test that is about to fail

bool listening_fails = false;

// A daemon's process.
class Starting {
 public:
  explicit Starting(const box::Place &place, const std::optional<rlim_t> &descriptors = std::nullopt) {
    std::array<int, 2> ends{};
    EXPECT_EQ(pipe(ends.data()), 0);
    const std::string fd = std::to_string(ends[1]);
    pid_ = fork();
    if (pid_ == 0) {
      const rlimit limit{descriptors.value_or(0), descriptors.value_or(0)};
      if (descriptors && setrlimit(RLIMIT_NOFILE, &limit) != 0) _exit(126);
      execl(MONITOR_DAEMON, MONITOR_DAEMON, place.root().c_str(), fd.c_str(), nullptr);
      _exit(127);
    }
    close(ends[1]);
    says_ = base::Descriptor(ends[0]);
  }
  ~Starting() { end(); }
  Starting(const Starting &) = delete;
  Starting &operator=(const Starting &) = delete;

  // The next line that it says; "nothing" where none comes in time, or at its end.
  std::string line(int limit = kPatience) const {
    std::string line;
    pollfd at{says_.get(), POLLIN, 0};
    for (char character = 0; poll(&at, 1, limit) == 1 && read(at.fd, &character, 1) == 1; line += character) {
      if (character == '\n') return line;
    }
    return "nothing";
  }

  // What it says when it is ready.
  std::string ready_line() const { return std::to_string(pid_); }

  // Its processor time so far, in milliseconds.
  std::int64_t worked() const {
    clockid_t clock{};
    timespec time{};
    EXPECT_EQ(clock_getcpuclockid(pid_, &clock), 0);
    EXPECT_EQ(clock_gettime(clock, &time), 0);
    return static_cast<std::int64_t>(time.tv_sec) * 1000 + time.tv_nsec / 1'000'000;
  }

  int end(int signal = SIGTERM) {
    if (pid_ == 0) return 0;
    kill(pid_, signal);
    int status = 0;
    waitpid(pid_, &status, 0);
    pid_ = 0;
    return status;
  }

  // The same for one that has ended by itself.
  int ended() {
    const int status = base::wait_status_of(pid_);
    pid_ = 0;
    return status;
  }

 private:
  pid_t pid_;
  base::Descriptor says_;
};

// One that is ready when this is there.
class Process : public Starting {
 public:
  explicit Process(const box::Place &place, const std::optional<rlim_t> &descriptors = std::nullopt)
      : Starting(place, descriptors) {
    EXPECT_EQ(line(), ready_line()) << "the daemon did not start";
  }
};

class ServerTest : public testing::Test {
 protected:
  ServerTest() { box::create_box(place_, LMAINTE_MODEL_QA); }
  void TearDown() override {
    for (const int fd : opened_) close(fd);
  }

  int open() {
    const int fd = box::daemon_socket(place_.daemons(), "monitor", connect);
    EXPECT_GE(fd, 0) << strerror(errno);
    opened_.push_back(fd);
    return fd;
  }
  static void ask(int fd, std::uint32_t sequence) {
    const lmainte_host_message request{16, 1, LMAINTE_HOST_ASK_STATUS, sequence};
    ASSERT_EQ(send(fd, &request, sizeof request, MSG_NOSIGNAL), 16);
  }
  // What comes: the sequence of a reply, 0 for the end of the connection, -1 for nothing in time.
  static int heard(int fd, int limit = kPatience) {
    pollfd at{fd, POLLIN, 0};
    if (poll(&at, 1, limit) != 1) return -1;
    lmainte_host_reply reply{};
    const ssize_t length = recv(fd, &reply, sizeof reply, 0);
    return length <= 0 ? 0 : static_cast<int>(reply.head.sequence);
  }

  void bend(box::DaemonWay way, std::uint32_t seconds = 0) {
    box::TextDatabase kept(place_);
    box::set_daemon_bend(kept, {way, seconds});
  }

  Scratch scratch_;
  box::Place place_{scratch_ / "box"};

 private:
  std::vector<int> opened_;
};

TEST_F(ServerTest, AnswersEveryoneWhoAsks) {
  const Process daemon(place_);
  const int one = open(), other = open();
  ask(one, 11);
  ask(other, 22);
  ask(one, 12);
  EXPECT_EQ(heard(one), 11);
  EXPECT_EQ(heard(one), 12);
  EXPECT_EQ(heard(other), 22);
}

TEST_F(ServerTest, LivesOnWhenAPeerLeavesInTheMiddle) {
  const Process daemon(place_);
  for (int i = 0; i < 100; ++i) {
    const int fd = box::daemon_socket(place_.daemons(), "monitor", connect);
    ASSERT_GE(fd, 0) << strerror(errno);
    ask(fd, 1);
    close(fd);
  }
  const int fd = open();
  ask(fd, 5);
  EXPECT_EQ(heard(fd), 5);
}

TEST_F(ServerTest, ALateAnswerKeepsNobodyElseWaiting) {
  const Process daemon(place_);
  const int late = open(), other = open();
  bend(box::DaemonWay::kLate, 1);
  ask(late, 1);
  EXPECT_EQ(heard(late, 100), -1);
  bend(box::DaemonWay::kWell);
  ask(other, 2);
  EXPECT_EQ(heard(other), 2);
  EXPECT_EQ(heard(late), 1) << "in the end it comes";
}

TEST_F(ServerTest, ADeadDaemonEndsTheConnection) {
  const Process daemon(place_);
  const int fd = open();
  bend(box::DaemonWay::kDead);
  ask(fd, 1);
  EXPECT_EQ(heard(fd), 0);
  bend(box::DaemonWay::kWell);
  const int again = open();
  ask(again, 2);
  EXPECT_EQ(heard(again), 2);
}

TEST_F(ServerTest, TurnsAwayWhoeverIsOneTooMany) {
  const Process daemon(place_);
  std::vector<int> peers(64);
  for (int &peer : peers) peer = open();
  ask(peers.back(), 1);
  EXPECT_EQ(heard(peers.back()), 1);
  for (int i = 0; i < 2; ++i) EXPECT_EQ(heard(open()), 0) << "the connection ends";
  ask(peers.front(), 2);
  EXPECT_EQ(heard(peers.front()), 2) << "the others stay";
  shutdown(peers.front(), SHUT_RDWR);
  ask(peers.back(), 3);
  EXPECT_EQ(heard(peers.back()), 3);
  const int next = open();
  ask(next, 4);
  EXPECT_EQ(heard(next), 4) << "there is room again";
}

TEST_F(ServerTest, RestsAtTheLimitOfItsDescriptors) {
  const Process daemon(place_, 24);
  int turned_away = 0;
  std::vector<int> peers;
  while (turned_away < 3 && peers.size() < 40) {
    peers.push_back(open());
    turned_away += heard(peers.back(), 100) == 0 ? 1 : 0;
  }
  EXPECT_EQ(turned_away, 3);
  EXPECT_GT(peers.size(), 10U) << "some found room";
  const auto before = daemon.worked();
  std::this_thread::sleep_for(std::chrono::milliseconds(300));
  EXPECT_LT(daemon.worked() - before, 100) << "milliseconds of 300";
  for (const int peer : peers) shutdown(peer, SHUT_RDWR);
  ASSERT_TRUE(eventually([&] {
    const int fd = open();
    const lmainte_host_message request{16, 1, LMAINTE_HOST_ASK_STATUS, 5};
    return send(fd, &request, sizeof request, MSG_NOSIGNAL) == 16 && heard(fd, 1000) == 5;
  }));
}

TEST_F(ServerTest, LeavesNoSocketBehind) {
  Process daemon(place_);
  const int fd = open();
  EXPECT_EQ(daemon.end(), 0) << "exit status";
  EXPECT_FALSE(std::filesystem::exists(place_.daemons() / "monitor"));
  EXPECT_EQ(heard(fd), 0);
}

TEST_F(ServerTest, StartsAfterOneThatWasKilled) {
  Process daemon(place_);
  daemon.end(SIGKILL);
  EXPECT_TRUE(std::filesystem::exists(place_.daemons() / "monitor"));
  const Process next(place_);
  const int fd = open();
  ask(fd, 3);
  EXPECT_EQ(heard(fd), 3);
}

TEST_F(ServerTest, ASecondOneTakesOverWhenTheFirstEnds) {
  Process first(place_);
  const Process second(place_);
  first.end();
  int fd = -1;
  for (int tries = 0; fd < 0 && tries < 1000; ++tries) {
    usleep(10'000);
    fd = box::daemon_socket(place_.daemons(), "monitor", connect);
  }
  ASSERT_GE(fd, 0) << strerror(errno);
  ask(fd, 4);
  EXPECT_EQ(heard(fd), 4);
  close(fd);
}

TEST_F(ServerTest, AnOpenChannelEndsWithTheFirstAndIsOpenedAnew) {
  Process first(place_);
  const Process second(place_);
  const int before = open();
  ask(before, 1);
  EXPECT_EQ(heard(before), 1);
  first.end();
  EXPECT_EQ(heard(before), 0) << "the connection ends";
  ASSERT_TRUE(eventually([&] { return box::daemon_listens(place_.daemons(), "monitor"); }));
  const int after = open();
  ask(after, 2);
  EXPECT_EQ(heard(after), 2);
}

// The turn of another one, which listens when it is told to.
class Other {
 public:
  explicit Other(const box::Place &place) : folder_(place.daemons()) {
    std::filesystem::create_directories(folder_);
    turn_ = base::Descriptor(::open((folder_ / ".turn").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666));
    EXPECT_EQ(flock(turn_.get(), LOCK_EX | LOCK_NB), 0);
  }
  void listens() {
    listener_ = base::Descriptor(box::daemon_socket(folder_, "monitor", bind));
    EXPECT_EQ(listen(listener_.get(), 4), 0) << strerror(errno);
  }
  void ends() {
    listener_.reset();
    turn_.reset();
  }

 private:
  std::filesystem::path folder_;
  base::Descriptor turn_, listener_;
};

TEST_F(ServerTest, ASecondOneIsReadyWhenTheFirstListens) {
  Other first(place_);
  const Starting second(place_);
  EXPECT_EQ(second.line(200), "nothing") << "it has its turn and does not listen yet";
  first.listens();
  EXPECT_EQ(second.line(), second.ready_line());
}

TEST_F(ServerTest, ASecondOneIsTheFirstWhenThatOneWasEndingAlready) {
  Other first(place_);
  const Starting second(place_);
  EXPECT_EQ(second.line(200), "nothing") << "it listens no more";
  first.ends();
  EXPECT_EQ(second.line(), second.ready_line());
  const int fd = open();
  ask(fd, 6);
  EXPECT_EQ(heard(fd), 6);
}

TEST_F(ServerTest, ASecondOneDoesNotWaitForEverForOneThatNeverListens) {
  const Other first(place_);
  Starting second(place_);
  EXPECT_EQ(second.line(), "another one holds " + (place_.daemons() / ".turn").string() + " and does not listen");
  EXPECT_EQ(WEXITSTATUS(second.ended()), 1);
}

TEST_F(ServerTest, AWaitingOneThatFailsAtItsTurnSaysWhy) {
  Other first(place_);
  first.listens();
  Starting second(place_);
  EXPECT_EQ(second.line(), second.ready_line());
  std::filesystem::remove(place_.daemons() / "monitor");
  std::filesystem::create_directories(place_.daemons() / "monitor/full");
  first.ends();
  const std::string why = second.line();
  EXPECT_NE(why.find("monitor"), std::string::npos) << why;
  EXPECT_NE(why.find("not empty"), std::string::npos) << why;
  EXPECT_EQ(WEXITSTATUS(second.ended()), 1);
}

TEST_F(ServerTest, OneThatCannotListenLeavesNothing) {
  std::filesystem::create_directories(place_.daemons());
  const auto open_ones = [] {
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return std::distance(begin(all), end(all));
  };
  const auto before = open_ones();
  listening_fails = true;
  EXPECT_THROW(monitor::Server{place_}, std::system_error);
  listening_fails = false;
  EXPECT_EQ(open_ones(), before);
  EXPECT_FALSE(std::filesystem::exists(place_.daemons() / "monitor"));
}

// A command in the box put it there.
// Who waits for it would wait for ever.
TEST_F(ServerTest, EndsWhereItCannotSayThatItIsReady) {
  const int status = in_child([&] {
    const int full = ::open("/dev/full", O_WRONLY);
    alarm(20);
    execl(MONITOR_DAEMON, MONITOR_DAEMON, place_.root().c_str(), std::to_string(full).c_str(), nullptr);
    return 127;
  });
  EXPECT_EQ(status, 1);
}

TEST_F(ServerTest, TakesNoTurnBehindALink) {
  std::filesystem::create_directories(place_.daemons());
  std::filesystem::create_symlink(scratch_ / "elsewhere", place_.daemons() / ".turn");
  Starting daemon(place_);
  const std::string why = daemon.line();
  EXPECT_NE(why.find(".turn: Too many levels of symbolic links"), std::string::npos) << why;
  EXPECT_EQ(WEXITSTATUS(daemon.ended()), 1);
  EXPECT_FALSE(std::filesystem::exists(scratch_ / "elsewhere"));
}

TEST_F(ServerTest, AWaitingOneEndsToo) {
  const Process first(place_);
  Process second(place_);
  EXPECT_EQ(WTERMSIG(second.end()), SIGTERM);
  EXPECT_TRUE(std::filesystem::exists(place_.daemons() / "monitor")) << "of the first";
}

TEST_F(ServerTest, EndsWithItsParent) {
  Child parent([&](const auto &say_ready) {
    const Process daemon(place_);
    say_ready();
    pause();
    return 0;
  });
  ASSERT_TRUE(parent.is_ready());
  const int fd = open();
  parent.die();
  EXPECT_EQ(heard(fd), 0) << "the connection ends with the daemon";
}

}  // namespace

// The system's, but where a test wants it to fail.
extern "C" int listen(int fd, int backlog) noexcept {
  if (!listening_fails) return static_cast<int>(syscall(SYS_listen, fd, backlog));
  errno = EADDRINUSE;
  return -1;
}
