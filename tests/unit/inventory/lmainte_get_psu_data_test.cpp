#include "tests/unit/inventory/reader_test.h"

namespace {

using doubles::client_calls;
using doubles::fetch_of;
using doubles::is_same;
using doubles::joined;
using doubles::kInstalled;
using doubles::kUntouched;
using doubles::Lines;
using doubles::machine;
using doubles::numbered;
using doubles::RecordBytes;

// An inventory of sixty power supplies, all installed and well, on a model.
class LmainteGetPsuData : public doubles::ReaderTest<PsuData, 64> {
 protected:
  void SetUp() override {
    LibraryTest::SetUp();
    for (uint32_t n = 0; n < 60; ++n) {
      entry(n, kInstalled, 0);
      put_fru("qe", n, "SUPPLY-" + std::to_string(n));
      put_fru("qb", n, "MIDRANGE-" + std::to_string(n));
    }
  }

  void entry(uint32_t n, uint32_t status, uint8_t flags) {
    const size_t at = size_t{56} * n;
    current_.word(at, 0xC0000000 + n).word(at + 4, 0xD0000000 + n).word(at + 8, status);
    current_.byte(at + 20, flags).byte(at + 24, static_cast<uint8_t>(100 + n));
    machine().records[{2, "current_psu_info"}] = {current_};
  }

  static std::string fru_name(const std::string &family, uint32_t n) {
    return numbered(("fru_psu_" + family + "_info_").c_str(), n);
  }
  static void put_fru(const char *family, uint32_t n, const std::string &name) {
    put_fru(family, n, name, static_cast<uint8_t>(name.size()));
  }
  static void put_fru(const char *family, uint32_t n, const std::string &name, uint8_t length) {
    machine().records[{4, fru_name(family, n)}] = {RecordBytes(320).byte(79, length).text(80, name)};
  }

  // The record of power supply n, all of it.
  static PsuData expected(int32_t model, uint32_t n) {
    const bool is_mid_range = model == 1 || model == 2;
    auto psu = doubles::untouched<PsuData>();
    psu.type = 161;
    psu.number = static_cast<int32_t>(n);
    psu.unit_id[0] = 0xC0000000 + n;
    psu.unit_id[1] = 0xD0000000 + n;
    psu.status = static_cast<int32_t>(kInstalled);
    psu.mainte_status = static_cast<int32_t>(kInstalled);
    const std::string name = (is_mid_range ? "MIDRANGE-" : "SUPPLY-") + std::to_string(n);
    name.copy(psu.fru_name, sizeof psu.fru_name);
    psu.info_byte = static_cast<uint8_t>(model >= 3 && model <= 5 ? 255 : 100 + n);
    psu.flags = 0;
    return psu;
  }

  // The calls that read power supplies from the first one on.
  static Lines reads(const char *family, uint32_t first, uint32_t count) {
    Lines names;
    for (uint32_t i = 0; i < count; ++i) names.push_back(fru_name(family, first + i));
    return joined({fetch_of(2, {"current_psu_info"}), fetch_of(4, names)});
  }

  uint32_t status(size_t i = 0) { return static_cast<uint32_t>(out_[i].status); }
  std::string name(size_t i, size_t size) { return {out_[i].fru_name, size}; }

  RecordBytes current_{3360};
};

struct ModelRow {
  int32_t model;
  uint32_t count;
  const char *family;
};

constexpr ModelRow kModels[] = {{1, 2, "qb"}, {2, 4, "qb"}, {3, 18, "qe"}, {4, 30, "qe"}, {5, 60, "qe"}, {6, 2, "qe"}};

TEST_F(LmainteGetPsuData, FillsEveryFieldOfEveryPowerSupplyOfEveryModel) {
  for (const auto &row : kModels) {
    wipe();
    machine().calls.clear();
    ASSERT_EQ(lmainte_get_psu_data(-1, static_cast<int32_t>(row.count), row.model, out_), 0) << row.model;
    for (uint32_t n = 0; n < row.count; ++n)
      EXPECT_TRUE(is_same(expected(row.model, n), out_[n])) << "model " << row.model << ", power supply " << n;
    EXPECT_TRUE(is_untouched(row.count)) << row.model;
    EXPECT_EQ(client_calls(), reads(row.family, 0, row.count)) << row.model;
  }
}

TEST_F(LmainteGetPsuData, RecordsItsSteps) {
  lmainte_get_psu_data(-1, 2, 3, out_);
  EXPECT_EQ(doubles::trace_of(0x110C0400), (Lines{"100 110C0400", "100 110C0401"}));
  EXPECT_EQ(doubles::trace_of(0x110C0480), (Lines{"100 110C0480", "100 110C0481"}));
  EXPECT_EQ(doubles::trace_of(0x110C0490), (Lines{"100 110C0490", "100 110C0491"}));
  EXPECT_EQ(doubles::trace().front(), "100 110C0400");
  EXPECT_EQ(doubles::trace().back(), "100 110C0401");
}

// ---- which power supplies

TEST_F(LmainteGetPsuData, NumberReadsThatOneIntoTheFirstRecord) {
  for (const auto &row : kModels) {
    for (const int32_t count : {9, 1, -5, INT32_MAX, INT32_MIN}) {
      wipe();
      machine().calls.clear();
      EXPECT_EQ(lmainte_get_psu_data(3, count, row.model, out_), 0) << count;
      EXPECT_TRUE(is_same(expected(row.model, 3), out_[0])) << row.model;
      EXPECT_TRUE(is_untouched(1)) << row.model;
      EXPECT_EQ(client_calls(), reads(row.family, 3, 1)) << row.model;
    }
  }
}

TEST_F(LmainteGetPsuData, LastEntryOfTheRecordIsNumber59) {
  EXPECT_EQ(lmainte_get_psu_data(59, 1, 5, out_), 0);
  EXPECT_TRUE(is_same(expected(5, 59), out_[0]));
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

TEST_F(LmainteGetPsuData, RefusesBadArgumentsBeforeAnyDatabase) {
  expect_refused(doubles::kRefusedArguments, lmainte_get_psu_data, {"100 110C0400", "805 110C1401", "100 110C0401"});
}

TEST_F(LmainteGetPsuData, NegativeCountFailsAfterTheCurrentRecord) {
  EXPECT_EQ(lmainte_get_psu_data(-1, -1, 3, out_), 8);
  EXPECT_EQ(machine().calls_of({"get"}), (Lines{"get 2 current_psu_info"}));
  EXPECT_TRUE(is_untouched(0));
}

// ---- status

TEST_F(LmainteGetPsuData, MergesTheFlagByteIntoTheStatus) {
  for (const auto &row : doubles::kMergedStates) {
    entry(0, row.stored, row.flags);
    EXPECT_EQ(lmainte_get_psu_data(0, 1, 3, out_), 0) << row.says;
    EXPECT_EQ(status(), row.status) << row.says;
    EXPECT_EQ(out_[0].mainte_status, out_[0].status) << row.says;
    EXPECT_EQ(out_[0].flags, row.flags) << row.says;
  }
}

// ---- names

TEST_F(LmainteGetPsuData, CopiesTheNameAsLongAsItIs) {
  for (const int32_t model : {1, 3, 6}) {
    doubles::expect_names([&](uint8_t length, const std::string &text) {
      put_fru(model == 1 ? "qb" : "qe", 0, text, length);
      wipe();
      EXPECT_EQ(lmainte_get_psu_data(0, 1, model, out_), 0);
      EXPECT_EQ(out_[0].info_byte, model == 3 ? 255 : 100) << "what stands behind the name";
      return name(0, 18);
    });
  }
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

TEST_F(LmainteGetPsuData, CurrentRecordThatIsEmptyExcusesNoMissingFruRecord) {
  machine().records[{2, "current_psu_info"}] = {doubles::Bytes(3360, 1), 0, false};
  machine().records.erase({4, "fru_psu_qe_info_00"});
  EXPECT_EQ(lmainte_get_psu_data(-1, 3, 3, out_), 8);
  EXPECT_EQ(doubles::trace_of(0x110C0480), (Lines{"100 110C0480", "805 110C1482 0 3", "100 110C0481"}));
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

TEST_F(LmainteGetPsuData, EveryCallOfTheClientCounts) {
  for (const auto &row : {kModels[0], kModels[2]}) {
    doubles::expect_every_call_to_count(
        reads(row.family, 0, 2), [&] { return lmainte_get_psu_data(-1, 2, row.model, out_); },
        [this] { return all_untouched(); });
  }
}

TEST_F(LmainteGetPsuData, WorksInsideTheCallersOwnSessions) {
  doubles::within_sessions({2, 4}, [this] { EXPECT_EQ(lmainte_get_psu_data(-1, 1, 3, out_), 0); });
  EXPECT_TRUE(is_same(expected(3, 0), out_[0]));
}

}  // namespace
