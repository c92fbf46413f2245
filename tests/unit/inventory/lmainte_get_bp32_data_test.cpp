// The backplane with its DDC units, and the DDC units alone.

#include "tests/unit/inventory/reader_test.h"

namespace {

using doubles::Bytes;
using doubles::client_calls;
using doubles::fetch_of;
using doubles::is_same;
using doubles::kInstalled;
using doubles::Lines;
using doubles::machine;
using doubles::RecordBytes;

Lines all_fetches() {
  return doubles::joined({fetch_of(2, {"current_bp32_info"}), fetch_of(4, {"fru_bpa_info"}),
                          fetch_of(4, {"fru_ddca_info_00", "fru_ddca_info_01"})});
}

// A backplane and two DDC units, all installed.
template <class Record, size_t Size>
class BackplaneTest : public doubles::ReaderTest<Record, Size> {
 protected:
  void SetUp() override {
    doubles::LibraryTest::SetUp();
    put_unit(0, 0xC0000051, kInstalled);
    put_unit(456, 0xC0000000, kInstalled);
    put_unit(496, 0xC0000001, kInstalled);
    put_backplane_name("BACKPLANE", 9);
    put_ddc_name(0, "DDC-ZERO", 8);
    put_ddc_name(1, "DDC-ONE", 7);
  }

  // A unit's words at their offset in the current record: 0 for the backplane, 456 and 496 for the DDC units.
  void put_unit(size_t at, uint32_t id, uint32_t status) {
    current_.word(at, id).word(at + 4, id + 0x10000000).word(at + 8, status);
    machine().records[{2, "current_bp32_info"}] = {current_};
  }
  static void put_backplane_name(const std::string &name, uint8_t length) {
    machine().records[{4, "fru_bpa_info"}] = {RecordBytes(8192).byte(6187, length).text(6188, name)};
  }
  static void put_ddc_name(uint32_t n, const std::string &name, uint8_t length) {
    machine().records[{4, doubles::numbered("fru_ddca_info_", n)}] = {RecordBytes(320).byte(64, length).text(65, name)};
  }

  static void fill(BpUnitData &unit, int32_t type, int32_t number, uint32_t id, const std::string &name) {
    unit.type = type;
    unit.number = number;
    unit.unit_id[0] = id;
    unit.unit_id[1] = id + 0x10000000;
    unit.status = static_cast<int32_t>(kInstalled);
    unit.mainte_status = static_cast<int32_t>(kInstalled);
    name.copy(unit.fru_name, sizeof unit.fru_name);
  }

  RecordBytes current_{1008};
};

struct Bp32ArgumentRow {
  const char *says;
  int32_t count;
  int32_t model;
  bool out;
};

// ---- the backplane

class LmainteGetBp32Data : public BackplaneTest<Bp32Data, 2> {
 protected:
  static Bp32Data expected() {
    auto record = doubles::untouched<Bp32Data>();
    fill(record.bp, 51, 0, 0xC0000051, "BACKPLANE");
    fill(record.ddc[0], 212, 0, 0xC0000000, "DDC-ZERO");
    fill(record.ddc[1], 212, 1, 0xC0000001, "DDC-ONE");
    return record;
  }
};

TEST_F(LmainteGetBp32Data, FillsAllThreeUnits) {
  ASSERT_EQ(lmainte_get_bp32_data(-1, 1, 3, out_), 0);
  EXPECT_TRUE(is_same(expected(), out_[0]));
  EXPECT_TRUE(is_untouched(1));
}

TEST_F(LmainteGetBp32Data, NumberAndCountDoNotMatter) {
  for (const int32_t number : {-1, 0, 1, 77, INT32_MIN, INT32_MAX}) {
    for (const int32_t count : {1, 2, 100, -1, INT32_MIN}) {
      machine().start();
      SetUp();
      wipe();
      EXPECT_EQ(lmainte_get_bp32_data(number, count, 3, out_), 0) << number << " " << count;
      EXPECT_TRUE(is_same(expected(), out_[0])) << number << " " << count;
    }
  }
}

TEST_F(LmainteGetBp32Data, ReadsTheRecordsInOrder) {
  lmainte_get_bp32_data(0, 1, 3, out_);
  EXPECT_EQ(client_calls(), all_fetches());
}

TEST_F(LmainteGetBp32Data, RecordsItsSteps) {
  lmainte_get_bp32_data(0, 1, 3, out_);
  EXPECT_EQ(doubles::trace_of(0x110C8110), (Lines{"100 110C8110", "100 110C8111"}));
  EXPECT_EQ(doubles::trace().front(), "100 110C8110");
  EXPECT_EQ(doubles::trace().back(), "100 110C8111");
}

TEST_F(LmainteGetBp32Data, RefusesBadArgumentsBeforeAnyDatabase) {
  constexpr Bp32ArgumentRow kRows[] = {
      {"count 0", 0, 3, true},     {"no record to fill", 1, 3, false},
      {"qb1", 1, 1, true},         {"qb2", 1, 2, true},
      {"qe2", 1, 4, true},         {"qe3", 1, 5, true},
      {"qa", 1, 6, true},          {"model 0", 1, 0, true},
      {"model 7", 1, 7, true},     {"a negative model", 1, -3, true},
      {"model 259", 1, 259, true},
  };
  for (const auto &row : kRows) {
    machine().start();
    EXPECT_EQ(lmainte_get_bp32_data(0, row.count, row.model, row.out ? out_ : nullptr), 8) << row.says;
    EXPECT_EQ(machine().calls, Lines{}) << row.says;
    EXPECT_EQ(doubles::trace(),
              (Lines{"100 110C8110", "805 110CB111 " + std::to_string(row.count) + " " + std::to_string(row.model),
                     "100 110C8111"}))
        << row.says;
    EXPECT_TRUE(all_untouched()) << row.says;
  }
}

TEST_F(LmainteGetBp32Data, CopiesTheStatusAsStored) {
  for (const uint32_t status : {0x80000000U, 0xA0000000U, 0x90008000U, 0xFFFFFFFFU, 0x7FFFFFFFU, 0U}) {
    put_unit(0, 1, status);
    put_unit(456, 2, status);
    put_unit(496, 3, status);
    ASSERT_EQ(lmainte_get_bp32_data(0, 1, 3, out_), 0);
    for (const auto &unit : {out_[0].bp, out_[0].ddc[0], out_[0].ddc[1]}) {
      EXPECT_EQ(static_cast<uint32_t>(unit.status), status);
      EXPECT_EQ(static_cast<uint32_t>(unit.mainte_status), status);
    }
  }
}

TEST_F(LmainteGetBp32Data, CopiesNamesAsLongAsTheyAre) {
  doubles::expect_names([this](uint8_t length, const std::string &text) {
    put_backplane_name(text, length);
    wipe();
    EXPECT_EQ(lmainte_get_bp32_data(0, 1, 3, out_), 0);
    return std::string(out_[0].bp.fru_name, 20);
  });
  for (uint32_t n = 0; n < 2; ++n) {
    doubles::expect_names([this, n](uint8_t length, const std::string &text) {
      put_ddc_name(n, text, length);
      wipe();
      EXPECT_EQ(lmainte_get_bp32_data(0, 1, 3, out_), 0);
      return std::string(out_[0].ddc[n].fru_name, 20);
    });
  }
}

TEST_F(LmainteGetBp32Data, AbsentUnitsKeepTheirNamesUntouched) {
  const std::string pattern(20, doubles::kUntouched);
  put_unit(0, 1, 0x7FFFFFFF);
  put_unit(456, 2, 0x7FFFFFFF);
  ASSERT_EQ(lmainte_get_bp32_data(0, 1, 3, out_), 0);
  EXPECT_EQ(std::string(out_[0].bp.fru_name, 20), pattern);
  EXPECT_EQ(std::string(out_[0].ddc[0].fru_name, 20), pattern);
  EXPECT_EQ(std::string(out_[0].ddc[1].fru_name, 7), "DDC-ONE");
}

struct Bp32RecordRow {
  uint32_t db_id;
  const char *name;
  size_t size;
  const char *missing;  // error of a record that is missing or of another size
  const char *empty;    // error of one that is empty
  size_t calls;         // of the client's, until it is missing
};

constexpr Bp32RecordRow kBp32Records[] = {
    {2, "current_bp32_info", 1008, "805 110CB112", "805 110CB115", 5},
    {4, "fru_bpa_info", 8192, "805 110CB113", "805 110CB115", 10},
    {4, "fru_ddca_info_00", 320, "805 110CB114", "805 110CB116 0", 15},
    {4, "fru_ddca_info_01", 320, "805 110CB114", "805 110CB116 1", 16},
};

TEST_F(LmainteGetBp32Data, MissingRecordsAndThoseOfAnotherSizeFail) {
  for (const auto &row : kBp32Records) {
    for (const size_t size : {size_t{0}, row.size - 1, row.size + 1}) {
      SetUp();
      if (size == 0)
        machine().records.erase({row.db_id, row.name});
      else
        machine().records[{row.db_id, row.name}] = {Bytes(size)};
      EXPECT_EQ(lmainte_get_bp32_data(0, 1, 3, out_), 8) << row.name;
      EXPECT_EQ(client_calls().size(), row.calls) << row.name;
      EXPECT_EQ(doubles::trace_of(0x110C8110), (Lines{"100 110C8110", row.missing, "100 110C8111"})) << row.name;
      EXPECT_TRUE(all_untouched()) << row.name;
    }
  }
}

TEST_F(LmainteGetBp32Data, EmptyRecordsFail) {
  for (const auto &row : kBp32Records) {
    SetUp();
    machine().records[{row.db_id, row.name}] = {Bytes(row.size), 0, false};
    EXPECT_EQ(lmainte_get_bp32_data(0, 1, 3, out_), 8) << row.name;
    EXPECT_EQ(client_calls(), all_fetches()) << row.name;
    EXPECT_EQ(doubles::trace_of(0x110C8110), (Lines{"100 110C8110", row.empty, "100 110C8111"})) << row.name;
  }
}

TEST_F(LmainteGetBp32Data, EmptyRecordOfTheBackplaneFailsBeforeAnythingIsWritten) {
  for (const size_t which : {0U, 1U}) {
    SetUp();
    machine().records[{kBp32Records[which].db_id, kBp32Records[which].name}] = {Bytes(kBp32Records[which].size), 0,
                                                                                false};
    EXPECT_EQ(lmainte_get_bp32_data(0, 1, 3, out_), 8);
    EXPECT_TRUE(all_untouched());
  }
}

TEST_F(LmainteGetBp32Data, EmptyRecordOfTheSecondDdcUnitLeavesTheUnitsBefore) {
  machine().records[{4, "fru_ddca_info_01"}] = {Bytes(320), 0, false};
  EXPECT_EQ(lmainte_get_bp32_data(0, 1, 3, out_), 8);
  EXPECT_TRUE(is_same(expected().bp, out_[0].bp));
  EXPECT_TRUE(is_same(expected().ddc[0], out_[0].ddc[0]));
  EXPECT_EQ(std::string(out_[0].ddc[1].fru_name, 20), std::string(20, doubles::kUntouched));
}

TEST_F(LmainteGetBp32Data, AbsentDdcUnitNeedsNoContentOfItsFruRecord) {
  put_unit(496, 3, 0);
  machine().records[{4, "fru_ddca_info_01"}] = {Bytes(320), 0, false};
  EXPECT_EQ(lmainte_get_bp32_data(0, 1, 3, out_), 0);
}

TEST_F(LmainteGetBp32Data, EveryCallOfTheClientCounts) {
  doubles::expect_every_call_to_count(
      all_fetches(), [this] { return lmainte_get_bp32_data(0, 1, 3, out_); }, [this] { return all_untouched(); });
}

TEST_F(LmainteGetBp32Data, WorksInsideTheCallersOwnSessions) {
  doubles::within_sessions({2, 4}, [this] { EXPECT_EQ(lmainte_get_bp32_data(0, 1, 3, out_), 0); });
  EXPECT_TRUE(is_same(expected(), out_[0]));
}

// ---- the DDC units alone

class LmainteGetDdcaData : public BackplaneTest<BpUnitData, 3> {
 protected:
  // A whole record, with zero bytes behind the name.
  static BpUnitData expected(int32_t n) {
    BpUnitData unit = {};
    fill(unit, 212, n, 0xC0000000 + static_cast<uint32_t>(n), n == 0 ? "DDC-ZERO" : "DDC-ONE");
    return unit;
  }
};

struct DdcRow {
  const char *says;
  int32_t ddc;
  int32_t count;
  std::vector<int32_t> units;
};

TEST_F(LmainteGetDdcaData, ReadsWholeUnits) {
  const DdcRow rows[] = {
      {"both", -1, 2, {0, 1}},
      {"the first one", -1, 1, {0}},
      {"unit 0", 0, 1, {0}},
      {"unit 0 with a count of 2", 0, 2, {0}},
      {"unit 1", 1, 1, {1}},
      {"unit 1 with a count of 2", 1, 2, {1}},
      {"unit 1 with a high count", 1, INT32_MAX, {1}},
  };
  for (const auto &row : rows) {
    SetUp();
    wipe();
    ASSERT_EQ(lmainte_get_ddca_data(row.ddc, row.count, 3, out_), 0) << row.says;
    for (size_t i = 0; i < row.units.size(); ++i)
      EXPECT_TRUE(is_same(expected(row.units[i]), out_[i])) << row.says << ", record " << i;
    EXPECT_TRUE(is_untouched(row.units.size())) << row.says;
    EXPECT_EQ(client_calls(), all_fetches()) << row.says;
  }
}

TEST_F(LmainteGetDdcaData, RecordsItsSteps) {
  lmainte_get_ddca_data(-1, 2, 3, out_);
  EXPECT_EQ(doubles::trace_of(0x110C8120), (Lines{"100 110C8120", "100 110C8121"}));
  EXPECT_EQ(doubles::trace_of(0x110C8110), (Lines{"100 110C8110", "100 110C8111"}));
  EXPECT_EQ(doubles::trace().front(), "100 110C8120");
  EXPECT_EQ(doubles::trace().back(), "100 110C8121");
}

TEST_F(LmainteGetDdcaData, AbsentUnitHasANameOfZeroBytes) {
  put_unit(496, 0xC0000001, 0);
  ASSERT_EQ(lmainte_get_ddca_data(1, 1, 3, out_), 0);
  EXPECT_EQ(std::string(out_[0].fru_name, 20), std::string(20, '\0'));
  EXPECT_EQ(out_[0].status, 0);
  EXPECT_EQ(out_[0].unit_id[1], 0xD0000001u);
}

TEST_F(LmainteGetDdcaData, NamesEndInZeroBytes) {
  doubles::expect_names(
      [this](uint8_t length, const std::string &text) {
        put_ddc_name(1, text, length);
        wipe();
        EXPECT_EQ(lmainte_get_ddca_data(1, 1, 3, out_), 0);
        return std::string(out_[0].fru_name, 20);
      },
      '\0');
}

TEST_F(LmainteGetDdcaData, RefusesBadArgumentsBeforeAnyDatabase) {
  constexpr Bp32ArgumentRow kRows[] = {
      {"count 0", 0, 3, true},
      {"a negative count", -1, 3, true},
      {"no record to fill", 1, 3, false},
      {"qb1", 1, 1, true},
      {"qb2", 1, 2, true},
      {"qe2", 1, 4, true},
      {"qe3", 1, 5, true},
      {"qa", 1, 6, true},
      {"model 0", 1, 0, true},
      {"model 7", 1, 7, true},
  };
  for (const int32_t ddc : {-1, 0, 1}) {
    for (const auto &row : kRows) {
      machine().start();
      EXPECT_EQ(lmainte_get_ddca_data(ddc, row.count, row.model, row.out ? out_ : nullptr), 8) << row.says;
      EXPECT_EQ(machine().calls, Lines{}) << row.says;
      EXPECT_EQ(doubles::trace(),
                (Lines{"100 110C8120", "805 110CB121 " + std::to_string(row.count) + " " + std::to_string(row.model),
                       "100 110C8121"}))
          << row.says;
      EXPECT_TRUE(all_untouched()) << row.says;
    }
  }
}

TEST_F(LmainteGetDdcaData, RefusesUnitsThatDoNotExistBeforeAnyDatabase) {
  const std::pair<int32_t, int32_t> rows[] = {{2, 1},         {3, 2},         {-2, 1},        {-1, 3},
                                              {INT32_MAX, 1}, {INT32_MIN, 1}, {-1, INT32_MAX}};
  for (const auto &[ddc, count] : rows) {
    machine().start();
    EXPECT_EQ(lmainte_get_ddca_data(ddc, count, 3, out_), 8) << ddc << " " << count;
    EXPECT_EQ(machine().calls, Lines{});
    EXPECT_EQ(
        doubles::trace(),
        (Lines{"100 110C8120", "805 110CB122 " + std::to_string(ddc) + " " + std::to_string(count), "100 110C8121"}));
    EXPECT_TRUE(all_untouched());
  }
}

TEST_F(LmainteGetDdcaData, WhateverFailsTheBackplaneFailsHereAndWritesNothing) {
  for (const auto &row : kBp32Records) {
    for (const bool is_empty : {false, true}) {
      SetUp();
      if (is_empty)
        machine().records[{row.db_id, row.name}] = {Bytes(row.size), 0, false};
      else
        machine().records.erase({row.db_id, row.name});
      EXPECT_EQ(lmainte_get_ddca_data(-1, 2, 3, out_), 8) << row.name;
      EXPECT_EQ(doubles::trace_of(0x110C8120), (Lines{"100 110C8120", "805 110CB123 8", "100 110C8121"})) << row.name;
      EXPECT_TRUE(all_untouched()) << row.name;
    }
  }
}

TEST_F(LmainteGetDdcaData, EveryCallOfTheClientCounts) {
  doubles::expect_every_call_to_count(
      all_fetches(), [this] { return lmainte_get_ddca_data(-1, 2, 3, out_); }, [this] { return all_untouched(); });
}

TEST_F(LmainteGetDdcaData, WorksInsideTheCallersOwnSessions) {
  doubles::within_sessions({2, 4}, [this] { EXPECT_EQ(lmainte_get_ddca_data(1, 1, 3, out_), 0); });
  EXPECT_TRUE(is_same(expected(1), out_[0]));
}

}  // namespace
