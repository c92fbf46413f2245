#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/time.h>

#include <chrono>
#include <thread>

#include "host/base/descriptor.h"
#include "host/box/database.h"
#include "tests/host/box/child.h"
#include "tests/host/box/database_test.h"
#include "tests/host/box/disk.h"
#include "tests/host/box/scratch.h"

namespace {

using box::Bytes;
using box::Database;

class DatabaseTest : public testing::Test {
 protected:
  DatabaseTest() { Database made(name, true); }

  // What another process reads, in the exit status: 0 the text, 1 no record, 2 another record.
  int seen_elsewhere(const std::string &key, const std::string &text) const {
    return in_child([&] {
      auto record = Database(name).get(key);
      return !record ? 1 : *record == bytes(text) ? 0 : 2;
    });
  }
  bool lockable_elsewhere() const {
    return in_child([&] { return Database(name).lock() ? 0 : 1; }) == 0;
  }
  // Whether another process still waits for the lock after a while.
  bool kept_from_others() const {
    return in_child([&] {
             const itimerval patience{{0, 0}, {0, 200'000}};
             setitimer(ITIMER_REAL, &patience, nullptr);
             return Database(name).lock() ? 0 : 1;
           }) == -SIGALRM;
  }

  Scratch scratch;
  box::DatabaseName name{scratch.path(), 2};
};

TEST_F(DatabaseTest, KeepsRecordsOfAnySize) {
  Database database(name);
  Bytes large(8192);
  for (std::size_t i = 0; i < large.size(); ++i) large[i] = static_cast<std::uint8_t>(i * 7);
  database.put("fru_cmu_info_00", large);
  database.put("empty", {});
  EXPECT_EQ(database.get("fru_cmu_info_00"), large);
  EXPECT_EQ(database.get("empty"), Bytes());
  EXPECT_EQ(database.get("fru_cmu_info_0"), std::nullopt);
  database.put("fru_cmu_info_00", bytes("shorter"));
  EXPECT_EQ(database.get("fru_cmu_info_00"), bytes("shorter"));
}

TEST_F(DatabaseTest, RemovesARecord) {
  Database database(name);
  database.put("one", bytes("1"));
  database.remove("one");
  database.remove("never there");
  EXPECT_EQ(database.get("one"), std::nullopt);
}

TEST_F(DatabaseTest, VisitsRecordsInKeyOrder) {
  Database database(name);
  database.put("b", bytes("2"));
  database.put("c", bytes("3"));
  database.put("a", bytes("1"));
  std::string seen;
  auto visit = [&](std::string_view key, std::span<const std::uint8_t> record) {
    seen += key;
    seen.append(record.begin(), record.end());
  };
  database.each(visit);
  EXPECT_EQ(seen, "a1b2c3");
  ASSERT_TRUE(database.lock());
  database.remove("b");
  seen.clear();
  database.each(visit);
  EXPECT_EQ(seen, "a1c3") << "the changes under the lock are seen by its holder";
}

TEST_F(DatabaseTest, ReadsWhileItVisits) {
  Database database(name);
  database.put("a", bytes("1"));
  int same = 0;
  database.each([&](std::string_view key, std::span<const std::uint8_t> record) {
    same += database.get(key) == Bytes(record.begin(), record.end()) ? 1 : 0;
  });
  EXPECT_EQ(same, 1);
}

TEST_F(DatabaseTest, OutlivesTheProcessThatWroteIt) {
  ASSERT_EQ(in_child([&] {
              Database(name).put("key", bytes("text"));
              return 0;
            }),
            0);
  EXPECT_EQ(Database(name).get("key"), bytes("text"));
}

TEST_F(DatabaseTest, ShowsChangesToOthersAtUnlockOnly) {
  Database database(name);
  database.put("a", bytes("old"));
  ASSERT_TRUE(database.lock());
  database.put("a", bytes("new"));
  database.put("b", bytes("new"));
  EXPECT_EQ(database.get("a"), bytes("new"));
  EXPECT_EQ(seen_elsewhere("a", "old"), 0);
  EXPECT_EQ(seen_elsewhere("b", ""), 1);
  ASSERT_TRUE(database.unlock());
  EXPECT_EQ(seen_elsewhere("a", "new"), 0);
  EXPECT_EQ(seen_elsewhere("b", "new"), 0);
}

TEST_F(DatabaseTest, SeesWhatOthersMadeDurableWhileItIsOpen) {
  Database database(name);
  EXPECT_EQ(database.get("key"), std::nullopt);
  ASSERT_EQ(in_child([&] {
              Database(name).put("key", bytes("text"));
              return 0;
            }),
            0);
  EXPECT_EQ(database.get("key"), bytes("text"));
}

TEST_F(DatabaseTest, LocksOnceAndUnlocksOnce) {
  Database database(name);
  EXPECT_FALSE(database.locked());
  EXPECT_FALSE(database.unlock());
  EXPECT_TRUE(database.lock());
  EXPECT_TRUE(database.locked());
  EXPECT_FALSE(database.lock()) << "this process holds it already";
  EXPECT_TRUE(database.locked());
  EXPECT_TRUE(database.unlock());
  EXPECT_FALSE(database.unlock());
  EXPECT_TRUE(database.lock());
}

TEST_F(DatabaseTest, GivesUpOnALockThatAnotherProcessKeeps) {
  Child holder([&](const auto &say_ready) {
    Database database(name);
    if (!database.lock()) return 1;
    say_ready();
    pause();
    return 0;
  });
  ASSERT_TRUE(holder.is_ready());
  Child other([&](const auto &) {
    const std::string message = message_of([&] { Database(name).put("key", bytes("text")); });
    return message == name.text() + ": cannot write 'key': another process keeps it locked" ? 0 : 1;
  });
  Database database(name);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(database.lock());
  const auto waited = std::chrono::steady_clock::now() - start;
  EXPECT_GE(waited, std::chrono::milliseconds(2900));
  EXPECT_LT(waited, std::chrono::milliseconds(4500));
  EXPECT_EQ(database.get("key"), std::nullopt) << "reads need no lock";
  EXPECT_EQ(other.end(), 0) << "a change that takes the lock for itself waits as long, and says why it failed";
}

TEST_F(DatabaseTest, TellsALockThatCannotBeTakenFromOneThatAnotherProcessHolds) {
  Database database(name);
  std::error_code error;
  for (int fd = 3; fd < 100; ++fd) {
    const auto file = std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(fd), error);
    if (file == name.folder / "locks") close(fd);
  }
  const std::string head = "databases in " + name.folder.string() + ": cannot ";
  EXPECT_EQ(message_of([&] { static_cast<void>(database.lock()); }), head + "lock database 2: Bad file descriptor");
  EXPECT_EQ(message_of([&] { database.put("key", bytes("1")); }), head + "lock database 2: Bad file descriptor");
  EXPECT_EQ(message_of([&] { static_cast<void>(database.get("key")); }), head + "read: Bad file descriptor");
  EXPECT_FALSE(database.locked());
}

TEST_F(DatabaseTest, WaitsForALockThatIsGivenBack) {
  Child holder([&](const auto &say_ready) {
    Database database(name);
    if (!database.lock()) return 1;
    database.put("key", bytes("holder's"));
    say_ready();
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    return database.unlock() ? 0 : 2;
  });
  ASSERT_TRUE(holder.is_ready());
  Database database(name);
  ASSERT_TRUE(database.lock());
  EXPECT_EQ(database.get("key"), bytes("holder's")) << "the lock came after the holder's changes";
  EXPECT_EQ(holder.end(), 0);
}

TEST_F(DatabaseTest, WaitsForTheDiskAtUnlock) {
  Database database(name);
  ASSERT_TRUE(database.lock());
  database.put("key", bytes("text"));
  const int before = disk_waits();
  ASSERT_TRUE(database.unlock());
  EXPECT_GT(disk_waits(), before);
}

TEST_F(DatabaseTest, LosesNothingBetweenTwoProcessesThatCount) {
  auto count_to = [&](int times) {
    Database database(name);
    for (int i = 0; i < times; ++i) {
      if (!database.lock()) return 1;
      Bytes count = database.get("count").value_or(Bytes{0});
      ++count[0];
      database.put("count", count);
      if (!database.unlock()) return 2;
    }
    return 0;
  };
  Child other([&](const auto &) { return count_to(50); });
  EXPECT_EQ(count_to(50), 0);
  EXPECT_EQ(other.end(), 0);
  EXPECT_EQ(Database(name).get("count"), Bytes{100});
}

TEST_F(DatabaseTest, AHolderThatDiesLeavesNeitherLockNorChanges) {
  Database database(name);
  database.put("a", bytes("old"));
  for (int round = 0; round < 3; ++round) {
    Child holder([&](const auto &say_ready) {
      Database own(name);
      if (!own.lock()) return 1;
      own.put("a", bytes("half of a change"));
      own.put("b", bytes("the other half"));
      say_ready();
      pause();
      return 0;
    });
    ASSERT_TRUE(holder.is_ready());
    EXPECT_EQ(holder.die(), -SIGKILL);
    const auto start = std::chrono::steady_clock::now();
    ASSERT_TRUE(database.lock());
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
    EXPECT_EQ(database.get("a"), bytes("old"));
    EXPECT_EQ(database.get("b"), std::nullopt);
    EXPECT_TRUE(database.unlock());
  }
}

TEST_F(DatabaseTest, AHolderThatEndsWithoutUnlockLeavesNothing) {
  {
    Database database(name);
    ASSERT_TRUE(database.lock());
    database.put("a", bytes("dropped"));
  }
  EXPECT_TRUE(lockable_elsewhere());
  EXPECT_EQ(seen_elsewhere("a", ""), 1);
}

TEST_F(DatabaseTest, ReadersThatDieDoNotUseUpTheDatabase) {
  Database database(name);
  database.put("key", bytes("text"));
  for (int i = 0; i < 200; ++i) {
    Child reader([&](const auto &) {
      Database(name).each([](auto, auto) { raise(SIGKILL); });
      return 0;
    });
    ASSERT_EQ(reader.end(), -SIGKILL);
  }
  EXPECT_EQ(database.get("key"), bytes("text"));
  EXPECT_EQ(seen_elsewhere("key", "text"), 0);
}

TEST_F(DatabaseTest, ManyWhoReadOnAndOnKeepNobodyFromSaving) {
  Database database(name);
  database.put("key", bytes("0"));
  std::vector<std::unique_ptr<Child>> readers;
  for (int i = 0; i < 16; ++i) {
    readers.push_back(std::make_unique<Child>([&](const auto &) {
      const Database own(name);
      while (own.get("key") != bytes("end")) continue;
      return 0;
    }));
  }
  for (int i = 0; i < 20; ++i) EXPECT_NO_THROW(database.put("key", bytes(std::to_string(i))));
  EXPECT_NO_THROW(database.put("key", bytes("end")));
  for (const auto &reader : readers) EXPECT_EQ(reader->end(), 0);
}

TEST_F(DatabaseTest, ShowsOneStateToAReaderWhateverOthersDo) {
  constexpr int kRecords = 300;
  auto write_all = [&](const char *text) {
    Database database(name);
    if (!database.lock()) return 1;
    for (int i = 0; i < kRecords; ++i) database.put("key " + std::to_string(i), bytes(text));
    return database.unlock() ? 0 : 1;
  };
  ASSERT_EQ(in_child([&] { return write_all("old"); }), 0);
  auto database = std::make_unique<Database>(name);
  int seen = 0;
  database->each([&](std::string_view key, std::span<const std::uint8_t> record) {
    if (seen++ == 0) {
      // A child that ends orderly must not give its parent's place among the readers away.
      ASSERT_EQ(in_child([&] {
                  database.reset();
                  return 0;
                }),
                0);
      for (int i = 0; i < 10; ++i) ASSERT_EQ(in_child([&] { return write_all("new"); }), 0);
    }
    EXPECT_EQ(Bytes(record.begin(), record.end()), bytes("old")) << key;
  });
  EXPECT_EQ(seen, kRecords);
  EXPECT_EQ(database->get("key 0"), bytes("new"));
}

TEST_F(DatabaseTest, AChildThatLivesOnDoesNotKeepItsParentsLock) {
  int test_lives[2];
  ASSERT_EQ(pipe(test_lives), 0);
  Child parent([&](const auto &say_ready) {
    close(test_lives[1]);
    Database database(name);
    if (!database.lock()) return 1;
    if (fork() == 0) {
      say_ready();
      char byte = 0;
      _exit(read(test_lives[0], &byte, 1) == 0 ? 0 : 1);
    }
    pause();
    return 0;
  });
  ASSERT_TRUE(parent.is_ready());
  EXPECT_EQ(parent.die(), -SIGKILL);
  EXPECT_TRUE(Database(name).lock());
  close(test_lives[0]);
  close(test_lives[1]);
}

TEST_F(DatabaseTest, AChildOfForkIsRefusedWhatItsParentOpened) {
  Database database(name);
  database.put("a", bytes("before"));
  ASSERT_TRUE(database.lock());
  database.put("a", bytes("after"));
  EXPECT_EQ(in_child([&] {
              if (database.locked() || database.unlock()) return 1;
              if (message_of([&] { static_cast<void>(database.lock()); }).empty()) return 6;
              const std::string message = message_of([&] { static_cast<void>(database.get("a")); });
              if (message.find("before the fork") == std::string::npos) return 2;
              if (message_of([&] { database.put("a", bytes("child's")); }).empty()) return 3;
              if (message_of([&] { database.remove("a"); }).empty()) return 4;
              if (message_of([&] { database.each([](auto, auto) {}); }).empty()) return 5;
              return 0;
            }),
            0);
  EXPECT_TRUE(database.locked());
  EXPECT_TRUE(kept_from_others());
  EXPECT_TRUE(database.unlock());
  EXPECT_EQ(seen_elsewhere("a", "after"), 0);
}

TEST_F(DatabaseTest, AChildOfForkThatEndsOrderlyHarmsNothing) {
  auto database = std::make_unique<Database>(name);
  ASSERT_TRUE(database->lock());
  database->put("a", bytes("after"));
  EXPECT_EQ(in_child([&] {
              database.reset();
              return 0;
            }),
            0);
  EXPECT_TRUE(kept_from_others()) << "the child's end gave the parent's lock away";
  EXPECT_TRUE(database->unlock());
  EXPECT_EQ(database->get("a"), bytes("after"));
}

TEST_F(DatabaseTest, AChildOfForkMayOpenItAnew) {
  Database database(name);
  database.put("a", bytes("parent's"));
  EXPECT_EQ(in_child([&] {
              Database own(name);
              if (own.get("a") != bytes("parent's")) return 1;
              own.put("a", bytes("child's"));
              return 0;
            }),
            0);
  EXPECT_EQ(database.get("a"), bytes("child's"));
  EXPECT_TRUE(database.lock());
}

TEST_F(DatabaseTest, UsersInOneProcessShareItsLock) {
  Database one(name);
  Database other({name.folder / ".." / name.folder.filename(), 2});
  ASSERT_TRUE(one.lock());
  EXPECT_FALSE(other.lock());
  EXPECT_FALSE(other.unlock()) << "it is one's to give back";
  other.put("key", bytes("text"));
  EXPECT_EQ(one.get("key"), bytes("text"));
  EXPECT_EQ(seen_elsewhere("key", ""), 1) << "put under the lock of the process";
  EXPECT_TRUE(one.unlock());
  EXPECT_EQ(seen_elsewhere("key", "text"), 0);
}

TEST_F(DatabaseTest, AUserThatLeavesDoesNotTakeTheLockOfAnother) {
  Database one(name);
  ASSERT_TRUE(one.lock());
  { Database other(name); }
  EXPECT_TRUE(kept_from_others());
}

// Runs in a child that may not let a file grow, until it may.
int unlock_on_a_full_disk(const box::DatabaseName &name, bool it_gets_room) {
  Database database(name);
  if (!database.lock()) return 1;
  database.put("a", bytes("new"));
  database.remove("b");
  database.put("large", Bytes(1 << 20));
  signal(SIGXFSZ, SIG_IGN);
  const auto size = std::filesystem::file_size(name.folder / "data.mdb");
  const rlimit full{size, RLIM_INFINITY}, roomy{RLIM_INFINITY, RLIM_INFINITY};
  if (setrlimit(RLIMIT_FSIZE, &full) != 0) return 2;
  for (int attempt = 0; attempt < 2; ++attempt) {
    if (database.unlock()) return 3;
    if (!database.locked()) return 4;
    if (database.get("a") != bytes("new") || database.get("b")) return 5;
  }
  if (!it_gets_room) return 0;
  if (setrlimit(RLIMIT_FSIZE, &roomy) != 0) return 6;
  return database.unlock() && !database.locked() ? 0 : 7;
}

TEST_F(DatabaseTest, ChangesThatCannotBeSavedAreSavedByAnUnlockThatCan) {
  Database(name).put("a", bytes("old"));
  Database(name).put("b", bytes("old"));
  EXPECT_EQ(in_child([&] { return unlock_on_a_full_disk(name, true); }), 0);
  EXPECT_EQ(seen_elsewhere("a", "new"), 0);
  EXPECT_EQ(seen_elsewhere("b", ""), 1);
  EXPECT_EQ(seen_elsewhere("large", std::string(1 << 20, '\0')), 0);
  EXPECT_TRUE(lockable_elsewhere());
}

TEST_F(DatabaseTest, ChangesThatAreNeverSavedAreDroppedTogether) {
  Database(name).put("a", bytes("old"));
  Database(name).put("b", bytes("old"));
  EXPECT_EQ(in_child([&] { return unlock_on_a_full_disk(name, false); }), 0);
  EXPECT_EQ(seen_elsewhere("a", "old"), 0);
  EXPECT_EQ(seen_elsewhere("b", "old"), 0);
  EXPECT_EQ(seen_elsewhere("large", ""), 1);
  EXPECT_TRUE(lockable_elsewhere());
}

TEST_F(DatabaseTest, AnUnlockThatTheDiskFailsIsTriedAgain) {
  Database database(name);
  ASSERT_TRUE(database.lock());
  database.put("a", bytes("new"));
  fail_disk_waits(true);
  EXPECT_FALSE(database.unlock());
  fail_disk_waits(false);
  EXPECT_EQ(seen_elsewhere("a", ""), 1);
  EXPECT_TRUE(database.unlock());
  EXPECT_EQ(seen_elsewhere("a", "new"), 0);
}

TEST_F(DatabaseTest, AChangeOfItsOwnThatCannotBeSavedLeavesNoLock) {
  EXPECT_EQ(in_child([&] {
              Database database(name);
              signal(SIGXFSZ, SIG_IGN);
              const auto size = std::filesystem::file_size(name.folder / "data.mdb");
              const rlimit limit{size, size};
              if (setrlimit(RLIMIT_FSIZE, &limit) != 0) return 1;
              if (message_of([&] { database.put("large", Bytes(1 << 20)); }).empty()) return 2;
              return lockable_elsewhere() ? 0 : 3;
            }),
            0);
}

TEST_F(DatabaseTest, ABadKeyIsRefusedAndLeavesNoLock) {
  Database database(name);
  EXPECT_NE(message_of([&] { database.put("", bytes("text")); }), "");
  EXPECT_NE(message_of([&] { database.put(std::string(600, 'k'), bytes("text")); }), "");
  EXPECT_NE(message_of([&] { static_cast<void>(database.get("")); }), "");
  EXPECT_TRUE(lockable_elsewhere());
}

TEST_F(DatabaseTest, AChangeThatIsRefusedTakesNoOtherAlong) {
  Database database(name);
  ASSERT_TRUE(database.lock());
  database.put("a", bytes("new"));
  EXPECT_NE(message_of([&] { database.put("too large", Bytes(std::size_t{65} << 20U)); }), "");
  EXPECT_EQ(database.get("a"), bytes("new"));
  database.put("b", bytes("new"));
  EXPECT_TRUE(database.unlock());
  EXPECT_EQ(seen_elsewhere("a", "new"), 0);
  EXPECT_EQ(seen_elsewhere("b", "new"), 0);
  EXPECT_EQ(seen_elsewhere("too large", ""), 1);
}

TEST_F(DatabaseTest, NoDescriptorPassesToAProgram) {
  Database database(name);
  ASSERT_TRUE(database.lock());
  int found = 0;
  for (const auto &entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code error;
    if (std::filesystem::read_symlink(entry, error).string().find(name.folder.string()) != 0) continue;
    ++found;
    const int fd = std::stoi(entry.path().filename().string());
    EXPECT_NE(fcntl(fd, F_GETFD) & FD_CLOEXEC, 0) << std::filesystem::read_symlink(entry, error);
  }
  EXPECT_GE(found, 3);
}

}  // namespace
