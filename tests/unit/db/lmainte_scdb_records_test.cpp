// Reading and writing one record of a unit within the sessions: lmainte_scdb_get, _lget and _put.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "tests/unit/doubles/library_test.h"

namespace {

using doubles::Bytes;
using doubles::Lines;
using doubles::machine;

// A record of unit 7 of a kind.
struct Kind {
  uint32_t db_id;
  int32_t unit_type;
  const char *name;
  int32_t size;
};

constexpr Kind kKinds[] = {
    {1, 16, "setup_cmu_info_07", 256},     {2, 2, "current_panel_info", 64},
    {2, 16, "current_cmu_info_07", 1760},  {2, 32, "current_cpu_module_info_07", 2976},
    {2, 40, "current_dimm_info_07", 1792}, {2, 80, "current_iou_info_07", 2016},
    {2, 128, "current_mgb_info", 160},     {2, 130, "current_mgbr_info", 48},
    {2, 161, "current_psu_info", 3360},    {2, 180, "current_fantray_info", 6912},
    {2, 212, "current_bp32_info", 1008},   {3, 128, "local_mgb_info", 280},
    {3, 130, "local_mgb_info", 280},       {4, 16, "fru_cmu_info_07", 8192},
    {4, 32, "fru_cpu_info_07", 8192},      {4, 40, "fru_dimm_info_007", 256},
    {4, 80, "fru_iou_qe_info_07", 8192},   {4, 128, "fru_emgbu_info_07", 8192},
    {4, 130, "fru_emgbu_info_09", 8192},
};

bool is_kind(uint32_t db_id, int32_t unit_type) {
  return std::ranges::any_of(kKinds,
                             [&](const auto &kind) { return kind.db_id == db_id && kind.unit_type == unit_type; });
}

Bytes counted_bytes(int32_t size) {
  Bytes bytes;
  for (int32_t i = 0; i < size; ++i) bytes.push_back(static_cast<uint8_t>(i * 7 + 1));
  return bytes;
}

// The caller's record pointer.
struct Buffer {
  Buffer() = default;
  Buffer(const Buffer &) = delete;
  Buffer &operator=(const Buffer &) = delete;
  ~Buffer() { release(); }

  void release() {
    free(record);
    record = nullptr;
  }

  Bytes bytes(size_t size) const {
    const auto *first = static_cast<const uint8_t *>(record);
    return record == nullptr ? Bytes{} : Bytes(first, first + size);
  }

  void *record = nullptr;
};

// A database that is open and locked, or only open, for as long as this lives.
class Session {
 public:
  explicit Session(uint32_t db_id, bool locked = true) : db_id_(db_id), locked_(locked) {
    EXPECT_EQ(lmainte_scdb_open(db_id_), 0);
    EXPECT_EQ(locked_ ? lmainte_scdb_lock(db_id_) : 0, 0);
    machine().calls.clear();
    trace_begins_ = doubles::trace().size();
  }
  Session(const Session &) = delete;
  Session &operator=(const Session &) = delete;
  ~Session() {
    EXPECT_EQ(locked_ ? lmainte_scdb_unlock(db_id_) : 0, 0);
    EXPECT_EQ(lmainte_scdb_close(db_id_), 0);
  }

  Lines trace() const {
    const auto all = doubles::trace();
    return {all.begin() + static_cast<ptrdiff_t>(trace_begins_), all.end()};
  }

 private:
  uint32_t db_id_;
  bool locked_;
  size_t trace_begins_ = 0;
};

std::string get_of(const Kind &kind) {
  return "get " + std::to_string(kind.db_id) + " " + kind.name;
}

// ---- which record

class LmainteScdbGet : public doubles::LibraryTest {};

TEST_F(LmainteScdbGet, EveryKindOfRecordHasItsNameAndItsSize) {
  for (const auto &kind : kKinds) {
    SCOPED_TRACE(get_of(kind));
    machine().records[{kind.db_id, kind.name}] = {counted_bytes(kind.size)};
    const Session session(kind.db_id);
    Buffer buffer;
    EXPECT_EQ(lmainte_scdb_get(kind.db_id, 3, kind.unit_type, 7, &buffer.record), 0u);
    EXPECT_EQ(machine().calls, (Lines{get_of(kind)}));
    EXPECT_EQ(buffer.bytes(static_cast<size_t>(kind.size)), counted_bytes(kind.size));
  }
}

TEST_F(LmainteScdbGet, RecordOfAnotherSizeIsNotTaken) {
  for (const auto &kind : kKinds) {
    for (const int32_t size : {kind.size - 1, kind.size + 1, 0, 2 * kind.size}) {
      SCOPED_TRACE(get_of(kind) + " of " + std::to_string(size) + " bytes");
      machine().records[{kind.db_id, kind.name}] = {counted_bytes(size)};
      const Session session(kind.db_id);
      Buffer buffer;
      EXPECT_EQ(lmainte_scdb_get(kind.db_id, 3, kind.unit_type, 7, &buffer.record), 8u);
      EXPECT_EQ(buffer.bytes(static_cast<size_t>(size)), counted_bytes(size)) << "it is the caller's all the same";
    }
  }
}

TEST_F(LmainteScdbGet, OtherCombinationsHaveNoRecord) {
  void *const before = this;
  for (const uint32_t db_id : {0U, 1U, 2U, 3U, 4U, 5U, 6U, 0x80000002U, 0xFFFFFFFFU}) {
    for (const int32_t type : {0,   1,   2,   3,   15,  16,  32,  40,  51,  80,  104, 128, 129,       130,      131,
                               160, 161, 162, 176, 178, 180, 212, 213, 255, 272, -1,  -16, INT32_MAX, INT32_MIN}) {
      if (is_kind(db_id, type)) continue;
      machine().start();
      SCOPED_TRACE("database " + std::to_string(db_id) + ", type " + std::to_string(type));
      void *record = before;
      EXPECT_EQ(lmainte_scdb_get(db_id, 3, type, 0, &record), 8u);
      EXPECT_EQ(lmainte_scdb_lget(db_id, 3, type, 0, &record), 8u);
      EXPECT_EQ(lmainte_scdb_put(db_id, 3, type, 0, before), 8u);
      EXPECT_EQ(record, before);
      EXPECT_EQ(machine().calls, Lines{});
    }
  }
}

struct NumberRow {
  const char *says;
  uint32_t db_id;
  int32_t unit_type;
  uint32_t unit_no;
  const char *name;
};

TEST_F(LmainteScdbGet, NamesHoldTheNumber) {
  constexpr NumberRow kRows[] = {
      {"two digits", 2, 16, 0, "current_cmu_info_00"},
      {"two digits filled", 2, 16, 10, "current_cmu_info_10"},
      {"two digits at the most they hold", 2, 16, 99, "current_cmu_info_99"},
      {"a third digit where it is needed", 4, 32, 100, "fru_cpu_info_100"},
      {"three digits for memory modules' identity", 4, 40, 0, "fru_dimm_info_000"},
      {"three digits filled", 4, 40, 511, "fru_dimm_info_511"},
      {"a fourth digit where it is needed", 4, 40, 1000, "fru_dimm_info_1000"},
      {"two digits for memory modules' state", 2, 40, 7, "current_dimm_info_07"},
      {"units of the first kind by their number", 4, 128, 1, "fru_emgbu_info_01"},
      {"units of the second kind after those of the first", 4, 130, 0, "fru_emgbu_info_02"},
      {"the last unit of the second kind", 4, 130, 1, "fru_emgbu_info_03"},
      {"a number of all ones as -1", 1, 16, 0xFFFFFFFF, "setup_cmu_info_-1"},
      {"all ones plus two as 1", 4, 130, 0xFFFFFFFF, "fru_emgbu_info_01"},
      {"no number of the local unit", 3, 128, 5, "local_mgb_info"},
      {"no number of the panel", 2, 2, 5, "current_panel_info"},
      {"no number of the power supplies", 2, 161, 59, "current_psu_info"},
  };
  for (const auto &row : kRows) {
    const Session session(row.db_id);
    Buffer buffer;
    lmainte_scdb_get(row.db_id, 3, row.unit_type, row.unit_no, &buffer.record);
    EXPECT_EQ(machine().calls, (Lines{"get " + std::to_string(row.db_id) + " " + row.name})) << row.says;
  }
}

TEST_F(LmainteScdbGet, ModelDecidesTheNameOfAnIousIdentity) {
  const std::pair<uint32_t, const char *> rows[] = {
      {0, "qe"}, {1, "qb"}, {2, "qb"}, {3, "qe"},          {4, "qe"},          {5, "qe"},
      {6, "qb"}, {7, "qe"}, {8, "qe"}, {0x80000001, "qe"}, {0xFFFFFFFF, "qe"}, {0x106, "qe"},
  };
  for (const auto &[model, family] : rows) {
    const std::string name = std::string("fru_iou_") + family + "_info_03";
    machine().records[{4, name}] = {Bytes(8192)};
    const Session session(4);
    Buffer buffer;
    EXPECT_EQ(lmainte_scdb_get(4, model, 80, 3, &buffer.record), 0u) << model;
    EXPECT_EQ(machine().calls, (Lines{"get 4 " + name})) << model;
    machine().records.clear();
  }
}

TEST_F(LmainteScdbGet, ModelDecidesNothingElse) {
  for (const auto &kind : kKinds) {
    if (kind.db_id == 4 && kind.unit_type == 80) continue;
    for (const uint32_t model : {0U, 1U, 2U, 4U, 5U, 6U, 7U, 0xFFFFFFFFU}) {
      const Session session(kind.db_id);
      Buffer buffer;
      lmainte_scdb_get(kind.db_id, model, kind.unit_type, 7, &buffer.record);
      EXPECT_EQ(machine().calls, (Lines{get_of(kind)})) << "model " << model;
    }
  }
}

// ---- reading under the caller's lock

TEST_F(LmainteScdbGet, RecordsItsSteps) {
  machine().records[{2, "current_cmu_info_03"}] = {Bytes(1760)};
  const Session session(2);
  Buffer buffer;
  EXPECT_EQ(lmainte_scdb_get(2, 3, 16, 3, &buffer.record), 0u);
  EXPECT_EQ(session.trace(), (Lines{"100 110C8080", "100 110C8070", "100 110C8071", "100 110C8081"}));
}

TEST_F(LmainteScdbGet, RecordsAllFourCoordinatesOfARecordThatDoesNotExist) {
  void *record = nullptr;
  EXPECT_EQ(lmainte_scdb_get(5, 3, 16, 7, &record), 8u);
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C8080", "100 110C8070", "805 110CB071 5 3", "805 110CB072 16 7",
                                     "100 110C8071", "805 110CB081 8", "100 110C8081"}));
}

struct ReadRow {
  const char *says;
  doubles::StoredRecord stored;
  uint32_t result;
  bool hands_over;
  Lines errors;  // of lmainte_scdb_get
};

TEST_F(LmainteScdbGet, BelievesTheClientAndTheSize) {
  const ReadRow rows[] = {
      {"all is well", {Bytes(1760, 1), 0}, 0, true, {}},
      {"nothing is handed over, with the right size", {Bytes(1760, 1), 0, false}, 0, false, {}},
      {"the client fails and hands over the record",
       {Bytes(1760, 1), 77},
       8,
       true,
       {"800A 110CB082 77 2", "805 110CB083 1760 1760"}},
      {"the client fails and hands over nothing",
       {Bytes(0), -5, false},
       8,
       false,
       {"800A 110CB082 -5 2", "805 110CB083 1760 0"}},
      {"the client says 8, as the library does",
       {Bytes(1760), 8, false},
       8,
       false,
       {"800A 110CB082 8 2", "805 110CB083 1760 1760"}},
      {"a byte is missing", {Bytes(1759, 1), 0}, 8, true, {"800A 110CB082 0 2", "805 110CB083 1760 1759"}},
  };
  for (const auto &row : rows) {
    machine().start();
    machine().records[{2, "current_cmu_info_03"}] = row.stored;
    Buffer buffer;
    Lines expected = {"100 110C8080"};
    expected.insert(expected.end(), row.errors.begin(), row.errors.end());
    expected.emplace_back("100 110C8081");
    const Session session(2);
    EXPECT_EQ(lmainte_scdb_get(2, 3, 16, 3, &buffer.record), row.result) << row.says;
    EXPECT_EQ(buffer.record != nullptr, row.hands_over) << row.says;
    EXPECT_EQ(doubles::trace_of(0x110C8080), expected) << row.says;
    EXPECT_EQ(machine().calls.size(), 1u) << row.says;
  }
}

TEST_F(LmainteScdbGet, ClientThatSaysNothingLeavesTheSizeAtZero) {
  machine().fail("get", 1, 0, 3);
  const Session session(4);
  Buffer buffer;
  EXPECT_EQ(lmainte_scdb_get(4, 6, 40, 7, &buffer.record), 8u);
  EXPECT_EQ(doubles::trace_of(0x110C8080),
            (Lines{"100 110C8080", "800A 110CB082 3 4", "805 110CB083 256 0", "100 110C8081"}));
  EXPECT_EQ(buffer.record, nullptr);
}

// ---- reading with a lock of its own

class LmainteScdbLget : public doubles::LibraryTest {
 protected:
  void SetUp() override {
    LibraryTest::SetUp();
    machine().records[{2, "current_cmu_info_03"}] = {counted_bytes(1760)};
  }

  void TearDown() override {
    buffer_.release();
    LibraryTest::TearDown();
  }

  uint32_t lget() { return lmainte_scdb_lget(2, 3, 16, 3, &buffer_.record); }

  Buffer buffer_;
};

TEST_F(LmainteScdbLget, LocksReadsAndUnlocks) {
  const Session session(2, false);
  EXPECT_EQ(lget(), 0u);
  EXPECT_EQ(machine().calls, (Lines{"lock 2", "get 2 current_cmu_info_03", "unlock 2"}));
  EXPECT_EQ(buffer_.bytes(1760), counted_bytes(1760));
}

TEST_F(LmainteScdbLget, RecordsItsSteps) {
  const Session session(2, false);
  lget();
  EXPECT_EQ(session.trace(),
            (Lines{"100 110C8090", "100 110C8070", "100 110C8071", "100 110C8030", "100 110C8050", "100 110C8051",
                   "100 110C8060", "100 110C8061", "100 110C8031", "100 110C8040", "100 110C8050", "100 110C8051",
                   "100 110C8060", "100 110C8061", "100 110C8041", "100 110C8091"}));
}

TEST_F(LmainteScdbLget, EveryKindOfRecordHasItsNameAndItsSize) {
  for (const auto &kind : kKinds) {
    SCOPED_TRACE(get_of(kind));
    machine().records[{kind.db_id, kind.name}] = {counted_bytes(kind.size)};
    const std::string id = std::to_string(kind.db_id);
    const Session session(kind.db_id, false);
    Buffer buffer;
    EXPECT_EQ(lmainte_scdb_lget(kind.db_id, 3, kind.unit_type, 7, &buffer.record), 0u);
    EXPECT_EQ(machine().calls, (Lines{"lock " + id, get_of(kind), "unlock " + id}));
    EXPECT_EQ(buffer.bytes(static_cast<size_t>(kind.size)), counted_bytes(kind.size));
  }
}

TEST_F(LmainteScdbLget, LockOfTheCallerNests) {
  const Session session(2);
  EXPECT_EQ(lget(), 0u);
  EXPECT_EQ(machine().calls, (Lines{"get 2 current_cmu_info_03"}));
}

TEST_F(LmainteScdbLget, RecordThatDoesNotExistIsNotLocked) {
  const Session session(2, false);
  void *record = this;
  EXPECT_EQ(lmainte_scdb_lget(2, 3, 51, 3, &record), 8u);
  EXPECT_EQ(record, this);
  EXPECT_EQ(machine().calls, Lines{});
  EXPECT_EQ(session.trace(), (Lines{"100 110C8090", "100 110C8070", "805 110CB071 2 3", "805 110CB072 51 3",
                                    "100 110C8071", "805 110CB091 8", "100 110C8091"}));
}

TEST_F(LmainteScdbLget, FailedLockMakesNoReadAndNoUnlock) {
  const Session session(2, false);
  machine().fail("lock 2", 1, 0, 5);
  EXPECT_EQ(lget(), 8u);
  EXPECT_EQ(machine().calls, (Lines{"lock 2"}));
  EXPECT_EQ(buffer_.record, nullptr);
  EXPECT_EQ(doubles::trace_of(0x110C8090), (Lines{"100 110C8090", "805 110CB092 -1 2", "100 110C8091"}));
}

TEST_F(LmainteScdbLget, DatabaseBelowALockedOneCannotBeRead) {
  const Session session(2, false);
  lmainte_scdb_lock(4);
  EXPECT_EQ(lget(), 8u);
  EXPECT_EQ(machine().calls, (Lines{"lock 4"}));
  lmainte_scdb_unlock(4);
}

TEST_F(LmainteScdbLget, FailedReadIsUnlocked) {
  const Session session(2, false);
  machine().fail("get 2", 1, 0, 77);
  EXPECT_EQ(lget(), 8u);
  EXPECT_EQ(machine().calls, (Lines{"lock 2", "get 2 current_cmu_info_03", "unlock 2"}));
  EXPECT_EQ(doubles::trace_of(0x110C8090),
            (Lines{"100 110C8090", "800A 110CB093 77 2", "805 110CB094 1760 0", "100 110C8091"}));
}

TEST_F(LmainteScdbLget, RecordOfAnotherSizeIsUnlocked) {
  const Session session(2, false);
  machine().records[{2, "current_cmu_info_03"}] = {Bytes(1761)};
  EXPECT_EQ(lget(), 8u);
  EXPECT_EQ(machine().calls, (Lines{"lock 2", "get 2 current_cmu_info_03", "unlock 2"}));
  EXPECT_EQ(doubles::trace_of(0x110C8090),
            (Lines{"100 110C8090", "800A 110CB093 0 2", "805 110CB094 1760 1761", "100 110C8091"}));
  EXPECT_NE(buffer_.record, nullptr);
}

TEST_F(LmainteScdbLget, FailedUnlockSpoilsTheReadButLeavesTheRecord) {
  const Session session(2, false);
  machine().fail("unlock 2");
  EXPECT_EQ(lget(), 8u);
  EXPECT_EQ(buffer_.bytes(1760), counted_bytes(1760));
  EXPECT_EQ(doubles::trace_of(0x110C8090), (Lines{"100 110C8090", "805 110CB095 -1 2", "100 110C8091"}));
  EXPECT_EQ(lmainte_scdb_unlock(2), 0);
}

TEST_F(LmainteScdbLget, ReadAndUnlockThatBothFailAreBothRecorded) {
  const Session session(2, false);
  machine().fail("get 2", 1, 0, 77);
  machine().fail("unlock 2");
  EXPECT_EQ(lget(), 8u);
  EXPECT_EQ(doubles::trace_of(0x110C8090),
            (Lines{"100 110C8090", "800A 110CB093 77 2", "805 110CB094 1760 0", "805 110CB095 -1 2", "100 110C8091"}));
  EXPECT_EQ(lmainte_scdb_unlock(2), 0);
}

// ---- writing

class LmainteScdbPut : public doubles::LibraryTest {};

TEST_F(LmainteScdbPut, EveryKindOfRecordIsWrittenWithItsNameAndItsSize) {
  for (const auto &kind : kKinds) {
    machine().start();
    const Bytes bytes = counted_bytes(kind.size + 1);
    EXPECT_EQ(lmainte_scdb_put(kind.db_id, 3, kind.unit_type, 7, bytes.data()), 0u) << kind.name;
    const std::string call = "put " + std::to_string(kind.db_id) + " " + kind.name + " " + std::to_string(kind.size);
    EXPECT_EQ(machine().calls, (Lines{call}));
    const Bytes written = machine().records[{kind.db_id, kind.name}].bytes;
    EXPECT_EQ(written, counted_bytes(kind.size)) << kind.name;
  }
}

TEST_F(LmainteScdbPut, ModelDecidesTheNameOfAnIousIdentity) {
  const Bytes bytes(8192);
  for (const uint32_t model : {1U, 2U, 6U, 3U, 0U}) lmainte_scdb_put(4, model, 80, 3, bytes.data());
  EXPECT_EQ(machine().calls,
            (Lines{"put 4 fru_iou_qb_info_03 8192", "put 4 fru_iou_qb_info_03 8192", "put 4 fru_iou_qb_info_03 8192",
                   "put 4 fru_iou_qe_info_03 8192", "put 4 fru_iou_qe_info_03 8192"}));
}

TEST_F(LmainteScdbPut, RecordsItsSteps) {
  const Bytes bytes(256);
  lmainte_scdb_put(1, 3, 16, 3, bytes.data());
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C81D0", "100 110C8070", "100 110C8071", "100 110C81D1"}));
}

TEST_F(LmainteScdbPut, NullRecordIsRefusedAfterTheClientWasCalled) {
  EXPECT_EQ(lmainte_scdb_put(1, 3, 16, 3, nullptr), 8u);
  EXPECT_EQ(machine().calls, (Lines{"put 1 setup_cmu_info_03 256"}));
  EXPECT_EQ(doubles::trace_of(0x110C81D0), (Lines{"100 110C81D0", "800A 110CB1D2 0 1", "100 110C81D1"}));
}

TEST_F(LmainteScdbPut, ClientThatFailsFailsTheWrite) {
  const Bytes bytes(256);
  machine().fail("put 1", 0, 0, -7);
  EXPECT_EQ(lmainte_scdb_put(1, 3, 16, 3, bytes.data()), 8u);
  EXPECT_EQ(lmainte_scdb_put(1, 3, 16, 3, nullptr), 8u);
  EXPECT_EQ(machine().calls.size(), 2u);
  EXPECT_EQ(doubles::trace_of(0x110C81D0), (Lines{"100 110C81D0", "800A 110CB1D2 -7 1", "100 110C81D1", "100 110C81D0",
                                                  "800A 110CB1D2 -7 1", "100 110C81D1"}));
}

TEST_F(LmainteScdbPut, RecordThatDoesNotExistIsNotWritten) {
  const Bytes bytes(256);
  EXPECT_EQ(lmainte_scdb_put(1, 3, 80, 3, bytes.data()), 8u);
  EXPECT_EQ(machine().calls, Lines{});
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C81D0", "100 110C8070", "805 110CB071 1 3", "805 110CB072 80 3",
                                     "100 110C8071", "805 110CB1D1 8", "100 110C81D1"}));
}

TEST_F(LmainteScdbPut, WhatIsWrittenIsRead) {
  const Bytes bytes = counted_bytes(160);
  EXPECT_EQ(lmainte_scdb_put(2, 5, 128, 0, bytes.data()), 0u);
  const Session session(2);
  Buffer buffer;
  EXPECT_EQ(lmainte_scdb_get(2, 5, 128, 1, &buffer.record), 0u);
  EXPECT_EQ(buffer.bytes(160), bytes);
}

}  // namespace
