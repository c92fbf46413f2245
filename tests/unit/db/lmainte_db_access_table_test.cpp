#include <gtest/gtest.h>

#include "tests/unit/doubles/library_test.h"

namespace {

using doubles::Lines;
using doubles::machine;

class LmainteDbAccessTable : public doubles::LibraryTest {
 protected:
  void put(uint32_t db_id, const std::string &name, const doubles::StoredRecord &record) {
    machine().records[{db_id, name}] = record;
  }
  // A record that holds a byte over and over.
  void put(uint32_t db_id, const std::string &name, size_t size, uint8_t byte) {
    put(db_id, name, {doubles::Bytes(size, byte)});
  }
  void put_three_fans() {
    put(4, "fru_fan_qe_info_00", 256, 0xA0);
    put(4, "fru_fan_qe_info_01", 256, 0xA1);
    put(4, "fru_fan_qe_info_02", 256, 0xA2);
  }

  lmainte_access_entry *three_fans() { return lmainte_db_make_access_table(0, 3, 256, "fru_fan_qe_info_%02d"); }

  static int first_byte(const lmainte_access_entry &entry) {
    return entry.data == nullptr ? -1 : *static_cast<uint8_t *>(entry.data);
  }

  Lines client_calls() { return machine().calls_of({"open", "lock", "get", "unlock", "close"}); }
};

// ---- making

TEST_F(LmainteDbAccessTable, HoldsAnEntryForEveryIndexAndAnEnd) {
  const char *name = "fru_fan_qe_info_%02d";
  lmainte_access_entry *table = lmainte_db_make_access_table(3, 2, 256, name);
  ASSERT_NE(table, nullptr);
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(table[i].index, 3 + i);
    EXPECT_EQ(table[i].size, 256);
    EXPECT_EQ(table[i].name, name);
    EXPECT_EQ(table[i].data, nullptr);
  }
  EXPECT_EQ(table[2].index, -1);
  EXPECT_EQ(table[2].size, -1);
  EXPECT_EQ(table[2].name, nullptr);
  EXPECT_EQ(table[2].data, nullptr);
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C03B0", "100 110C03B1"}));
  lmainte_db_free_access_table(table);
}

struct MakeRow {
  const char *says;
  int32_t first, count, size;
  const char *name;
};

TEST_F(LmainteDbAccessTable, RefusesWhatMakesNoRun) {
  constexpr MakeRow kRows[] = {
      {"a negative first index", -1, 1, 1, "x"}, {"no records", 0, 0, 1, "x"},
      {"a negative count", 0, -1, 1, "x"},       {"records without a size", 0, 1, 0, "x"},
      {"a negative size", 0, 1, -1, "x"},        {"no name", 0, 1, 1, nullptr},
  };
  for (const auto &row : kRows) {
    machine().start();
    EXPECT_EQ(lmainte_db_make_access_table(row.first, row.count, row.size, row.name), nullptr) << row.says;
    EXPECT_EQ(machine().calls, Lines{}) << row.says;
    EXPECT_EQ(doubles::trace(),
              (Lines{"100 110C03B0", "805 110C13B1 " + std::to_string(row.first) + " " + std::to_string(row.count),
                     "805 110C13B2 " + std::to_string(row.size), "100 110C03B1"}))
        << row.says;
  }
}

TEST_F(LmainteDbAccessTable, SmallestRunHasOneRecordOfOneByte) {
  lmainte_access_entry *table = lmainte_db_make_access_table(0, 1, 1, "x");
  ASSERT_NE(table, nullptr);
  EXPECT_EQ(table[0].index, 0);
  lmainte_db_free_access_table(table);
}

TEST_F(LmainteDbAccessTable, NoMemoryMakesNoTable) {
  machine().fail("calloc", 1, ENOMEM);
  EXPECT_EQ(three_fans(), nullptr);
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C03B0", "800A 110C13B3 12", "100 110C03B1"}));
}

// ---- reading

TEST_F(LmainteDbAccessTable, ReadsEveryRecordInsideOneBracket) {
  put_three_fans();
  lmainte_access_entry *table = three_fans();
  EXPECT_EQ(lmainte_db_get_data(4, table), 0);
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(first_byte(table[i]), 0xA0 + i);
    EXPECT_EQ(table[i].size, 256);
  }
  EXPECT_EQ(client_calls(), (Lines{"open 4", "lock 4", "get 4 fru_fan_qe_info_00", "get 4 fru_fan_qe_info_01",
                                   "get 4 fru_fan_qe_info_02", "unlock 4", "close 4"}));
  EXPECT_EQ(doubles::trace_of(0x110C03A0), (Lines{"100 110C03A0", "100 110C03A1"}));
  lmainte_db_free_access_table(table);
}

TEST_F(LmainteDbAccessTable, ReadsTheIndicesOfItsOwnRun) {
  put(4, "fru_fan_qe_info_03", 256, 3);
  put(4, "fru_fan_qe_info_04", 256, 4);
  lmainte_access_entry *table = lmainte_db_make_access_table(3, 2, 256, "fru_fan_qe_info_%02d");
  EXPECT_EQ(lmainte_db_get_data(4, table), 0);
  EXPECT_EQ(first_byte(table[0]), 3);
  EXPECT_EQ(first_byte(table[1]), 4);
  lmainte_db_free_access_table(table);
}

TEST_F(LmainteDbAccessTable, NameNeedsNoPlaceForTheIndex) {
  put(2, "current_system_info", 176, 9);
  lmainte_access_entry *table = lmainte_db_make_access_table(0, 1, 176, "current_system_info");
  EXPECT_EQ(lmainte_db_get_data(2, table), 0);
  EXPECT_EQ(first_byte(table[0]), 9);
  lmainte_db_free_access_table(table);
}

struct NameRow {
  const char *says;
  std::string pattern;
  int32_t index;
  std::string name;
};

TEST_F(LmainteDbAccessTable, NamesHoldTheIndexAsPrintfWritesIt) {
  const std::string long_stem(125, 'k');
  const NameRow rows[] = {
      {"two digits", "r_%02d", 7, "r_07"},
      {"two digits filled", "r_%02d", 99, "r_99"},
      {"a third digit where it is needed", "r_%02d", 100, "r_100"},
      {"the highest index", "r_%02d", INT32_MAX, "r_2147483647"},
      {"three digits", "r_%03d", 7, "r_007"},
      {"three digits filled", "r_%03d", 511, "r_511"},
      {"one digit", "r_%01d", 7, "r_7"},
      {"nine digits", "r_%09d", 12345, "r_000012345"},
      {"as many digits as it takes", "r_%d", 7, "r_7"},
      {"blanks before it", "r_%3d", 7, "r_  7"},
      {"a pattern of three characters", "r%d", 7, "r7"},
      {"ten blanks before it", "r_%11d", 7, "r_          7"},
      {"a width of no digits", "r_%00d", 7, "r_7"},
      {"a short number", "r_%0hd", 7, "r_7"},
      {"hexadecimal", "r_%02x", 255, "r_ff"},
      {"text behind it", "r_%02d_x", 7, "r_07_x"},
      {"nothing before it", "%02d", 7, "07"},
      {"a percent sign before it", "r_%%_%02d", 7, "r_%_07"},
      {"a percent sign that makes it plain text", "r_%%02d", 7, "r_%02d"},
      {"127 characters", long_stem + "%02d", 7, long_stem + "07"},
      {"128 characters, of which one is cut", long_stem + "k%02d", 7, long_stem + "k0"},
      {"128 characters with five digits", std::string(123, 'k') + "%05d", 7, std::string(123, 'k') + "0000"},
      {"129 characters with nine digits", std::string(120, 'k') + "%09d", 7, std::string(120, 'k') + "0000000"},
      {"127 characters where a digit more is needed", long_stem + "%02d", 100, long_stem + "10"},
  };
  for (const auto &row : rows) {
    put(2, row.name, 1, 9);
    machine().calls.clear();
    lmainte_access_entry *table = lmainte_db_make_access_table(row.index, 1, 1, row.pattern.c_str());
    EXPECT_EQ(lmainte_db_get_data(2, table), 0) << row.says;
    EXPECT_EQ(machine().calls_of({"get"}), (Lines{"get 2 " + row.name})) << row.says;
    lmainte_db_free_access_table(table);
  }
}

TEST_F(LmainteDbAccessTable, EachNameOfARunStandsForItself) {
  struct Entry {
    const char *pattern;
    int32_t index;
    std::string name;
  };
  struct RunRow {
    const char *says;
    Entry entries[3];
  };
  const RunRow rows[] = {
      {"a digit more on the way", {{"r_%02d", 99, "r_99"}, {"r_%02d", 100, "r_100"}, {"r_%02d", 101, "r_101"}}},
      {"a digit fewer on the way", {{"r_%02d", 100, "r_100"}, {"r_%02d", 99, "r_99"}, {"r_%02d", 7, "r_07"}}},
      {"a shorter pattern", {{"long_%04d", 1, "long_0001"}, {"r_%02d", 2, "r_02"}, {"r_%02d", 3, "r_03"}}},
      {"a pattern without a number", {{"long_%04d", 1, "long_0001"}, {"name", 2, "name"}, {"name", 3, "name"}}},
      {"an unusual pattern", {{"long_%04d", 1, "long_0001"}, {"r_%d", 2, "r_2"}, {"r_%d", 3, "r_3"}}},
      {"a usual pattern behind it", {{"long_%dx", 1, "long_1x"}, {"r_%02d", 2, "r_02"}, {"r_%dx", 3, "r_3x"}}},
  };
  for (const auto &row : rows) {
    lmainte_access_entry *table = lmainte_db_make_access_table(0, 3, 1, "any");
    Lines gets;
    for (int i = 0; i < 3; ++i) {
      const Entry &entry = row.entries[i];
      put(2, entry.name, 1, 9);
      table[i].index = entry.index;
      table[i].name = entry.pattern;
      gets.push_back("get 2 " + entry.name);
    }
    machine().calls.clear();
    EXPECT_EQ(lmainte_db_get_data(2, table), 0) << row.says;
    EXPECT_EQ(machine().calls_of({"get"}), gets) << row.says;
    lmainte_db_free_access_table(table);
  }
}

TEST_F(LmainteDbAccessTable, KeyIsCutAt127Characters) {
  const std::string name(200, 'k');
  put(2, name.substr(0, 127), 1, 9);
  lmainte_access_entry *table = lmainte_db_make_access_table(0, 1, 1, name.c_str());
  EXPECT_EQ(lmainte_db_get_data(2, table), 0);
  lmainte_db_free_access_table(table);
}

TEST_F(LmainteDbAccessTable, MissingRecordStopsTheReading) {
  put_three_fans();
  machine().records.erase({4, "fru_fan_qe_info_01"});
  lmainte_access_entry *table = three_fans();
  EXPECT_EQ(lmainte_db_get_data(4, table), -1);
  EXPECT_EQ(first_byte(table[0]), 0xA0);
  EXPECT_EQ(first_byte(table[1]), -1);
  EXPECT_EQ(first_byte(table[2]), -1);
  EXPECT_EQ(client_calls(),
            (Lines{"open 4", "lock 4", "get 4 fru_fan_qe_info_00", "get 4 fru_fan_qe_info_01", "unlock 4", "close 4"}));
  EXPECT_EQ(doubles::trace_of(0x110C03A0),
            (Lines{"100 110C03A0", "800A 110C13A4 3 1", "805 110C13A5 256 256", "100 110C03A1"}));
  lmainte_db_free_access_table(table);
  EXPECT_EQ(doubles::trace_of(0x110C03C0), (Lines{"100 110C03C0", "805 110C13C2 1", "805 110C13C2 2", "100 110C03C1"}));
}

TEST_F(LmainteDbAccessTable, RecordOfAnotherSizeStopsTheReading) {
  for (const size_t size : {255U, 257U, 1U}) {
    machine().start();
    put_three_fans();
    put(4, "fru_fan_qe_info_01", size, 0xEE);
    lmainte_access_entry *table = three_fans();
    EXPECT_EQ(lmainte_db_get_data(4, table), -1);
    EXPECT_EQ(first_byte(table[1]), 0xEE);
    EXPECT_EQ(table[1].size, static_cast<int32_t>(size));
    EXPECT_EQ(first_byte(table[2]), -1);
    EXPECT_EQ(doubles::trace_of(0x110C03A0),
              (Lines{"100 110C03A0", "800A 110C13A4 0 1", "805 110C13A5 256 " + std::to_string(size), "100 110C03A1"}));
    lmainte_db_free_access_table(table);
    EXPECT_EQ(machine().left_behind(), Lines{});
  }
}

TEST_F(LmainteDbAccessTable, BufferThatCameWithAFailureIsFreed) {
  put(4, "fru_fan_qe_info_00", {doubles::Bytes(256, 1), -5, true});
  lmainte_access_entry *table = three_fans();
  EXPECT_EQ(lmainte_db_get_data(4, table), -1);
  EXPECT_EQ(first_byte(table[0]), 1);
  EXPECT_EQ(doubles::trace_of(0x110C03A0).at(1), "800A 110C13A4 -5 0");
  lmainte_db_free_access_table(table);
}

TEST_F(LmainteDbAccessTable, NullTableIsRefused) {
  EXPECT_EQ(lmainte_db_get_data(4, nullptr), -1);
  EXPECT_EQ(machine().calls, Lines{});
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C03A0", "805 110C13A1", "100 110C03A1"}));
}

TEST_F(LmainteDbAccessTable, UnknownDatabaseIsRefused) {
  lmainte_access_entry *table = three_fans();
  EXPECT_EQ(lmainte_db_get_data(6, table), -1);
  EXPECT_EQ(client_calls(), Lines{});
  lmainte_db_free_access_table(table);
}

// ---- brackets

TEST_F(LmainteDbAccessTable, FailedOpenEndsTheReading) {
  put_three_fans();
  machine().fail("open 4");
  lmainte_access_entry *table = three_fans();
  EXPECT_EQ(lmainte_db_get_data(4, table), -1);
  EXPECT_EQ(client_calls(), (Lines{"open 4"}));
  EXPECT_EQ(doubles::trace_of(0x110C03A0), (Lines{"100 110C03A0", "805 110C13A2 -1 4", "100 110C03A1"}));
  lmainte_db_free_access_table(table);
}

TEST_F(LmainteDbAccessTable, FailedLockClosesAgain) {
  put_three_fans();
  machine().fail("lock 4");
  lmainte_access_entry *table = three_fans();
  EXPECT_EQ(lmainte_db_get_data(4, table), -1);
  EXPECT_EQ(client_calls(), (Lines{"open 4", "lock 4", "close 4"}));
  EXPECT_EQ(doubles::trace_of(0x110C03A0), (Lines{"100 110C03A0", "805 110C13A3 -1 4", "100 110C03A1"}));
  lmainte_db_free_access_table(table);
}

TEST_F(LmainteDbAccessTable, FailedUnlockSpoilsAReadingAndStillCloses) {
  doubles::in_a_process_of_its_own([this] {
    put_three_fans();
    machine().fail("unlock 4");
    lmainte_access_entry *table = three_fans();
    EXPECT_EQ(lmainte_db_get_data(4, table), -1);
    EXPECT_EQ(first_byte(table[2]), 0xA2);
    EXPECT_EQ(client_calls().back(), "close 4");
    EXPECT_EQ(doubles::trace_of(0x110C03A0), (Lines{"100 110C03A0", "805 110C13A6 -1 4", "100 110C03A1"}));
    lmainte_db_free_access_table(table);
    EXPECT_EQ(machine().left_behind(), (Lines{"database 4 locked"}));
  });
}

TEST_F(LmainteDbAccessTable, FailedCloseSpoilsAReading) {
  doubles::in_a_process_of_its_own([this] {
    put_three_fans();
    machine().fail("close 4");
    lmainte_access_entry *table = three_fans();
    EXPECT_EQ(lmainte_db_get_data(4, table), -1);
    EXPECT_EQ(doubles::trace_of(0x110C03A0), (Lines{"100 110C03A0", "805 110C13A7 -1 4", "100 110C03A1"}));
    lmainte_db_free_access_table(table);
    EXPECT_EQ(machine().left_behind(), (Lines{"database 4 open"}));
  });
}

TEST_F(LmainteDbAccessTable, HigherDatabaseLockedFailsAtTheLockAndClosesAgain) {
  put(2, "current_system_info", 176, 9);
  lmainte_scdb_lock(4);
  lmainte_access_entry *table = lmainte_db_make_access_table(0, 1, 176, "current_system_info");
  EXPECT_EQ(lmainte_db_get_data(2, table), -1);
  EXPECT_EQ(client_calls(), (Lines{"lock 4", "open 2", "close 2"}));
  lmainte_db_free_access_table(table);
  lmainte_scdb_unlock(4);
}

TEST_F(LmainteDbAccessTable, LowerDatabaseLockedIsNoHindrance) {
  put_three_fans();
  lmainte_scdb_lock(2);
  lmainte_access_entry *table = three_fans();
  EXPECT_EQ(lmainte_db_get_data(4, table), 0);
  lmainte_db_free_access_table(table);
  lmainte_scdb_unlock(2);
}

TEST_F(LmainteDbAccessTable, OwnLockNestsBelowAHigherOne) {
  put(2, "current_system_info", 176, 9);
  lmainte_scdb_open(2);
  lmainte_scdb_lock(2);
  lmainte_scdb_lock(4);
  lmainte_access_entry *table = lmainte_db_make_access_table(0, 1, 176, "current_system_info");
  EXPECT_EQ(lmainte_db_get_data(2, table), 0);
  EXPECT_EQ(client_calls(), (Lines{"open 2", "lock 2", "lock 4", "get 2 current_system_info"}));
  lmainte_db_free_access_table(table);
  lmainte_scdb_unlock(4);
  lmainte_scdb_unlock(2);
  lmainte_scdb_close(2);
}

// ---- freeing

TEST_F(LmainteDbAccessTable, FreeingReportsEveryRecordNeverRead) {
  lmainte_db_free_access_table(lmainte_db_make_access_table(7, 3, 1, "x"));
  EXPECT_EQ(doubles::trace_of(0x110C03C0),
            (Lines{"100 110C03C0", "805 110C13C2 7", "805 110C13C2 8", "805 110C13C2 9", "100 110C03C1"}));
}

TEST_F(LmainteDbAccessTable, FreeingRecordsGivesAllMemoryBack) {
  put_three_fans();
  lmainte_access_entry *table = three_fans();
  lmainte_db_get_data(4, table);
  EXPECT_EQ(machine().left_behind(), (Lines{"4 blocks of memory"}));
  lmainte_db_free_access_table(table);
  EXPECT_EQ(machine().left_behind(), Lines{});
  EXPECT_EQ(doubles::trace_of(0x110C03C0), (Lines{"100 110C03C0", "100 110C03C1"}));
}

TEST_F(LmainteDbAccessTable, FreeingNothingIsAnErrorInTheTrace) {
  lmainte_db_free_access_table(nullptr);
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C03C0", "805 110C13C1", "100 110C03C1"}));
}

}  // namespace
