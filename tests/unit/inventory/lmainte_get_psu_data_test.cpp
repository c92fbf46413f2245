#include <cstring>

#include <gtest/gtest.h>

#include "tests/unit/doubles/library_test.h"

namespace {

using doubles::Lines;
using doubles::machine;
using doubles::RecordBytes;

constexpr uint32_t kInstalled = 0x80000000;
constexpr uint8_t kUntouched = 0x5A;

// An inventory of sixty power supplies, all installed and well, on a model.
class LmainteGetPsuData : public doubles::LibraryTest {
 protected:
  void SetUp() override {
    LibraryTest::SetUp();
    fill_inventory();
  }

  void fill_inventory() {
    for (uint32_t n = 0; n < 60; ++n) {
      entry(n, kInstalled, 0);
      put_fru("qe", n, "SUPPLY-" + std::to_string(n));
      put_fru("qb", n, "MIDRANGE-" + std::to_string(n));
    }
    std::memset(out_, kUntouched, sizeof out_);
  }

  void entry(uint32_t n, uint32_t status, uint8_t flags) {
    const size_t at = size_t{56} * n;
    current_.word(at, 0xC0000000 + n).word(at + 4, 0xD0000000 + n).word(at + 8, status);
    current_.byte(at + 20, flags).byte(at + 24, static_cast<uint8_t>(100 + n));
    machine().records[{2, "current_psu_info"}] = {current_};
  }

  static std::string fru_name(const char *family, uint32_t n) {
    char name[40];
    std::snprintf(name, sizeof name, "fru_psu_%s_info_%02u", family, n);
    return name;
  }
  void put_fru(const char *family, uint32_t n, const std::string &name) {
    put_fru(family, n, name, static_cast<uint8_t>(name.size()));
  }
  void put_fru(const char *family, uint32_t n, const std::string &name, uint8_t length) {
    machine().records[{4, fru_name(family, n)}] = {RecordBytes(320).byte(79, length).text(80, name)};
  }

  Lines client_calls() { return machine().calls_of({"open", "lock", "get", "unlock", "close"}); }
  uint32_t status(size_t i = 0) { return static_cast<uint32_t>(out_[i].status); }
  std::string name(size_t i, size_t size) { return {out_[i].fru_name, size}; }

  // The record is as the caller left it.
  ::testing::AssertionResult is_untouched(size_t i) {
    PsuData pattern;
    std::memset(&pattern, kUntouched, sizeof pattern);
    if (std::memcmp(&pattern, &out_[i], sizeof pattern) == 0) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "record " << i << " was written";
  }

  RecordBytes current_{3360};
  PsuData out_[64];
};

TEST_F(LmainteGetPsuData, FillsEveryField) {
  ASSERT_EQ(lmainte_get_psu_data(-1, 2, 6, out_), 0);
  for (int n = 0; n < 2; ++n) {
    const PsuData &psu = out_[n];
    const auto number = static_cast<uint32_t>(n);
    EXPECT_EQ(psu.type, 161);
    EXPECT_EQ(psu.number, n);
    EXPECT_EQ(psu.unit_id[0], 0xC0000000u + number);
    EXPECT_EQ(psu.unit_id[1], 0xD0000000u + number);
    EXPECT_EQ(static_cast<uint32_t>(psu.status), kInstalled);
    EXPECT_EQ(static_cast<uint32_t>(psu.mainte_status), kInstalled);
    EXPECT_EQ(name(number, 8), "SUPPLY-" + std::to_string(n));
    EXPECT_EQ(psu.info_byte, 100 + n);
    EXPECT_EQ(psu.flags, 0);
  }
  EXPECT_TRUE(is_untouched(2));
}

TEST_F(LmainteGetPsuData, ReadsTheCurrentRecordThenTheFruRecords) {
  lmainte_get_psu_data(-1, 2, 3, out_);
  EXPECT_EQ(client_calls(),
            (Lines{"open 2", "lock 2", "get 2 current_psu_info", "unlock 2", "close 2", "open 4", "lock 4",
                   "get 4 fru_psu_qe_info_00", "get 4 fru_psu_qe_info_01", "unlock 4", "close 4"}));
}

TEST_F(LmainteGetPsuData, RecordsItsSteps) {
  lmainte_get_psu_data(-1, 2, 3, out_);
  EXPECT_EQ(doubles::trace_of(0x110C0400), (Lines{"100 110C0400", "100 110C0401"}));
  EXPECT_EQ(doubles::trace_of(0x110C0480), (Lines{"100 110C0480", "100 110C0481"}));
  EXPECT_EQ(doubles::trace_of(0x110C0490), (Lines{"100 110C0490", "100 110C0491"}));
  EXPECT_EQ(doubles::trace().front(), "100 110C0400");
  EXPECT_EQ(doubles::trace().back(), "100 110C0401");
}

struct ModelRow {
  int32_t model;
  const char *family;
  const char *name;
  bool has_info;
};

TEST_F(LmainteGetPsuData, EveryModelHasItsFruRecordsAndItsInfoByte) {
  constexpr ModelRow kRows[] = {
      {1, "qb", "MIDRANGE-7", true}, {2, "qb", "MIDRANGE-7", true}, {3, "qe", "SUPPLY-7", false},
      {4, "qe", "SUPPLY-7", false},  {5, "qe", "SUPPLY-7", false},  {6, "qe", "SUPPLY-7", true},
  };
  for (const auto &row : kRows) {
    machine().calls.clear();
    EXPECT_EQ(lmainte_get_psu_data(7, 1, row.model, out_), 0) << row.model;
    EXPECT_EQ(machine().calls_of({"get"}), (Lines{"get 2 current_psu_info", "get 4 " + fru_name(row.family, 7)}))
        << row.model;
    EXPECT_EQ(name(0, std::strlen(row.name)), row.name) << row.model;
    EXPECT_EQ(out_[0].info_byte, row.has_info ? 107 : 255) << row.model;
  }
}

// ---- which power supplies

TEST_F(LmainteGetPsuData, NumberReadsThatOneIntoTheFirstRecord) {
  EXPECT_EQ(lmainte_get_psu_data(3, 9, 3, out_), 0);
  EXPECT_EQ(out_[0].number, 3);
  EXPECT_TRUE(is_untouched(1));
  EXPECT_EQ(machine().calls_of({"get"}), (Lines{"get 2 current_psu_info", "get 4 fru_psu_qe_info_03"}));
}

TEST_F(LmainteGetPsuData, LastEntryOfTheRecordIsNumber59) {
  EXPECT_EQ(lmainte_get_psu_data(59, 1, 5, out_), 0);
  EXPECT_EQ(out_[0].unit_id[0], 0xC0000000u + 59);
  EXPECT_EQ(out_[0].number, 59);
}

TEST_F(LmainteGetPsuData, ReadsAllSixty) {
  EXPECT_EQ(lmainte_get_psu_data(-1, 60, 5, out_), 0);
  for (uint32_t n = 0; n < 60; ++n) EXPECT_EQ(out_[n].unit_id[1], 0xD0000000u + n);
  EXPECT_TRUE(is_untouched(60));
}

TEST_F(LmainteGetPsuData, NumberWithANegativeCountReadsOne) {
  EXPECT_EQ(lmainte_get_psu_data(3, -5, 3, out_), 0);
  EXPECT_EQ(out_[0].number, 3);
}

TEST_F(LmainteGetPsuData, NumberWithoutAnEntryFails) {
  put_fru("qe", 60, "BEYOND");
  for (const int32_t psu : {60, 61, -2, INT32_MIN, INT32_MAX}) {
    EXPECT_EQ(lmainte_get_psu_data(psu, 1, 3, out_), 8) << psu;
    EXPECT_TRUE(is_untouched(0)) << psu;
  }
}

TEST_F(LmainteGetPsuData, MoreThanTheRecordHoldsFailsAfterTheLast) {
  put_fru("qe", 60, "BEYOND");
  EXPECT_EQ(lmainte_get_psu_data(-1, 61, 3, out_), 8);
  EXPECT_EQ(doubles::trace_of(0x110C0490).at(1), "805 110C1491 60");
  EXPECT_EQ(out_[59].number, 59);
  EXPECT_TRUE(is_untouched(60));
}

// ---- arguments

struct ArgumentRow {
  const char *says;
  int32_t count;
  int32_t model;
  bool out;
};

TEST_F(LmainteGetPsuData, RefusesBadArgumentsBeforeAnyDatabase) {
  constexpr ArgumentRow kRows[] = {
      {"count 0", 0, 3, true},           {"no records to fill", 1, 3, false},
      {"model 0", 1, 0, true},           {"model 7", 1, 7, true},
      {"a negative model", 1, -1, true}, {"a model that looks like 3 in its low byte", 1, 259, true},
  };
  for (const auto &row : kRows) {
    machine().start();
    EXPECT_EQ(lmainte_get_psu_data(-1, row.count, row.model, row.out ? out_ : nullptr), 8) << row.says;
    EXPECT_EQ(machine().calls, Lines{}) << row.says;
    EXPECT_EQ(doubles::trace(),
              (Lines{"100 110C0400", "805 110C1401 " + std::to_string(row.count) + " " + std::to_string(row.model),
                     "100 110C0401"}))
        << row.says;
  }
}

TEST_F(LmainteGetPsuData, NegativeCountFailsAfterTheCurrentRecord) {
  EXPECT_EQ(lmainte_get_psu_data(-1, -1, 3, out_), 8);
  EXPECT_EQ(machine().calls_of({"get"}), (Lines{"get 2 current_psu_info"}));
  EXPECT_TRUE(is_untouched(0));
}

// ---- status

struct StatusRow {
  const char *says;
  uint32_t stored;
  uint8_t flags;
  uint32_t status;
};

TEST_F(LmainteGetPsuData, MergesTheFlagByteIntoTheStatus) {
  constexpr StatusRow kRows[] = {
      {"a power supply that is well", 0x80000000, 0x00, 0x80000000},
      {"a faulted one", 0x80000000, 0x20, 0xA0000000},
      {"a degraded one", 0x80000000, 0x10, 0x90000000},
      {"faulted goes before degraded", 0x80000000, 0x30, 0xA0000000},
      {"all flags", 0x80000000, 0xFF, 0xA0000000},
      {"other flags say nothing", 0x80000000, 0xCF, 0x80000000},
      {"bits of the status stay", 0xB0008001, 0x00, 0xB0008001},
      {"the flag joins the bits that are there", 0x90008000, 0x20, 0xB0008000},
      {"one that is not installed", 0x00000000, 0x00, 0x00000000},
      {"flags count for an absent one too", 0x00000000, 0x10, 0x10000000},
      {"all ones", 0xFFFFFFFF, 0x00, 0xFFFFFFFF},
  };
  for (const auto &row : kRows) {
    entry(0, row.stored, row.flags);
    EXPECT_EQ(lmainte_get_psu_data(0, 1, 3, out_), 0) << row.says;
    EXPECT_EQ(status(), row.status) << row.says;
    EXPECT_EQ(out_[0].mainte_status, out_[0].status) << row.says;
    EXPECT_EQ(out_[0].flags, row.flags) << row.says;
  }
}

// ---- names

struct NameRow {
  const char *says;
  uint8_t length;
  size_t copied;
};

TEST_F(LmainteGetPsuData, CopiesTheNameAsLongAsItIs) {
  constexpr NameRow kRows[] = {
      {"no name", 0, 0},
      {"one letter", 1, 1},
      {"seventeen letters", 17, 17},
      {"eighteen letters", 18, 18},
      {"one letter more", 19, 18},
      {"the most that six bits say", 63, 18},
      {"the high bits are not the length's", 0xC5, 5},
      {"no letter, with high bits", 0x40, 0},
  };
  const std::string letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
  for (const auto &row : kRows) {
    put_fru("qe", 0, letters, row.length);
    std::memset(out_, kUntouched, sizeof out_);
    EXPECT_EQ(lmainte_get_psu_data(0, 1, 3, out_), 0) << row.says;
    EXPECT_EQ(name(0, 18), letters.substr(0, row.copied) + std::string(18 - row.copied, kUntouched)) << row.says;
    EXPECT_EQ(out_[0].info_byte, 255) << row.says;
  }
}

TEST_F(LmainteGetPsuData, PaddingAndOtherRecordsStayUntouched) {
  lmainte_get_psu_data(-1, 1, 3, out_);
  EXPECT_TRUE(is_untouched(1));
}

TEST_F(LmainteGetPsuData, AbsentOneNeedsNoFruRecordAndKeepsTheNameUntouched) {
  entry(1, 0, 0);
  machine().records.erase({4, "fru_psu_qe_info_01"});
  EXPECT_EQ(lmainte_get_psu_data(-1, 3, 3, out_), 0);
  EXPECT_EQ(name(1, 18), std::string(18, kUntouched));
  EXPECT_EQ(out_[1].number, 1);
  EXPECT_EQ(status(1), 0u);
  EXPECT_EQ(name(2, 8), "SUPPLY-2");
}

TEST_F(LmainteGetPsuData, AbsentOneKeepsTheNameUntouchedEvenWithAFruRecord) {
  entry(1, 0x7FFFFFFF, 0);
  EXPECT_EQ(lmainte_get_psu_data(1, 1, 3, out_), 0);
  EXPECT_EQ(name(0, 18), std::string(18, kUntouched));
}

TEST_F(LmainteGetPsuData, FruRecordOfAnAbsentOneThatFailsWithABufferIsFreed) {
  entry(0, 0, 0);
  machine().records[{4, "fru_psu_qe_info_00"}] = {doubles::Bytes(320, 1), 3, true};
  EXPECT_EQ(lmainte_get_psu_data(0, 1, 3, out_), 0);
}

// ---- failures

TEST_F(LmainteGetPsuData, MissingFruRecordOfAnInstalledOneFails) {
  machine().records.erase({4, "fru_psu_qe_info_01"});
  EXPECT_EQ(lmainte_get_psu_data(-1, 3, 3, out_), 8);
  EXPECT_EQ(machine().calls_of({"get"}),
            (Lines{"get 2 current_psu_info", "get 4 fru_psu_qe_info_00", "get 4 fru_psu_qe_info_01"}));
  EXPECT_TRUE(is_untouched(0));
  EXPECT_EQ(doubles::trace_of(0x110C0480), (Lines{"100 110C0480", "805 110C1482 0 3", "100 110C0481"}));
  EXPECT_EQ(doubles::trace_of(0x110C0400), (Lines{"100 110C0400", "805 110C1402 0 3", "100 110C0401"}));
}

TEST_F(LmainteGetPsuData, FruRecordOfAnotherSizeFailsEvenForAnAbsentOne) {
  entry(0, 0, 0);
  machine().records[{4, "fru_psu_qe_info_00"}] = {doubles::Bytes(319, 1)};
  EXPECT_EQ(lmainte_get_psu_data(0, 1, 3, out_), 8);
}

TEST_F(LmainteGetPsuData, EmptyFruRecordOfAnInstalledOneFailsAtThatOne) {
  machine().records[{4, "fru_psu_qe_info_01"}] = {doubles::Bytes(320, 1), 0, false};
  EXPECT_EQ(lmainte_get_psu_data(-1, 3, 3, out_), 8);
  EXPECT_EQ(out_[0].number, 0);
  EXPECT_EQ(name(0, 8), "SUPPLY-0");
  EXPECT_TRUE(is_untouched(2));
  EXPECT_EQ(doubles::trace_of(0x110C0490), (Lines{"100 110C0490", "805 110C1492 1", "100 110C0491"}));
}

TEST_F(LmainteGetPsuData, CurrentRecordThatIsMissingFails) {
  machine().records.erase({2, "current_psu_info"});
  EXPECT_EQ(lmainte_get_psu_data(-1, 3, 3, out_), 8);
  EXPECT_EQ(machine().calls_of({"get"}), (Lines{"get 2 current_psu_info"}));
  EXPECT_EQ(doubles::trace_of(0x110C0480), (Lines{"100 110C0480", "805 110C1481", "100 110C0481"}));
  EXPECT_TRUE(is_untouched(0));
}

TEST_F(LmainteGetPsuData, CurrentRecordThatIsEmptyFails) {
  machine().records[{2, "current_psu_info"}] = {doubles::Bytes(3360, 1), 0, false};
  EXPECT_EQ(lmainte_get_psu_data(-1, 3, 3, out_), 8);
  EXPECT_EQ(machine().calls_of({"get"}).size(), 4u) << "the FRU records are read before";
  EXPECT_EQ(doubles::trace_of(0x110C0480), (Lines{"100 110C0480", "805 110C1483", "100 110C0481"}));
  EXPECT_TRUE(is_untouched(0));
}

TEST_F(LmainteGetPsuData, CurrentRecordOfAnotherSizeFails) {
  for (const size_t size : {3359U, 3361U}) {
    machine().records[{2, "current_psu_info"}] = {doubles::Bytes(size, 0)};
    EXPECT_EQ(lmainte_get_psu_data(-1, 3, 3, out_), 8) << size;
  }
}

TEST_F(LmainteGetPsuData, LockedFruDatabaseKeepsTheCurrentOneFromBeingRead) {
  lmainte_scdb_lock(4);
  EXPECT_EQ(lmainte_get_psu_data(-1, 3, 3, out_), 8);
  EXPECT_EQ(machine().calls_of({"get"}), Lines{});
  lmainte_scdb_unlock(4);
}

TEST_F(LmainteGetPsuData, WorksInsideTheCallersOwnSessions) {
  for (const uint32_t id : {2U, 4U}) {
    lmainte_scdb_open(id);
    lmainte_scdb_lock(id);
  }
  EXPECT_EQ(lmainte_get_psu_data(-1, 1, 3, out_), 0);
  EXPECT_EQ(machine().calls_of({"open", "lock", "unlock", "close"}), (Lines{"open 2", "lock 2", "open 4", "lock 4"}));
  for (const uint32_t id : {4U, 2U}) {
    lmainte_scdb_unlock(id);
    lmainte_scdb_close(id);
  }
}

}  // namespace
