// A data file with damage: it is named, or it harms nothing.
#include "host/box/data_pages.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <lmdb.h>
#include <unistd.h>

#include <cstring>

#include "host/base/descriptor.h"
#include "host/box/database.h"
#include "tests/host/box/database_test.h"
#include "tests/host/box/scratch.h"

namespace {

using box::Bytes;
using box::Database;

constexpr std::size_t kPage = 4096;

class DataPages : public testing::Test {
 protected:
  // Records of all sizes in several databases, written and changed in `saves` saves.
  void fill(int saves) {
    Database current({scratch_.path(), 2}, true), own({scratch_.path(), 6});
    for (int save = 1; save <= saves; ++save) {
      ASSERT_TRUE(current.lock() && own.lock());
      for (int i = 0; i < 60; ++i) {
        const auto size = static_cast<std::size_t>(i) * (i % 20 == 7 ? 300 : 7);
        current.put("record " + std::to_string(i), Bytes(size, static_cast<std::uint8_t>(save)));
      }
      current.remove("record " + std::to_string(save));
      own.put("/PSU#" + std::to_string(save), bytes("on"));
      Database::unlock_together({&current, &own});
    }
    bytes_ = read_file();
    all_ = Database::all_in(scratch_.path());
  }

  Bytes read_file() const { return bytes_of_file(scratch_ / "data.mdb"); }
  void write_bytes(std::size_t at, const void *bytes, std::size_t size) const {
    const base::Descriptor file(open((scratch_ / "data.mdb").c_str(), O_WRONLY | O_CLOEXEC));
    ASSERT_EQ(pwrite(file.get(), bytes, size, static_cast<off_t>(at)), static_cast<ssize_t>(size));
  }

  std::size_t pages() const { return box::heads_of(bytes_).last_page + 1; }

  // What is said of the bytes; nothing where they are whole.
  std::string said() const {
    try {
      const box::Heads heads = box::heads_of(bytes_);
      if (heads.last_page >= bytes_.size() / kPage) return "it is cut short";
      box::examine(bytes_, heads);
      return "";
    } catch (const box::Damage &damage) {
      return damage.what();
    }
  }

  // Turns one bit over. What is then not named holds the same records; now and then LMDB reads them.
  void flip(std::size_t at, unsigned bit) {
    const auto mask = static_cast<std::uint8_t>(1U << bit);
    bytes_[at] ^= mask;
    const std::string text = said();
    ++(text.empty() ? harmless_ : named_);
    if (text.empty() && harmless_ % 8 == 0) {
      write_bytes(at, &bytes_[at], 1);
      EXPECT_TRUE(Database::all_in(scratch_.path()) == all_) << "byte " << at << ", bit " << bit;
      bytes_[at] ^= mask;
      write_bytes(at, &bytes_[at], 1);
    } else {
      bytes_[at] ^= mask;
    }
  }

  std::uint64_t number_at(std::size_t at) const {
    std::uint64_t number = 0;
    std::memcpy(&number, &bytes_[at], sizeof number);
    return number;
  }

  Scratch scratch_;
  Bytes bytes_;
  std::array<Database::Records, 7> all_;
  int named_ = 0, harmless_ = 0;
};

// The number of the last save decides which of the two heads counts.
TEST_F(DataPages, NoBitOfAHeadLeadsToAnotherState) {
  for (const int saves : {1, 1, 1}) {
    fill(saves);
    ASSERT_EQ(said(), "");
    for (const std::size_t head : {std::size_t{0}, kPage}) {
      for (std::size_t at = head; at < head + 152; ++at) {
        for (unsigned bit = 0; bit < 8; ++bit) flip(at, bit);
      }
      for (std::size_t at = head + 144; at < head + 152; ++at) {
        for (unsigned bit = 0; bit < 8; ++bit) {
          bytes_[at] ^= static_cast<std::uint8_t>(1U << bit);
          EXPECT_NE(said(), "") << "number of a save, byte " << at << ", bit " << bit << ", after " << saves
                                << " saves";
          bytes_[at] ^= static_cast<std::uint8_t>(1U << bit);
        }
      }
    }
  }
  EXPECT_GT(named_, 3000) << "and harmless: " << harmless_;
}

TEST_F(DataPages, NoBitOfAPageLeadsToOtherRecords) {
  fill(3);
  for (std::size_t page = 2; page < pages(); ++page) {
    for (std::size_t at = page * kPage; at < page * kPage + 24; ++at) flip(at, static_cast<unsigned>(at % 8));
    for (std::size_t at = page * kPage + 24; at < (page + 1) * kPage; at += 73) flip(at, static_cast<unsigned>(at % 7));
  }
  EXPECT_GT(named_, 600);
}

// Two bytes that a command in the box wrote at once made the next spbox crash.
TEST_F(DataPages, AForgedPageIsNamed) {
  fill(3);
  const Bytes whole = bytes_;
  for (std::size_t page = 2; page < pages(); ++page) {
    bytes_[page * kPage + 14] = 0x00;
    bytes_[page * kPage + 15] = 0x10;
  }
  EXPECT_TRUE(said().starts_with("page ")) << said();
  EXPECT_TRUE(said().ends_with(" is not as it was written.")) << said();
  bytes_ = whole;
}

TEST_F(DataPages, EachPageSaysWhichItIsAndHowMuchOfItIsUsed) {
  struct Row {
    const char *says;
    std::size_t at;
    std::uint8_t turned;
  };
  const Row rows[] = {{"it is another page", 0, 0x01},
                      {"it is of another kind", 10, 0x10},
                      {"its list of records ends within a record's place", 12, 0x01},
                      {"its records begin within a record", 14, 0x01},
                      {"its records begin behind its end", 15, 0x20}};
  fill(3);
  for (const Row &row : rows) {
    const Bytes whole = bytes_;
    for (std::size_t page = 2; page < pages(); ++page) {
      const bool is_in_a_tree = bytes_[page * kPage + 10] == 1 || bytes_[page * kPage + 10] == 2;
      if (is_in_a_tree) bytes_[page * kPage + row.at] ^= row.turned;
    }
    EXPECT_TRUE(said().starts_with("page ")) << row.says << ": " << said();
    bytes_ = whole;
  }
}

// Nothing that stands there leads the look itself astray. Sanitizers see where it does.
TEST_F(DataPages, WhateverStandsThereIsLookedAt) {
  fill(3);
  const Bytes whole = bytes_;
  const std::size_t all_pages = pages();
  std::uint32_t random = 1;
  const auto next = [&](std::size_t end) { return (random = random * 1664525 + 1013904223) / 256 % end; };
  for (int round = 0; round < 3000; ++round) {
    for (std::size_t i = next(4); i < 4; ++i) {
      const std::size_t page = next(all_pages), at = page * kPage + next(next(2) == 0 ? 160 : kPage - 8);
      const std::uint64_t forged = next(2) == 0 ? next(200) : ~std::uint64_t{0} >> next(64);
      std::memcpy(&bytes_[at], &forged, 1 + next(8));
    }
    said();
    bytes_ = whole;
  }
  EXPECT_EQ(said(), "");
}

TEST_F(DataPages, ALastSaveThatIsLostIsNamed) {
  fill(3);
  ASSERT_EQ(number_at(kPage + 144), 3U);
  bytes_[kPage + 144] = 1;  // the head of the save before, with the records of that save, now seems to be the newest
  EXPECT_EQ(said(), "what was saved last is lost.");
}

TEST_F(DataPages, ASaverThatDiedBeforeItNotedItsNumberHarmsNothing) {
  fill(3);
  for (const int noted : {2, 1, 0}) {
    bytes_[2048 + 8] = static_cast<std::uint8_t>(noted);
    EXPECT_EQ(said(), "") << noted;
  }
}

TEST_F(DataPages, WhoOpensAFileIsToldOfItsDamage) {
  fill(3);
  write_bytes(kPage + 144, "\x01", 1);
  const std::string read = "databases in " + scratch_.path().string() + ": cannot read: data.mdb is damaged: ";
  const std::string way_out = " Make the box anew, or load a dump of it.";
  EXPECT_EQ(message_of([&] {
              Database database({scratch_.path(), 2});
            }),
            read + "what was saved last is lost." + way_out);
  write_bytes(kPage + 144, "\x02", 1);
  EXPECT_EQ(message_of([&] {
              Database database({scratch_.path(), 2});
            }),
            read + "it does not begin as it should." + way_out);
}

// Another process saves, and what it saved is not as it wrote it.
TEST_F(DataPages, DamageThatComesWithASaveOfSomebodyElseIsNamed) {
  fill(3);
  Database reader({scratch_.path(), 2});
  bytes_[144] = 4;
  write_bytes(144, &bytes_[144], 1);
  EXPECT_NE(message_of([&] { static_cast<void>(reader.get("record 5")); }).find("data.mdb is damaged"),
            std::string::npos);
  ASSERT_TRUE(reader.lock());
  reader.put("record 5", bytes("text"));
  EXPECT_NE(message_of([&] { Database::unlock_together({&reader}); }).find("data.mdb is damaged"), std::string::npos);
}

// Boxes from before there were seals.
TEST_F(DataPages, AFileWithoutASealIsReadAndSealedByTheNextSave) {
  MDB_env *env = nullptr;
  MDB_txn *transaction = nullptr;
  MDB_dbi records = 0;
  ASSERT_EQ(mdb_env_create(&env), 0);
  ASSERT_EQ(mdb_env_open(env, scratch_.path().c_str(), MDB_NOLOCK, 0600), 0);
  ASSERT_EQ(mdb_txn_begin(env, nullptr, 0, &transaction), 0);
  ASSERT_EQ(mdb_dbi_open(transaction, nullptr, 0, &records), 0);
  char key[] = "2old", text[] = "text";
  MDB_val name{4, key}, value{4, text};
  ASSERT_EQ(mdb_put(transaction, records, &name, &value, 0), 0);
  ASSERT_EQ(mdb_txn_commit(transaction), 0);
  mdb_env_close(env);
  {
    Database database({scratch_.path(), 2});
    EXPECT_EQ(database.get("old"), bytes("text"));
    database.put("new", bytes("more"));
  }
  const auto all = Database::all_in(scratch_.path());
  EXPECT_EQ(all.at(2), (Database::Records{{"new", bytes("more")}, {"old", bytes("text")}}));
  bytes_ = read_file();
  EXPECT_EQ(said(), "");
  for (std::size_t at = 2 * kPage; at + 4 < pages() * kPage; ++at) {
    if (std::memcmp(&bytes_[at], "text", 4) == 0) bytes_[at] = 'n';
  }
  EXPECT_EQ(said(), "its records are not those that were saved.");
}

}  // namespace
