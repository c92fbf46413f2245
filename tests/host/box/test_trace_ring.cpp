#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/time.h>

#include <atomic>
#include <cerrno>
#include <ctime>
#include <fstream>
#include <map>

#include "host/box/mapping_guard.h"
#include "host/box/trace_ring.h"
#include "tests/host/box/child.h"
#include "tests/host/box/scratch.h"

namespace {

using box::TraceEntry;
using box::TraceRing;

constexpr std::uint32_t kSlots = 65536;

// A record whose fields all follow from two numbers, so that a mixture of two records is told from either.
bool append(TraceRing *ring, std::uint32_t writer, std::uint32_t number) {
  const std::uint32_t words[4] = {writer, number, number ^ 0xA5A5A5A5, writer * 31 + number};
  return ring->append(writer, number % 7, 15, number + 3, words, 4);
}

bool whole(const TraceEntry &entry) {
  const std::uint32_t writer = entry.words[0];
  const std::uint32_t number = entry.words[1];
  return entry.module == writer && entry.level == number % 7 && entry.kind == 15 && entry.event == number + 3 &&
         entry.word_count == 4 && entry.words[2] == (number ^ 0xA5A5A5A5) && entry.words[3] == writer * 31 + number;
}

class TraceRingTest : public testing::Test {
 protected:
  TraceRingTest() {
    TraceRing::create(file);
    EXPECT_TRUE(ring.map(file.c_str()));
  }
  void append_all(std::uint32_t first, std::uint32_t last) {
    for (std::uint32_t number = first; number <= last; ++number) ASSERT_TRUE(append(&ring, 1, number));
  }

  Scratch scratch;
  std::filesystem::path file = scratch / "trace";
  TraceRing ring;
};

TEST_F(TraceRingTest, BeginsWithTheNameOfItsForm) {
  std::string name(8, ' ');
  std::ifstream(file, std::ios::binary).read(name.data(), 8);
  EXPECT_EQ(name, "SBXRING1");
}

TEST_F(TraceRingTest, GivesBackWhatWasWritten) {
  const std::uint32_t words[3] = {4711, 88, 0xFFFFFFFF};
  const std::int64_t before = std::time(nullptr);
  ASSERT_TRUE(ring.append(14, 0x800A, 15, 0x110C12F1, words, 3));
  ASSERT_TRUE(ring.append(14, 0x100, 15, 0x110C02F1, words, 2));
  const auto entries = TraceRing::read(file);
  ASSERT_EQ(entries.size(), 2U);
  EXPECT_EQ(entries[0].number, 0U);
  EXPECT_EQ(entries[0].module, 14U);
  EXPECT_EQ(entries[0].level, 0x800AU);
  EXPECT_EQ(entries[0].kind, 15U);
  EXPECT_EQ(entries[0].event, 0x110C12F1U);
  EXPECT_EQ(entries[0].word_count, 3U);
  EXPECT_EQ(entries[0].words, (std::array<std::uint32_t, 4>{4711, 88, 0xFFFFFFFF, 0}));
  EXPECT_GE(entries[0].time_ns, before * 1'000'000'000);
  EXPECT_LE(entries[0].time_ns, (before + 60) * 1'000'000'000);
  EXPECT_EQ(entries[1].number, 1U);
  EXPECT_EQ(entries[1].word_count, 2U);
  EXPECT_EQ(entries[1].words, (std::array<std::uint32_t, 4>{4711, 88, 0, 0}));
}

TEST_F(TraceRingTest, TakesRecordsWithoutWordsAndNoMoreThanFour) {
  const std::uint32_t words[6] = {1, 2, 3, 4, 5, 6};
  ASSERT_TRUE(ring.append(14, 0x100, 15, 1, nullptr, 2));
  ASSERT_TRUE(ring.append(14, 0x100, 15, 2, words, 6));
  const auto entries = TraceRing::read(file);
  ASSERT_EQ(entries.size(), 2U);
  EXPECT_EQ(entries[0].word_count, 0U);
  EXPECT_EQ(entries[1].word_count, 4U);
}

TEST_F(TraceRingTest, IsEmptyWhenItIsMade) {
  EXPECT_TRUE(TraceRing::read(file).empty());
}

TEST_F(TraceRingTest, GivesBackTheLastAlone) {
  const auto numbers_of_last = [&](std::uint32_t count) {
    std::vector<std::uint64_t> numbers;
    for (const TraceEntry &entry : TraceRing::read_last(file, count)) numbers.push_back(entry.number);
    return numbers;
  };
  using Numbers = std::vector<std::uint64_t>;
  EXPECT_EQ(numbers_of_last(3), Numbers{});
  append_all(0, 1);
  EXPECT_EQ(numbers_of_last(3), (Numbers{0, 1}));
  append_all(2, 9);
  EXPECT_EQ(numbers_of_last(3), (Numbers{7, 8, 9}));
  append_all(10, kSlots);  // the last one stands at the front again
  EXPECT_EQ(numbers_of_last(3), (Numbers{kSlots - 2, kSlots - 1, kSlots}));
  EXPECT_EQ(TraceRing::read_last(file, kSlots + 5).size(), kSlots);
  std::filesystem::resize_file(file, 4096);
  EXPECT_THROW(TraceRing::read_last(file, 3), std::runtime_error);
}

TEST_F(TraceRingTest, OverwritesTheOldest) {
  append_all(0, kSlots + 99);
  const auto entries = TraceRing::read(file);
  ASSERT_EQ(entries.size(), kSlots);
  for (std::uint32_t i = 0; i < kSlots; ++i) {
    ASSERT_EQ(entries[i].number, i + 100);
    ASSERT_EQ(entries[i].words[1], i + 100);
    ASSERT_TRUE(whole(entries[i]));
  }
}

TEST_F(TraceRingTest, LosesNothingOfSeveralProcesses) {
  constexpr std::uint32_t kEach = 15000;
  auto writer = [&](std::uint32_t id) {
    return [this, id](const auto &) {
      for (std::uint32_t number = 0; number < kEach; ++number) {
        if (!append(&ring, id, number)) return 1;
      }
      return 0;
    };
  };
  Child a(writer(1));
  Child b(writer(2));
  Child c(writer(3));
  Child d(writer(4));
  for (Child *child : {&a, &b, &c, &d}) EXPECT_EQ(child->end(), 0);
  const auto entries = TraceRing::read(file);
  ASSERT_EQ(entries.size(), 4 * kEach);
  std::map<std::uint32_t, std::uint32_t> next;
  for (const TraceEntry &entry : entries) {
    ASSERT_TRUE(whole(entry)) << entry.number;
    ASSERT_EQ(entry.words[1], next[entry.words[0]]++) << "a writer's records stay in order";
  }
}

TEST_F(TraceRingTest, IsReadWhileItIsWrittenAndNeverGivesAMixture) {
  auto writer = [&](std::uint32_t id) {
    return [this, id](const auto &) {
      for (std::uint32_t number = 0;; ++number) append(&ring, id, number);
      return 0;
    };
  };
  append_all(0, kSlots);
  Child a(writer(2));
  Child b(writer(3));
  for (int round = 0; round < 10; ++round) {
    const auto entries = TraceRing::read(file);
    ASSERT_GT(entries.size(), kSlots / 2);
    std::uint64_t last = 0;
    for (const TraceEntry &entry : entries) {
      ASSERT_TRUE(whole(entry)) << entry.number;
      ASSERT_GE(entry.number, last);
      last = entry.number + 1;
    }
  }
}

TEST_F(TraceRingTest, AWriterThatDiesCostsAtMostItsLastRecord) {
  for (int round = 1; round <= 20; ++round) {
    Child writer([&](const auto &say_ready) {
      append(&ring, 9, 0);
      say_ready();
      for (std::uint32_t number = 1;; ++number) append(&ring, 9, number);
      return 0;
    });
    ASSERT_TRUE(writer.is_ready());
    usleep(2000);
    EXPECT_EQ(writer.die(), -SIGKILL);
    ASSERT_TRUE(append(&ring, 1, 77));
    const auto entries = TraceRing::read(file);
    const std::uint64_t count = entries.back().number + 1;
    EXPECT_GE(entries.size(), std::min<std::uint64_t>(count, kSlots) - static_cast<unsigned>(round));
    EXPECT_EQ(entries.back().words[1], 77U);
    for (const TraceEntry &entry : entries) ASSERT_TRUE(whole(entry)) << entry.number;
  }
}

TEST_F(TraceRingTest, ARecordThatWasNeverFinishedIsLeftOut) {
  append_all(0, 2);
  // The middle record's state goes back to "being written": the odd number before the one that it has.
  std::fstream bytes(file, std::ios::in | std::ios::out | std::ios::binary);
  bytes.seekp(64 + 64).put(3);
  bytes.close();
  const auto entries = TraceRing::read(file);
  ASSERT_EQ(entries.size(), 2U);
  EXPECT_EQ(entries[0].number, 0U);
  EXPECT_EQ(entries[1].number, 2U);
}

TEST_F(TraceRingTest, AMixtureOfTwoRecordsIsLeftOut) {
  append_all(0, 2);
  std::fstream bytes(file, std::ios::in | std::ios::out | std::ios::binary);
  bytes.seekp(64 + 64 + 44).put('\x55');  // a word of the middle record
  bytes.close();
  const auto entries = TraceRing::read(file);
  ASSERT_EQ(entries.size(), 2U);
  EXPECT_EQ(entries[1].number, 2U);
}

TraceRing *handlers_ring = nullptr;
std::atomic<std::uint32_t> handled{0};

TEST_F(TraceRingTest, IsSafeInASignalHandler) {
  handlers_ring = &ring;
  handled = 0;
  struct sigaction action {};
  struct sigaction before {};
  action.sa_handler = [](int) { append(handlers_ring, 2, handled++); };
  ASSERT_EQ(sigaction(SIGALRM, &action, &before), 0);
  const itimerval often{{0, 100}, {0, 100}};
  const itimerval never{};
  setitimer(ITIMER_REAL, &often, nullptr);
  std::uint32_t own = 0;
  while (own < 20000 || handled < 20) append(&ring, 1, own++);
  setitimer(ITIMER_REAL, &never, nullptr);
  sigaction(SIGALRM, &before, nullptr);
  const auto entries = TraceRing::read(file);
  EXPECT_EQ(entries.size(), std::min(kSlots, own + handled));
  for (const TraceEntry &entry : entries) ASSERT_TRUE(whole(entry)) << entry.number;
}

TEST_F(TraceRingTest, AChildOfForkWritesIntoTheSameRing) {
  append_all(0, 0);
  EXPECT_EQ(in_child([&] { return append(&ring, 2, 1) ? 0 : 1; }), 0);
  append_all(2, 2);
  const auto entries = TraceRing::read(file);
  ASSERT_EQ(entries.size(), 3U);
  EXPECT_EQ(entries[1].module, 2U);
}

TEST_F(TraceRingTest, KeepsErrno) {
  TraceRing missing;
  errno = EDOM;
  EXPECT_FALSE(missing.map((scratch / "missing").c_str()));
  EXPECT_EQ(errno, EDOM);
  EXPECT_FALSE(append(&missing, 1, 1));
  EXPECT_EQ(errno, EDOM);
  EXPECT_TRUE(missing.map(file.c_str()));
  EXPECT_TRUE(append(&missing, 1, 1));
  EXPECT_EQ(errno, EDOM);
}

TEST_F(TraceRingTest, AnyOtherFileIsNoRing) {
  TraceRing other;
  const std::filesystem::path file_of_zeros = scratch / "zeros";
  std::ofstream(file_of_zeros).close();
  std::filesystem::resize_file(file_of_zeros, std::filesystem::file_size(file));
  const std::filesystem::path cut = scratch / "cut";
  std::filesystem::copy_file(file, cut);
  std::filesystem::resize_file(cut, std::filesystem::file_size(file) - 1);
  for (const auto &path : {file_of_zeros, cut, scratch / "missing", scratch.path()}) {
    EXPECT_FALSE(other.map(path.c_str())) << path;
    EXPECT_FALSE(append(&other, 1, 1)) << path;
    EXPECT_THROW(TraceRing::read(path), std::runtime_error) << path;
  }
}

TEST_F(TraceRingTest, ANewRingTakesTheOldOnesPlace) {
  append_all(0, 9);
  TraceRing::create(file);
  EXPECT_TRUE(TraceRing::read(file).empty());
  EXPECT_TRUE(append(&ring, 1, 10)) << "a process that has the old ring goes on unharmed";
  EXPECT_TRUE(TraceRing::read(file).empty());
  ASSERT_TRUE(ring.map(file.c_str()));
  append_all(0, 0);
  EXPECT_EQ(TraceRing::read(file).size(), 1U);
  EXPECT_FALSE(std::filesystem::exists(file.string() + ".new"));
}

TEST_F(TraceRingTest, AFileThatIsEmptiedOrCutShortInUseCostsTheTraceAndNothingElse) {
  box::survive_lost_mappings();
  for (const std::uintmax_t size : {0, 4096, 64 * 1000}) {
    TraceRing::create(file);
    TraceRing used;
    ASSERT_TRUE(used.map(file.c_str()));
    ASSERT_TRUE(append(&used, 1, 0));
    std::filesystem::resize_file(file, size);
    for (std::uint32_t number = 0; number < 2 * kSlots; ++number) append(&used, 1, number);
    EXPECT_FALSE(append(&used, 1, 1)) << "nobody reads these records: " << size;
    EXPECT_FALSE(used.map(file.c_str())) << size;
    std::string why;
    try {
      TraceRing::read(file);
    } catch (const std::runtime_error &error) {
      why = error.what();
    }
    EXPECT_EQ(why,
              "trace " + file.string() +
                  ": cannot read it: it is damaged: it was cut short or emptied. Make the box anew, or load a dump "
                  "of it.");
    TraceRing::create(file);
    EXPECT_TRUE(used.map(file.c_str())) << "a new ring is found again";
    EXPECT_TRUE(append(&used, 1, 2));
    EXPECT_EQ(TraceRing::read(file).size(), 1U);
  }
}

TEST_F(TraceRingTest, OtherBusErrorsAreNotItsOwn) {
  EXPECT_EQ(in_child([&] {
              signal(SIGBUS, SIG_DFL);  // a sanitizer has a handler of its own
              box::survive_lost_mappings();
              const auto other = scratch / "other";
              std::ofstream(other) << std::string(4096, 'x');
              const int fd = open(other.c_str(), O_RDONLY | O_CLOEXEC);
              const auto *const bytes =
                  static_cast<const volatile char *>(mmap(nullptr, 4096, PROT_READ, MAP_SHARED, fd, 0));
              std::filesystem::resize_file(other, 0);
              return bytes[0];
            }),
            -SIGBUS);
}

TEST_F(TraceRingTest, TheHolesOfACopyAreFilledBeforeItIsWritten) {
  const auto blocks = [&] {
    struct stat status {};
    EXPECT_EQ(stat(file.c_str(), &status), 0);
    return status.st_blocks;
  };
  const auto whole = blocks();
  {
    const int fd = open(file.c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(fallocate(fd, FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, 1 << 20, 1 << 20), 0);
    close(fd);
  }
  ASSERT_LT(blocks(), whole);
  TraceRing copy;
  EXPECT_TRUE(copy.map(file.c_str()));
  EXPECT_EQ(blocks(), whole);
}

TEST(TraceRingFiles, AFolderThatIsMissingIsNamed) {
  Scratch scratch;
  try {
    TraceRing::create(scratch / "log/trace");
    FAIL();
  } catch (const std::runtime_error &error) {
    EXPECT_EQ(std::string(error.what()),
              "trace " + (scratch / "log/trace").string() + ": cannot make it: No such file or directory");
  }
}

}  // namespace
