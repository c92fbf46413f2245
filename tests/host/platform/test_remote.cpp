// What the platform's server makes of messages that are none, and what a program makes of a server that is gone.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>

#include <array>
#include <chrono>
#include <cstring>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "host/box/call_ring.h"
#include "host/box/event_log.h"
#include "host/box/points.h"
#include "host/box/record_words.h"
#include "host/include/lmainte_host.h"
#include "host/wire/message.h"
#include "include/lmainte.h"
#include "include/lmainte_platform.h"
#include "tests/host/platform/box_fixture.h"

namespace {

using wire::ByteOrder;
using wire::Kind;
using wire::Reader;
using wire::Writer;
using Bytes = std::vector<std::uint8_t>;

Bytes message(Kind kind, const std::function<void(Writer &)> &fields = {}, std::uint32_t sequence = 7) {
  Bytes room(wire::kLongest);
  Writer writer(room, kind, sequence);
  if (fields) fields(writer);
  const auto made = writer.message();
  return {made.begin(), made.end()};
}

Bytes hello(ByteOrder order = wire::kByteOrder) {
  return message(Kind::kHello, [&](Writer &out) { out.word(1).word(static_cast<std::uint32_t>(order)).word(0); });
}

// A program at the other end that can say anything.
class Stranger {
 public:
  explicit Stranger(const box::Place &place) : socket_(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path = place.root() / wire::kSocketLink;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    if (connect(socket_.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) {
      throw std::runtime_error("no connection");
    }
  }

  void say(const Bytes &bytes) const { send(socket_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL); }
  void hang_up() { socket_.reset(); }

  // What is answered; empty where the server hung up.
  Bytes hear() const {
    Bytes room(wire::kLongest);
    const ssize_t size = recv(socket_.get(), room.data(), room.size(), 0);
    room.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
    return room;
  }
  Bytes asked(const Bytes &bytes) const {
    say(bytes);
    return hear();
  }

 private:
  base::Descriptor socket_;
};

class RemoteTest : public BoxTest {
 protected:
  void SetUp() override {
    BoxTest::SetUp();
    for (std::uint32_t id = 0; id < box::kDatabaseCount; ++id) scdb_close(id);  // what a test before has lost
  }
  bool is_locked() const {
    return in_child([&] { return box::Database(place.database(2)).lock(std::chrono::milliseconds(0)) ? 0 : 1; }) == 1;
  }
};

struct Nonsense {
  const char *name;
  std::vector<Bytes> said;
};

Bytes cut(Bytes bytes, std::size_t by) {
  bytes.resize(bytes.size() - by);
  return bytes;
}

Bytes longer(Bytes bytes) {
  bytes.push_back(0);
  return bytes;
}

Bytes with_size(Bytes bytes, std::uint32_t size) {
  wire::put_word(bytes.data(), size);
  return bytes;
}

Bytes of_text(Kind kind, std::uint32_t size) {
  return message(kind, [&](Writer &out) { out.word(0).word(size); });
}

const Bytes kOpening = message(Kind::kOpen, [](Writer &out) { out.word(2); });

Bytes reading(std::uint32_t db_id, std::string_view key, std::uint32_t has_key = 1) {
  return message(Kind::kRead,
                 [&](Writer &out) { out.word(db_id).word(has_key).flag(true).flag(true).word(0).text(key); });
}

Bytes writing(std::string_view key, std::string_view data, std::int32_t size) {
  return message(Kind::kWrite,
                 [&](Writer &out) { out.word(2).flag(true).flag(true).number(size).word(0).text(key).text(data); });
}

TEST_F(RemoteTest, AMessageThatIsNoneEndsTheConnectionAndNothingElse) {
  const std::string whole_key(128, 'k');
  const std::vector<Nonsense> rows{
      {"nothing was said before", {kOpening}},
      {"a hello of another version",
       {message(Kind::kHello, [](Writer &out) { out.word(2).word(1).word(0); }), kOpening}},
      {"a hello of no byte order", {message(Kind::kHello, [](Writer &out) { out.word(1).word(3).word(0); }), kOpening}},
      {"a second hello", {hello(), hello()}},
      {"an answer", {hello(), message(Kind::kReply)}},
      {"a signal", {hello(), message(Kind::kSignal)}},
      {"a go-on where nobody waits", {hello(), message(Kind::kGoOn)}},
      {"kind 0", {hello(), message(static_cast<Kind>(0))}},
      {"a kind that there is not", {hello(), message(static_cast<Kind>(99))}},
      {"a head that is cut", {hello(), cut(kOpening, 9)}},
      {"fields that are cut", {hello(), cut(kOpening, 1)}},
      {"fields that are cut, and a size that says so", {hello(), with_size(cut(kOpening, 4), 12)}},
      {"a byte too much", {hello(), longer(kOpening)}},
      {"a byte too much, and a size that says so", {hello(), with_size(longer(kOpening), 17)}},
      {"a size that is too small", {hello(), with_size(kOpening, 12)}},
      {"a size that is huge", {hello(), with_size(kOpening, 0xFFFFFFFF)}},
      {"a message that is too long", {hello(), Bytes(wire::kLongest + 1)}},
      {"a text that is longer than its message", {hello(), of_text(Kind::kPoint, 5)}},
      {"a text of a huge size", {hello(), of_text(Kind::kPoint, 0xFFFFFFFF)}},
      {"a point of a kind that there is not",
       {hello(), message(Kind::kPoint, [](Writer &out) { out.word(box::kPointKinds.size()).text(""); })}},
      {"a call of a kind that there is not",
       {hello(), message(Kind::kCallEnds,
                         [](Writer &out) {
                           out.word(box::kCallKinds).long_word(0).long_word(0).word(0).word(0).word(0).text("");
                         })}},
      {"a call that is the end of a command",
       {hello(), message(Kind::kCallEnds,
                         [](Writer &out) {
                           out.word(static_cast<std::uint32_t>(box::CallKind::kEnd)).long_word(0).long_word(0);
                           out.word(0).word(0).word(0).text("");
                         })}},
      {"a record of the trace with five words",
       {hello(), message(Kind::kTrace,
                         [](Writer &out) {
                           for (const std::uint32_t word : {14U, 256U, 15U, 1U, 5U, 0U, 0U, 0U, 0U}) out.word(word);
                         })}},
      {"an answer that is neither yes nor no", {hello(), reading(2, "key", 2)}},
      {"a key that is too long", {hello(), reading(2, whole_key + "k")}},
      {"data of another size", {hello(), writing("key", "four", 5)}},
      {"an event of 47 bytes",
       {hello(),
        message(Kind::kLog, [](Writer &out) { out.flag(true).flag(true).word(0).text(std::string(47, 'e')); })}},
  };
  for (const Nonsense &row : rows) {
    Stranger stranger(place);
    for (const Bytes &bytes : row.said) stranger.say(bytes);
    EXPECT_EQ(stranger.hear(), Bytes()) << row.name;
  }
  Stranger good(place);
  good.say(hello());
  EXPECT_EQ(good.asked(kOpening), message(Kind::kReply, [](Writer &out) { out.number(0); }))
      << "the next one is served";
  good.hang_up();
  EXPECT_NE(remote->end().find("what came from the command was no message of a platform"), std::string::npos);
}

TEST_F(RemoteTest, AStandInThatEndsGivesItsLocksBack) {
  Stranger stranger(place);
  stranger.say(hello());
  stranger.asked(kOpening);
  stranger.asked(message(Kind::kLock, [](Writer &out) { out.word(2); }));
  EXPECT_TRUE(is_locked());
  stranger.hang_up();
  EXPECT_TRUE(lockable(2));
}

// The server knows the end of a process whose child lives on, and holds the line still.
TEST_F(RemoteTest, AProcessThatDiesGivesItsLocksBack) {
  Child holder([&](const auto &say_ready) {
    scdb_open(2);
    scdb_lock(2);
    if (fork() == 0) {
      sleep(30);
      _exit(0);
    }
    say_ready();
    pause();
    return 0;
  });
  ASSERT_TRUE(holder.is_ready());
  EXPECT_TRUE(is_locked());
  holder.die();
  EXPECT_TRUE(lockable(2));
}

// Nobody waits for its patience.
TEST_F(RemoteTest, AProcessThatDiesWhileItWaitsForALockDoesNotKeepTheServer) {
  Child holder([&](const auto &say_ready) {
    box::Database database(place.database(2));
    database.lock();
    say_ready();
    pause();
    return 0;
  });
  Child waiter([&](const auto &say_ready) {
    scdb_open(2);
    say_ready();
    return scdb_lock(2);
  });
  ASSERT_TRUE(holder.is_ready());
  ASSERT_TRUE(waiter.is_ready());
  usleep(100000);
  waiter.die();
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(remote->end(), "");
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(1500));
}

TEST_F(RemoteTest, WordsOfARecordAreInTheOrderOfTheOneWhoAsks) {
  const std::string name = "current_system_info";
  box::Bytes words(176);
  for (std::size_t i = 0; i < words.size(); ++i) words[i] = static_cast<std::uint8_t>(i);
  store(2, name, std::string(words.begin(), words.end()));
  box::Bytes swapped = words;
  box::swap_words(name, swapped);
  ASSERT_NE(swapped, words);
  const ByteOrder other = wire::kByteOrder == ByteOrder::kBig ? ByteOrder::kLittle : ByteOrder::kBig;
  const auto found = [&](ByteOrder order) {
    Stranger stranger(place);
    stranger.say(hello(order));
    stranger.asked(kOpening);
    const Bytes answer = stranger.asked(reading(2, name));
    Reader in(answer);
    EXPECT_EQ(in.number(), 0);
    const std::string_view text = in.text(wire::kLongestRecord);
    return box::Bytes(text.begin(), text.end());
  };
  EXPECT_EQ(found(wire::kByteOrder), words);
  EXPECT_EQ(found(other), swapped);
  Stranger writer(place);
  writer.say(hello(other));
  writer.asked(kOpening);
  writer.asked(writing(name, std::string(swapped.begin(), swapped.end()), 176));
  EXPECT_TRUE(stored(2, name, std::string(words.begin(), words.end())));
}

TEST_F(RemoteTest, ACallBeganNeitherBeforeItsProcessNorBehindItsEnd) {
  std::filesystem::create_directories(place.calls().parent_path());
  box::CallRing::create(place.calls());
  const std::int64_t before = box::call_time();
  const Stranger stranger(place);
  stranger.say(hello());
  const struct {
    const char *name;
    std::int64_t time;
    std::uint64_t position;
  } rows[] = {{"the first moment that there is", INT64_MIN, 0},
              {"before the process", 0, 0},
              {"the last moment that there is", INT64_MAX, UINT64_MAX}};
  for (const auto &row : rows) {
    stranger.asked(message(Kind::kCallEnds, [&](Writer &out) {
      out.word(static_cast<std::uint32_t>(box::CallKind::kOpen)).long_word(static_cast<std::uint64_t>(row.time));
      out.long_word(row.position).number(0).word(2).word(0).text("");
    }));
    const std::vector<box::CallEntry> kept = box::CallRing::read_last(place.calls(), 1);
    ASSERT_EQ(kept.size(), 1U) << row.name;
    EXPECT_GE(kept[0].time_ns, before) << row.name;
    EXPECT_LE(kept[0].time_ns + static_cast<std::int64_t>(kept[0].duration_ns), box::call_time()) << row.name;
    EXPECT_EQ(kept[0].position, 0U) << row.name;
  }
}

// Without its server, each call has its ordinary error, at once.
TEST_F(RemoteTest, AServerThatDiesCostsTheCallsAndNotTheCommand) {
  char key[128] = "some_record";
  const uint32_t words[2] = {1, 2}, id[2] = {0, 0}, head = LMAINTE_HOST_EVENT_HEAD;
  const std::array<char, 48> event{};
  std::array<char, 128> name{};
  void *record = nullptr;
  int32_t size = 0;
  ASSERT_EQ(scdb_open(2), 0);
  ASSERT_EQ(scdb_lock(2), 0);
  kill(-remote->pid(), SIGKILL);  // and who stands in for this process
  remote->end(SIGKILL);
  EXPECT_EQ(scdb_get(2, key, &record, &size, 0), LMAINTE_HOST_DB_STORAGE);
  EXPECT_EQ(record, nullptr);
  EXPECT_EQ(lcmn_scdb_put(2, key, "data", 4, 0), LMAINTE_HOST_DB_STORAGE);
  EXPECT_EQ(scdb_open(3), LMAINTE_HOST_DB_STORAGE);
  EXPECT_EQ(scdb_unlock(2), LMAINTE_HOST_DB_STORAGE);
  EXPECT_EQ(mgblog_save(&head, event.data()), -1);
  EXPECT_EQ(errno, EIO);
  EXPECT_EQ(api_conv_unit_name_get(id, 0, name.data(), 0, 0), -1);
  EXPECT_EQ(mgb_trace_write(14, 256, 15, 0x110C0020, words, 16), -1);
  const int32_t fd = lcmn_lopen((place.tmp() / "file").c_str(), O_RDWR | O_CREAT, 0644);
  EXPECT_GE(fd, 0) << "files are the command's own";
  EXPECT_EQ(lcmn_close(fd), 0);
  EXPECT_TRUE(lockable(2));
}

TEST_F(RemoteTest, AServerThatCanLetNobodyInWaitsAndCanBeEnded) {
  const std::string clock = "/proc/" + std::to_string(remote->pid()) + "/schedstat";
  const auto worked_ms = [&] {
    long long nanoseconds = 0;
    std::ifstream(clock) >> nanoseconds;
    return nanoseconds / 1'000'000;
  };
  rlimit descriptors{};
  prlimit(remote->pid(), RLIMIT_NOFILE, nullptr, &descriptors);
  const rlimit none{3, descriptors.rlim_max};  // it has its own ones
  prlimit(remote->pid(), RLIMIT_NOFILE, &none, nullptr);
  Stranger early(place);
  const long long before = worked_ms();
  usleep(300000);
  EXPECT_LT(worked_ms() - before, 100) << "it tries again and again";
  prlimit(remote->pid(), RLIMIT_NOFILE, &descriptors, nullptr);
  early.say(hello());
  EXPECT_NE(early.asked(kOpening), Bytes()) << "it is let in once there is room";
  prlimit(remote->pid(), RLIMIT_NOFILE, &none, nullptr);
  Stranger late(place);
  EXPECT_EQ(remote->end(), "");
}

// This one is served, too.
TEST_F(RemoteTest, AProcessForWhichThereIsNoRoomIsTold) {
  std::vector<Stranger> strangers;
  for (int i = 1; i < 256; ++i) strangers.emplace_back(place).say(hello());
  EXPECT_NE(strangers.back().asked(kOpening), Bytes());
  Stranger late(place);
  late.say(hello());
  EXPECT_EQ(late.hear(), Bytes());
  strangers.clear();
  EXPECT_EQ(remote->end(),
            "there was no room for a process of the command: 256 are served at a time. Its calls failed.\n");
}

TEST_F(RemoteTest, AStandInThatDiesLosesWhatWasOpenAndTheNextOneServes) {
  ASSERT_EQ(scdb_open(2), 0);
  const std::string children =
      "/proc/" + std::to_string(remote->pid()) + "/task/" + std::to_string(remote->pid()) + "/children";
  std::ifstream list(children);
  for (pid_t stand_in = 0; list >> stand_in;) kill(stand_in, SIGKILL);
  for (pid_t stand_in = 0; std::ifstream(children) >> stand_in;) usleep(1000);
  EXPECT_EQ(scdb_lock(2), LMAINTE_HOST_DB_STORAGE) << "it was open";
  EXPECT_EQ(scdb_close(2), 0);
  EXPECT_EQ(scdb_open(2), 0);
  EXPECT_EQ(scdb_lock(2), 0);
  EXPECT_EQ(scdb_close(2), 0);
  EXPECT_NE(remote->end().find("a process that served the command died. The call under way failed"), std::string::npos);
}

TEST_F(RemoteTest, ARecordThatNoMessageHoldsIsRefused) {
  char key[128] = "long_record";
  const std::string most(wire::kLongestRecord, 'r');
  ASSERT_EQ(scdb_open(2), 0);
  EXPECT_EQ(lcmn_scdb_put(2, key, most.data(), static_cast<int32_t>(most.size()), 0), 0);
  EXPECT_EQ(lcmn_scdb_put(2, key, (most + "r").data(), static_cast<int32_t>(most.size() + 1), 0),
            LMAINTE_HOST_DB_STORAGE);
  scdb_close(2);
  EXPECT_TRUE(stored(2, "long_record", most));
}

// As the kernel leaves it.
TEST_F(RemoteTest, WhatIsLeftOfItsLimitIsToldBySelect) {
  constexpr timeval kShort{0, 2000}, kLong{100, 0};
  timeval over = kShort, ready = kLong, interrupted = kLong, senseless{0, -1};
  fd_set in;
  base::Pipe pipe;
  EXPECT_EQ(select(0, nullptr, nullptr, nullptr, &over), 0);
  EXPECT_TRUE(over.tv_sec == 0 && over.tv_usec == 0) << over.tv_usec;
  base::write_all(pipe.in.get(), "x");
  FD_ZERO(&in);
  FD_SET(pipe.out.get(), &in);
  EXPECT_EQ(select(pipe.out.get() + 1, &in, nullptr, nullptr, &ready), 1);
  EXPECT_TRUE(ready.tv_sec < 100 && ready.tv_sec >= 80) << ready.tv_sec;
  std::signal(SIGALRM, [](int) {});
  const itimerval again_and_again{{0, 5000}, {0, 5000}}, never{};
  setitimer(ITIMER_REAL, &again_and_again, nullptr);
  EXPECT_EQ(select(0, nullptr, nullptr, nullptr, &interrupted), -1);
  EXPECT_EQ(errno, EINTR);
  setitimer(ITIMER_REAL, &never, nullptr);
  std::signal(SIGALRM, SIG_DFL);
  EXPECT_TRUE(interrupted.tv_sec < 100 && interrupted.tv_sec >= 80) << interrupted.tv_sec;
  EXPECT_EQ(select(0, nullptr, nullptr, nullptr, &senseless), -1);
  EXPECT_EQ(errno, EINVAL);
}

// The handler's calls come between another one and its answer.
TEST_F(RemoteTest, ASignalHandlerMayWriteTheTraceWhileACallWaitsAndOpenNoDatabase) {
  static const uint32_t words[2] = {4711, 1};
  static volatile int32_t opened = 0;
  Child holder([&](const auto &say_ready) {
    box::Database database(place.database(2));
    database.lock();
    say_ready();
    usleep(300000);
    return 0;
  });
  ASSERT_TRUE(holder.is_ready());
  ASSERT_EQ(scdb_open(2), 0);
  std::signal(SIGALRM, [](int) {
    mgb_trace_write(14, 256, 15, 0x110C0020, words, 16);
    opened = scdb_open(3);
  });
  const itimerval soon{{0, 0}, {0, 50000}};
  setitimer(ITIMER_REAL, &soon, nullptr);
  EXPECT_EQ(scdb_lock(2), 0);
  std::signal(SIGALRM, SIG_DFL);
  EXPECT_EQ(opened, LMAINTE_HOST_DB_STORAGE);
  EXPECT_EQ(scdb_open(3), 0) << "it is not open";
  EXPECT_EQ(scdb_close(3), 0);
  EXPECT_EQ(scdb_close(2), 0);
  EXPECT_EQ(box::TraceRing::read(place.trace()).size(), 1U);
}

}  // namespace
