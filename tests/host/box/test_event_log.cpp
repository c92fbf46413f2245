#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cerrno>
#include <fstream>

#include "host/box/event_log.h"
#include "tests/host/box/child.h"
#include "tests/host/box/disk.h"
#include "tests/host/box/scratch.h"

namespace {

using box::EventLog;
using box::LogEntry;

LogEntry numbered(std::uint32_t number) {
  LogEntry entry{1'000'000'000LL * number, number, 0x00030000, {}};
  for (std::size_t i = 0; i < entry.event.size(); ++i) entry.event[i] = static_cast<std::uint8_t>(number + i);
  return entry;
}

bool same(const LogEntry &a, const LogEntry &b) {
  return a.time_ns == b.time_ns && a.pid == b.pid && a.head == b.head && a.event == b.event;
}

class EventLogTest : public testing::Test {
 protected:
  void save(std::uint32_t first, std::uint32_t last) const {
    for (std::uint32_t number = first; number <= last; ++number) {
      ASSERT_TRUE(EventLog::append(file, numbered(number)));
    }
  }
  void expect_entries(const std::vector<std::uint32_t> &numbers) const {
    const auto entries = EventLog::read(file);
    ASSERT_EQ(entries.size(), numbers.size());
    for (std::size_t i = 0; i < numbers.size(); ++i) EXPECT_TRUE(same(entries[i], numbered(numbers[i]))) << numbers[i];
  }

  Scratch scratch;
  std::filesystem::path file = scratch / "events";
};

TEST_F(EventLogTest, GivesBackWhatWasSavedOldestFirst) {
  save(1, 3);
  expect_entries({1, 2, 3});
}

TEST_F(EventLogTest, IsEmptyBeforeTheFirstEntry) {
  const std::ofstream empty(file);
  EXPECT_TRUE(EventLog::read(file).empty());
}

TEST_F(EventLogTest, ThatWasRemovedIsNotTakenForAnEmptyOne) {
  save(1, 2);
  std::filesystem::remove(file);
  try {
    EventLog::read(file);
    ADD_FAILURE() << "it was read";
  } catch (const std::runtime_error &error) {
    EXPECT_EQ(error.what(), "log " + file.string() +
                                ": cannot read it: it is gone, with all that it held. The next entry makes it anew.");
  }
  save(3, 3);
  expect_entries({3});
}

TEST_F(EventLogTest, AnUnfinishedEntryIsLeftOutAndWrittenOver) {
  save(1, 2);
  const auto whole = std::filesystem::file_size(file);
  for (std::uintmax_t cut : {std::uintmax_t{1}, whole / 4, whole / 2 - 1}) {
    std::filesystem::resize_file(file, whole - cut);
    expect_entries({1});
    save(2, 2);
    expect_entries({1, 2});
    EXPECT_EQ(std::filesystem::file_size(file), whole);
  }
}

TEST_F(EventLogTest, AnEntryThatNeverReachedTheDiskIsLeftOut) {
  save(1, 2);
  std::filesystem::resize_file(file, std::filesystem::file_size(file) / 2 * 3);  // zeros in place of a third entry
  save(3, 3);
  expect_entries({1, 2, 3});
}

TEST_F(EventLogTest, AnEntryWithAChangedByteIsLeftOut) {
  save(1, 3);
  const auto size = static_cast<std::streamoff>(std::filesystem::file_size(file));
  std::fstream(file).seekp(size / 3 + 40).put('\x7F');
  expect_entries({1, 3});
}

struct DamageRow {
  const char *says;
  std::size_t at, removed;  // bytes from here on ...
  std::string put;          // ... in whose place come these
  std::vector<std::uint32_t> left;
  std::size_t places, bytes;
};

TEST_F(EventLogTest, FindsTheNextWholeEntryBehindADamage) {
  const std::vector<DamageRow> rows{
      {"nothing", 0, 0, "", {1, 2, 3}, 0, 0},
      {"a byte before all entries", 0, 0, "x", {1, 2, 3}, 1, 1},
      {"a first byte that is gone", 0, 1, "", {2, 3}, 1, 71},
      {"a changed byte", 72, 1, "\x01", {1, 3}, 1, 72},
      {"bytes between two entries", 144, 0, "EVT1EVT1", {1, 2, 3}, 1, 8},
      {"a cut in the last entry", 200, 16, "", {1, 2}, 1, 56},
      {"a hole from the first entry into the second", 60, 20, "", {3}, 1, 124},
  };
  for (const DamageRow &row : rows) {
    std::filesystem::remove(file);
    save(1, 3);
    std::ifstream in(file, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(in), {}};
    bytes.replace(row.at, row.removed, row.put);
    std::ofstream(file, std::ios::binary) << bytes;
    EventLog::Damage damage;
    std::vector<std::uint32_t> left;
    for (const LogEntry &entry : EventLog::read(file, &damage)) left.push_back(entry.pid);
    EXPECT_EQ(left, row.left) << row.says;
    EXPECT_EQ(damage.places, row.places) << row.says;
    EXPECT_EQ(damage.bytes, row.bytes) << row.says;
    save(4, 4);
    left.push_back(4);
    std::vector<std::uint32_t> after;
    for (const LogEntry &entry : EventLog::read(file)) after.push_back(entry.pid);
    EXPECT_EQ(after, left) << row.says << ": a new entry takes no other one's place";
  }
}

// A command can make it as large as it likes.
TEST_F(EventLogTest, IsReadInLittleMemoryHoweverLargeItIs) {
  constexpr long kLarge = 32L << 20U, kLittle = 8L << 10U;  // bytes, and kilobytes
  save(1, 100);
  std::filesystem::resize_file(file, kLarge);
  save(101, 200);
  EXPECT_EQ(in_child([&] {
              const auto most = [] {
                rusage usage{};
                getrusage(RUSAGE_SELF, &usage);
                return usage.ru_maxrss;
              };
              const long before = most();
              EventLog::Damage damage;
              if (EventLog::read(file, &damage).size() != 200) return 1;
              if (damage.places != 1 || damage.bytes != kLarge - 100UL * 72) return 2;
              return most() - before < kLittle ? 0 : 3;
            }),
            0);
}

TEST_F(EventLogTest, EntriesOfSeveralProcessesStayWhole) {
  constexpr std::uint32_t kEach = 250;
  int start[2];
  ASSERT_EQ(pipe(start), 0);
  auto save_all = [&](std::uint32_t first) {
    return [this, first, &start](const auto &) {
      close(start[1]);
      char byte = 0;
      if (read(start[0], &byte, 1) != 0) return 2;  // all begin together, when the pipe is closed
      for (std::uint32_t i = 0; i < kEach; ++i) {
        if (!EventLog::append(file, numbered(first + i))) return 1;
      }
      return 0;
    };
  };
  Child a(save_all(1000));
  Child b(save_all(2000));
  Child c(save_all(3000));
  close(start[0]);
  close(start[1]);
  EXPECT_EQ(a.end(), 0);
  EXPECT_EQ(b.end(), 0);
  EXPECT_EQ(c.end(), 0);
  std::vector<std::uint32_t> next{0, 1000, 2000, 3000};
  const auto entries = EventLog::read(file);
  EXPECT_EQ(entries.size(), 3 * kEach);
  for (const LogEntry &entry : entries) {
    ASSERT_LT(entry.pid / 1000, next.size());
    EXPECT_TRUE(same(entry, numbered(next[entry.pid / 1000]++))) << entry.pid;
  }
}

TEST_F(EventLogTest, AWriterThatDiesLeavesWholeEntries) {
  save(1, 1);
  std::size_t before = 1;
  for (int round = 0; round < 5; ++round) {
    Child writer([&](const auto &say_ready) {
      say_ready();
      for (std::uint32_t number = 1;; ++number) EventLog::append(file, numbered(number));
      return 0;
    });
    ASSERT_TRUE(writer.is_ready());
    while (EventLog::read(file).size() < before + 3) usleep(500);
    writer.die();
    ASSERT_TRUE(EventLog::append(file, numbered(7)));
    const auto entries = EventLog::read(file);
    EXPECT_TRUE(same(entries.back(), numbered(7)));
    EXPECT_EQ(std::filesystem::file_size(file) % entries.size(), 0U) << "an entry was lost";
    before = entries.size();
  }
}

TEST_F(EventLogTest, AFullDiskIsAFailureAndLeavesTheLogWhole) {
  save(1, 2);
  EXPECT_EQ(in_child([&] {
              signal(SIGXFSZ, SIG_IGN);
              const auto size = std::filesystem::file_size(file) + 10;
              const rlimit limit{size, size};
              if (setrlimit(RLIMIT_FSIZE, &limit) != 0) return 1;
              errno = 0;
              return !EventLog::append(file, numbered(3)) && errno != 0 ? 0 : 2;
            }),
            0);
  expect_entries({1, 2});
  save(3, 3);
  expect_entries({1, 2, 3});
}

TEST_F(EventLogTest, WaitsForTheDisk) {
  for (std::uint32_t number = 1; number < 4; ++number) {
    const int before = disk_waits();
    save(number, number);
    EXPECT_GT(disk_waits(), before);
  }
}

TEST_F(EventLogTest, AnEntryThatDoesNotReachTheDiskIsAFailure) {
  save(1, 1);
  fail_disk_waits(true);
  errno = 0;
  EXPECT_FALSE(EventLog::append(file, numbered(2)));
  EXPECT_EQ(errno, EIO);
  fail_disk_waits(false);
  expect_entries({1});
}

TEST_F(EventLogTest, AFolderThatIsMissingIsAFailure) {
  const std::filesystem::path lost = scratch / "log/events";
  errno = 0;
  EXPECT_FALSE(EventLog::append(lost, numbered(1)));
  EXPECT_EQ(errno, ENOENT);
  EXPECT_THROW(EventLog::read(lost), std::runtime_error);
}

}  // namespace
