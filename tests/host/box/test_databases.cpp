#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <fstream>
#include <iterator>

#include "host/base/descriptor.h"
#include "host/box/data_pages.h"
#include "host/box/database.h"
#include "tests/host/box/child.h"
#include "tests/host/box/database_test.h"
#include "tests/host/box/disk.h"
#include "tests/host/box/scratch.h"

namespace {

using box::Bytes;
using box::Database;

// Throws where the pages of a data file are damaged.
void look_at(const std::filesystem::path &file) {
  const Bytes whole = bytes_of_file(file);
  box::examine(whole, box::heads_of(whole));
}

struct DatabaseFiles : testing::Test {
  std::string opening() const {
    return message_of([&] { Database database({scratch.path(), 2}); });
  }
  std::string said(const std::string &why) const {
    return "databases in " + scratch.path().string() + ": cannot " + why;
  }
  std::filesystem::path file() const { return scratch / "data.mdb"; }

  Scratch scratch;
};

TEST_F(DatabaseFiles, AFolderThatIsMissingIsNamed) {
  const std::string message = message_of([&] { Database database({scratch / "db", 2}); });
  EXPECT_EQ(message, "databases in " + (scratch / "db").string() +
                         ": cannot open: No such file or directory. The folder is no part of a complete box.");
  EXPECT_FALSE(std::filesystem::exists(scratch / "db"));
}

TEST_F(DatabaseFiles, AnEmptyFolderHoldsNoDatabases) {
  EXPECT_EQ(opening(), said("open: it holds no data.mdb"));
  EXPECT_TRUE(std::filesystem::is_empty(scratch.path()));
}

TEST_F(DatabaseFiles, AFileOfAnotherKindIsNamed) {
  std::ofstream(file()) << std::string(10000, 'x');
  EXPECT_EQ(opening(), said("read: data.mdb is damaged: it does not begin as it should. Make the box anew, or load a "
                            "dump of it."));
}

TEST_F(DatabaseFiles, AnEmptyFileIsNotTakenForANewDatabase) {
  Database({scratch.path(), 2}, true).put("key", bytes("text"));
  std::filesystem::resize_file(file(), 0);
  EXPECT_EQ(opening(), said("open: data.mdb is damaged: it is empty. Make the box anew, or load a dump of it."));
  EXPECT_EQ(std::filesystem::file_size(file()), 0u);
}

TEST_F(DatabaseFiles, AFileThatWasCutShortIsNamed) {
  Database({scratch.path(), 2}, true).put("key", Bytes(100000, 1));
  const std::uintmax_t without_last_page = box::heads_of(bytes_of_file(file())).last_page * 4096;
  for (const std::uintmax_t size : {without_last_page, std::uintmax_t{100000}, std::uintmax_t{8192}}) {
    std::filesystem::resize_file(file(), size);
    const std::string message = opening();
    EXPECT_TRUE(message.starts_with(
        said("read: data.mdb is damaged: it is cut short, has " + std::to_string(size) + " bytes and should have ")))
        << message;
  }
  std::filesystem::resize_file(file(), 4096);
  EXPECT_TRUE(opening().starts_with(said("read: data.mdb is damaged: "))) << opening();
}

TEST_F(DatabaseFiles, AFileThatIsCutShortInUseIsNamed) {
  Database database({scratch.path(), 2}, true);
  database.put("key", Bytes(100000, 1));
  ASSERT_TRUE(database.lock());
  database.put("other", bytes("text"));
  for (const std::uintmax_t size : {100000, 4096, 0}) {
    std::filesystem::resize_file(file(), size);
    const std::string damaged = said("read: data.mdb is damaged: it is cut short, has " + std::to_string(size) + " ");
    EXPECT_TRUE(message_of([&] { static_cast<void>(database.get("key")); }).starts_with(damaged)) << size;
    EXPECT_TRUE(message_of([&] { Database::unlock_together({&database}); }).starts_with(damaged)) << size;
  }
}

TEST_F(DatabaseFiles, TheDatabasesOfAnOlderBoxAreNamed) {
  std::filesystem::create_directories(scratch / "box");
  EXPECT_EQ(opening(), said("open: an older spbox made this box and kept its databases in another form. Dump it with "
                            "that spbox and load the dump, or make the box anew."));
}

TEST_F(DatabaseFiles, ALinkIsNotFollowed) {
  Scratch outside;
  Database({outside.path(), 2}, true).put("key", bytes("text"));
  std::filesystem::create_symlink(outside / "data.mdb", file());
  EXPECT_EQ(opening(), said("open: data.mdb is no file"));
  std::filesystem::remove(file());
  std::filesystem::copy_file(outside / "data.mdb", file());
  std::filesystem::create_symlink(outside / "made", scratch / "locks");
  EXPECT_EQ(opening(), said("open its file 'locks': Too many levels of symbolic links"));
  EXPECT_FALSE(std::filesystem::exists(outside / "made"));
}

TEST_F(DatabaseFiles, NoneIsMappedButTheRecordsAndThoseAreWholeOnTheDisk) {
  Database database({scratch.path(), 2}, true);
  database.put("key", Bytes(100000, 1));
  std::vector<std::string> names;
  for (const auto &entry : std::filesystem::directory_iterator(scratch.path())) {
    names.push_back(entry.path().filename());
  }
  std::ranges::sort(names);
  EXPECT_EQ(names, (std::vector<std::string>{"data.mdb", "locks"}));
  struct stat status {};
  ASSERT_EQ(stat(file().c_str(), &status), 0);
  EXPECT_GE(status.st_blocks * 512, status.st_size) << "a hole could not be filled on a full disk";
}

TEST_F(DatabaseFiles, TheHolesOfACopyAreFilled) {
  Database({scratch.path(), 2}, true).put("key", Bytes(100000));
  const auto size = std::filesystem::file_size(file());
  {
    const base::Descriptor holed(open(file().c_str(), O_RDWR | O_CLOEXEC));
    ASSERT_EQ(fallocate(holed.get(), FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, 32768, 65536), 0);
  }
  EXPECT_EQ(Database({scratch.path(), 2}).get("key"), Bytes(100000));
  struct stat status {};
  ASSERT_EQ(stat(file().c_str(), &status), 0);
  EXPECT_GE(status.st_blocks * 512, static_cast<blkcnt_t>(size));
}

TEST_F(DatabaseFiles, MoreThanABoxHoldsIsNoFaultOfTheDisk) {
  Database database({scratch.path(), 2}, true);
  ASSERT_TRUE(database.lock());
  for (int i = 0; i < 3; ++i) database.put("record " + std::to_string(i), Bytes(std::size_t{30} << 20U));
  EXPECT_EQ(message_of([&] { Database::unlock_together({&database}); }),
            said("write 'record 2': the box is full: its databases hold at most 64 MiB together."));
  database.remove("record 2");
  EXPECT_TRUE(database.unlock());
}

// Records of all sizes come, grow, shrink and go; LMDB never uses more of the file than was made ready, nor far less.
TEST_F(DatabaseFiles, HasRoomForWhateverChangesAndNotMuchMore) {
  Database database({scratch.path(), 2}, true);
  std::uint32_t random = 1;
  const auto next = [&](std::uint32_t end) { return (random = random * 1664525 + 1013904223) / 65536 % end; };
  std::uintmax_t most = 0;
  for (int round = 0; round < 60; ++round) {
    ASSERT_TRUE(database.lock());
    for (std::uint32_t i = next(80); i > 0; --i) {
      const std::string key = std::string(1 + next(4) * next(40), 'k') + std::to_string(next(500));
      if (next(4) == 0) database.remove(key);
      database.put(key, Bytes(next(3) == 0 ? next(20000) : next(2100)));
    }
    Database::unlock_together({&database});
    EXPECT_NO_THROW(database.get("k1")) << "the file is shorter than LMDB says, after change " << round;
    if (round % 4 == 0) look_at(file());
    std::uintmax_t kept = 0;
    database.each(
        [&](std::string_view key, std::span<const std::uint8_t> record) { kept += key.size() + record.size(); });
    most = std::max(most, kept);
    EXPECT_LT(std::filesystem::file_size(file()), 5 * most + (std::uintmax_t{2} << 20U)) << "after change " << round;
  }
}

TEST_F(DatabaseFiles, MakesTheFoldersOfADatabase) {
  const box::DatabaseName name{scratch / "mgb/db", 0};
  { Database database(name, true); }
  EXPECT_NO_THROW(Database{name});
  EXPECT_NO_THROW(Database(name, true));
}

class DatabasesTest : public DatabaseFiles {
 protected:
  Database setup{{scratch.path(), 1}, true}, current{{scratch.path(), 2}}, own{{scratch.path(), 6}};

  // What another process reads of the three databases: "-" where there is no record.
  std::string elsewhere() const {
    std::string path = scratch / "seen";
    in_child([&] {
      std::ofstream out(path);
      for (const std::uint32_t number : {1, 2, 6}) {
        const auto record = Database({scratch.path(), number}).get("key").value_or(bytes("-"));
        out << std::string(record.begin(), record.end());
      }
      return 0;
    });
    std::ifstream in(path);
    return {std::istreambuf_iterator<char>(in), {}};
  }
};

TEST_F(DatabasesTest, KeepRecordsOfOneNameApart) {
  setup.put("key", bytes("a"));
  own.put("key", bytes("c"));
  EXPECT_EQ(elsewhere(), "a-c");
  setup.remove("key");
  EXPECT_EQ(elsewhere(), "--c");
  const auto all = Database::all_in(scratch.path());
  EXPECT_TRUE(all.at(1).empty());
  EXPECT_EQ(all.at(6), (Database::Records{{"key", bytes("c")}}));
}

TEST_F(DatabasesTest, AreLockedEachForItself) {
  ASSERT_TRUE(setup.lock());
  setup.put("key", bytes("a"));
  EXPECT_EQ(in_child([&] {
              Database other({scratch.path(), 2});
              if (!other.lock()) return 1;
              other.put("key", bytes("b"));
              return other.unlock() ? 0 : 2;
            }),
            0)
      << "another process changes another database at the same time";
  EXPECT_EQ(elsewhere(), "-b-");
  ASSERT_TRUE(setup.unlock());
  EXPECT_EQ(elsewhere(), "ab-");
}

TEST_F(DatabasesTest, AreChangedTogetherOrNotAtAll) {
  for (Database *database : {&setup, &current, &own}) {
    ASSERT_TRUE(database->lock());
    database->put("key", bytes("x"));
  }
  fail_disk_waits(true);
  EXPECT_NE(message_of([&] { Database::unlock_together({&setup, &current, &own}); }), "");
  fail_disk_waits(false);
  EXPECT_EQ(elsewhere(), "---");
  EXPECT_TRUE(setup.locked() && current.locked() && own.locked()) << "the changes wait for the next attempt";
  Database::unlock_together({&current, &own, &setup});
  EXPECT_EQ(elsewhere(), "xxx");
  EXPECT_FALSE(setup.locked() || current.locked() || own.locked());
}

TEST_F(DatabasesTest, AreNotChangedTogetherWhereOneIsNotLocked) {
  ASSERT_TRUE(setup.lock());
  setup.put("key", bytes("x"));
  EXPECT_EQ(message_of([&] {
              Database::unlock_together({&setup, &current});
            }),
            "database 2 in " + scratch.path().string() + ": cannot save the changes: it is not locked");
  EXPECT_EQ(elsewhere(), "---");
  EXPECT_TRUE(setup.locked());
}

}  // namespace
