// The units of the service processor itself: by kind, by type, all of a model and in pairs.

#include "tests/unit/inventory/reader_test.h"

namespace {

using doubles::Bytes;
using doubles::client_calls;
using doubles::in_a_process_of_its_own;
using doubles::is_same;
using doubles::joined;
using doubles::kInstalled;
using doubles::Lines;
using doubles::machine;
using doubles::numbered;
using doubles::RecordBytes;

struct Kind {
  int32_t type;
  const char *record;
  size_t size;
  size_t entry_size;
  uint32_t first_identity;
};

constexpr Kind kEmgbu = {128, "current_mgb_info", 160, 80, 0};
constexpr Kind kEmgbr = {130, "current_mgbr_info", 48, 24, 2};

// Units 0 and 1 of both kinds, all installed and well; the process runs on unit 1.
class EmgbTest : public doubles::ReaderTest<EmgbUnitData, 5> {
 protected:
  void SetUp() override {
    LibraryTest::SetUp();
    wipe();
    for (uint32_t n = 0; n < 2; ++n) {
      put_status(kEmgbu, n, kInstalled);
      put_status(kEmgbr, n, kInstalled);
      put_name(kEmgbu, n, "EMGBU-" + std::to_string(n));
      put_name(kEmgbr, n, "EMGBR-" + std::to_string(n));
    }
    run_on(1);
  }

  RecordBytes &current(const Kind &kind) { return kind.type == 128 ? emgbu_ : emgbr_; }

  void put_status(const Kind &kind, uint32_t n, uint32_t status) {
    const size_t at = kind.entry_size * n;
    const uint32_t id = static_cast<uint32_t>(kind.type) << 24 | n;
    current(kind).word(at, id).word(at + 4, id + 0x8000).word(at + 8, status);
    machine().records[{2, kind.record}] = {current(kind)};
  }
  static std::string identity(const Kind &kind, uint32_t n) {
    return numbered("fru_emgbu_info_", kind.first_identity + n);
  }
  static void put_name(const Kind &kind, uint32_t n, const std::string &name) {
    put_name(kind, n, name, static_cast<uint8_t>(name.size()));
  }
  static void put_name(const Kind &kind, uint32_t n, const std::string &name, uint8_t length) {
    machine().records[{4, identity(kind, n)}] = {RecordBytes(8192).byte(6187, length).text(6188, name)};
  }

  // Every word of the local record tells which one it is, but for the byte with the number.
  static void run_on(uint8_t number) {
    RecordBytes local(280);
    for (uint32_t n = 0; n < 70; ++n) local.word(size_t{4} * n, 0x90000000 + n);
    machine().records[{3, "local_mgb_info"}] = {local.byte(20, number)};
  }

  static EmgbUnitData expected(const Kind &kind, uint32_t n, uint32_t local_number = 1,
                               EmgbUnitData unit = doubles::untouched<EmgbUnitData>()) {
    const bool is_own = n == local_number;
    const uint32_t id = static_cast<uint32_t>(kind.type) << 24 | n;
    unit.type = kind.type;
    unit.number = static_cast<int32_t>(n);
    unit.unit_id[0] = id;
    unit.unit_id[1] = id + 0x8000;
    unit.fault_flags = 0;
    unit.status = static_cast<int32_t>(kInstalled);
    unit.local_number = local_number;
    if (kind.type == 128) {
      unit.local_word = is_own ? 0x90000000 : 0x90000001;
      unit.role_flag = is_own ? 0 : 0x80000000;
    } else {
      unit.local_word = is_own ? 0x90000003 : 0x90000004;
      unit.role_flag = is_own ? 0x40000000 : 0x20000000;
    }
    const std::string name = (kind.type == 128 ? "EMGBU-" : "EMGBR-") + std::to_string(n);
    name.copy(unit.name, sizeof unit.name);
    return unit;
  }
  // A whole record, with zero bytes behind the name.
  static EmgbUnitData whole(const Kind &kind, uint32_t n) { return expected(kind, n, 1, EmgbUnitData{}); }

  int32_t get(const Kind &kind, int32_t unit, int32_t count, int32_t model) {
    return kind.type == 128 ? lmainte_get_emgbu_data(unit, count, model, out_)
                            : lmainte_get_emgbr_data(unit, count, model, out_);
  }

  static Lines gets(const Kind &kind, const std::vector<uint32_t> &units) {
    Lines lines = {std::string("get 2 ") + kind.record};
    for (const uint32_t n : units) lines.push_back("get 4 " + identity(kind, n));
    lines.emplace_back("get 3 local_mgb_info");
    return lines;
  }
  static Lines within_locks(const Lines &calls) {
    return joined({{"open 2", "open 3", "open 4", "lock 2", "lock 3", "lock 4"},
                   calls,
                   {"unlock 4", "unlock 3", "unlock 2", "close 4", "close 3", "close 2"}});
  }
  static uint32_t entry_of(const Kind &kind) { return kind.type == 128 ? 0x110C8210 : 0x110C8220; }

  RecordBytes emgbu_{160};
  RecordBytes emgbr_{48};
};

// ---- one kind

class LmainteGetEmgbuData : public EmgbTest {};

TEST_F(LmainteGetEmgbuData, FillsEveryFieldOfEveryUnitOfEveryModel) {
  for (int32_t model = 1; model <= 6; ++model) {
    const bool is_high_end = model >= 3 && model <= 5;
    wipe();
    ASSERT_EQ(lmainte_get_emgbu_data(-1, is_high_end ? 2 : 1, model, out_), 0);
    EXPECT_TRUE(is_same(expected(kEmgbu, 0), out_[0])) << model;
    EXPECT_TRUE(is_high_end ? is_same(expected(kEmgbu, 1), out_[1]) : is_untouched(1)) << model;
    EXPECT_TRUE(is_untouched(2)) << model;
  }
}

TEST_F(LmainteGetEmgbuData, SecondKindIsTheLargestModelsOwn) {
  ASSERT_EQ(lmainte_get_emgbr_data(-1, 2, 5, out_), 0);
  EXPECT_TRUE(is_same(expected(kEmgbr, 0), out_[0]));
  EXPECT_TRUE(is_same(expected(kEmgbr, 1), out_[1]));
  EXPECT_TRUE(is_untouched(2));
}

TEST_F(LmainteGetEmgbuData, ReadsCurrentThenIdentitiesThenLocal) {
  for (const auto &kind : {kEmgbu, kEmgbr}) {
    machine().calls.clear();
    get(kind, -1, 2, 5);
    EXPECT_EQ(client_calls(), within_locks(gets(kind, {0, 1}))) << kind.record;
  }
}

TEST_F(LmainteGetEmgbuData, NumberReadsThatUnitIntoTheFirstRecord) {
  for (const auto &kind : {kEmgbu, kEmgbr}) {
    for (uint32_t n = 0; n < 2; ++n) {
      for (const int32_t count : {1, 2, INT32_MAX}) {
        SetUp();
        ASSERT_EQ(get(kind, static_cast<int32_t>(n), count, 5), 0);
        EXPECT_TRUE(is_same(expected(kind, n), out_[0]));
        EXPECT_TRUE(is_untouched(1));
        EXPECT_EQ(client_calls(), within_locks(gets(kind, {n})));
      }
    }
  }
}

TEST_F(LmainteGetEmgbuData, ExitCarriesTheResult) {
  for (const auto &kind : {kEmgbu, kEmgbr}) {
    SetUp();
    char text[32];
    std::snprintf(text, sizeof text, "100 %08X", entry_of(kind));
    const std::string entry = text;
    std::snprintf(text, sizeof text, "100 %08X", entry_of(kind) + 1);
    const std::string exit = text;
    get(kind, -1, 2, 5);
    EXPECT_EQ(doubles::trace_of(entry_of(kind)), (Lines{entry, exit + " 0"}));
    EXPECT_EQ(doubles::trace().front(), entry);
    EXPECT_EQ(doubles::trace().back(), exit + " 0");
    get(kind, -1, 0, 5);
    EXPECT_EQ(doubles::trace().back(), exit + " 8");
    machine().records.clear();
    get(kind, -1, 1, 5);
    EXPECT_EQ(doubles::trace().back(), exit + " 8");
  }
}

struct EmgbuArgumentRow {
  const char *says;
  int32_t unit;
  int32_t count;
  int32_t model;
  bool out;
};

TEST_F(LmainteGetEmgbuData, RefusesBadArgumentsBeforeAnyDatabase) {
  constexpr EmgbuArgumentRow kRows[] = {
      {"count 0", -1, 0, 5, true},
      {"count 0 with a number", 1, 0, 5, true},
      {"a negative count", -1, -1, 5, true},
      {"a negative count with a number", 1, -1, 5, true},
      {"no records to fill", -1, 2, 5, false},
      {"model 0", -1, 1, 0, true},
      {"model 7", -1, 1, 7, true},
      {"a negative model", -1, 1, -5, true},
      {"a model that looks like 5 in its low byte", -1, 1, 261, true},
  };
  for (const auto &kind : {kEmgbu, kEmgbr}) {
    for (const auto &row : kRows) {
      SetUp();
      EmgbUnitData *out = row.out ? out_ : nullptr;
      const int32_t result = kind.type == 128 ? lmainte_get_emgbu_data(row.unit, row.count, row.model, out)
                                              : lmainte_get_emgbr_data(row.unit, row.count, row.model, out);
      EXPECT_EQ(result, 8) << row.says;
      EXPECT_EQ(machine().calls, Lines{}) << row.says;
      EXPECT_EQ(doubles::trace().size(), 3u) << row.says;
      EXPECT_EQ(doubles::trace().at(1).substr(12), " " + std::to_string(row.count) + " " + std::to_string(row.model))
          << row.says;
      EXPECT_TRUE(all_untouched()) << row.says;
    }
  }
}

TEST_F(LmainteGetEmgbuData, SecondKindIsRefusedOnOtherModelsBeforeAnyDatabase) {
  for (const int32_t model : {1, 2, 3, 4, 6}) {
    machine().start();
    EXPECT_EQ(lmainte_get_emgbr_data(-1, 1, model, out_), 8) << model;
    EXPECT_EQ(lmainte_get_emgbr_data(0, 1, model, out_), 8) << model;
    EXPECT_EQ(machine().calls, Lines{}) << model;
    EXPECT_TRUE(all_untouched()) << model;
  }
}

TEST_F(LmainteGetEmgbuData, UnitsThatDoNotExistFail) {
  for (const auto &kind : {kEmgbu, kEmgbr}) {
    for (const int32_t unit : {2, 3, -2, INT32_MAX, INT32_MIN}) {
      SetUp();
      put_name(kind, static_cast<uint32_t>(unit), "BEYOND");
      EXPECT_EQ(get(kind, unit, 1, 5), 8) << unit;
      EXPECT_EQ(doubles::trace_of(0x110C8230).at(1), "805 110CB232 " + std::to_string(unit));
      EXPECT_TRUE(all_untouched()) << unit;
    }
    SetUp();
    put_name(kind, 2, "BEYOND");
    EXPECT_EQ(get(kind, -1, 3, 5), 8);
    EXPECT_EQ(out_[1].number, 1);
    EXPECT_TRUE(is_untouched(2));
  }
}

// ---- what the local unit says

struct RoleRow {
  const char *says;
  const Kind &kind;
  uint8_t local_number;
  uint32_t status;
  uint32_t local_word;  // of unit 0
  uint32_t role_flag;
};

TEST_F(LmainteGetEmgbuData, LocalRecordTellsTheRole) {
  const RoleRow rows[] = {
      {"its own unit of the first kind", kEmgbu, 0, 0x80000000, 0x90000000, 0},
      {"its own unit, not installed", kEmgbu, 0, 0x00000000, 0x90000000, 0},
      {"another unit of the first kind", kEmgbu, 1, 0x80000000, 0x90000001, 0x80000000},
      {"another unit, with other bits", kEmgbu, 1, 0xFFFFFFFF, 0x90000001, 0x80000000},
      {"another unit, not installed", kEmgbu, 1, 0x7FFFFFFF, 0x90000001, 0},
      {"the own number of the second kind", kEmgbr, 0, 0x80000000, 0x90000003, 0x40000000},
      {"the own number, not installed", kEmgbr, 0, 0x7FFFFFFF, 0x90000003, 0},
      {"another number of the second kind", kEmgbr, 1, 0x80000000, 0x90000004, 0x20000000},
      {"another number, not installed", kEmgbr, 1, 0x7FFFFFFF, 0x90000004, 0},
      {"a number that no unit has", kEmgbr, 255, 0x80000000, 0x90000004, 0x20000000},
      {"a number that no unit of the first kind has", kEmgbu, 255, 0x80000000, 0x90000001, 0x80000000},
  };
  for (const auto &row : rows) {
    run_on(row.local_number);
    put_status(row.kind, 0, row.status);
    ASSERT_EQ(get(row.kind, 0, 1, 5), 0) << row.says;
    EXPECT_EQ(out_[0].local_word, row.local_word) << row.says;
    EXPECT_EQ(out_[0].role_flag, row.role_flag) << row.says;
    EXPECT_EQ(out_[0].local_number, row.local_number) << row.says;
  }
}

TEST_F(LmainteGetEmgbuData, ProcessOnUnitOneSeesUnitZeroAsTheOther) {
  ASSERT_EQ(lmainte_get_emgbu_data(-1, 2, 4, out_), 0);
  EXPECT_EQ(out_[0].role_flag, 0x80000000u);
  EXPECT_EQ(out_[1].role_flag, 0u);
  EXPECT_EQ(out_[0].local_number, 1u);
  EXPECT_EQ(out_[1].local_number, 1u);
}

struct FaultRow {
  const char *says;
  uint32_t status;
  uint32_t flags;
};

TEST_F(LmainteGetEmgbuData, StatusTellsTheFaults) {
  constexpr FaultRow kRows[] = {
      {"well", 0x80000000, 0},
      {"faulted", 0xA0000000, 0x10000},
      {"degraded", 0x90000000, 0x8000},
      {"both", 0xB0000000, 0x18000},
      {"other bits", 0xCFFFFFFF, 0},
      {"faulted, not installed", 0x20000000, 0x10000},
      {"degraded, not installed", 0x10000000, 0x8000},
      {"nothing", 0, 0},
  };
  for (const auto &kind : {kEmgbu, kEmgbr}) {
    for (const auto &row : kRows) {
      put_status(kind, 1, row.status);
      ASSERT_EQ(get(kind, 1, 1, 5), 0) << row.says;
      EXPECT_EQ(static_cast<uint32_t>(out_[0].status), row.status) << row.says;
      EXPECT_EQ(out_[0].fault_flags, row.flags) << row.says;
    }
  }
}

TEST_F(LmainteGetEmgbuData, CopiesTheNameAsLongAsItIsInstalledOrNot) {
  for (const auto &kind : {kEmgbu, kEmgbr}) {
    for (const uint32_t status : {kInstalled, 0U}) {
      put_status(kind, 1, status);
      doubles::expect_names([&](uint8_t length, const std::string &text) {
        put_name(kind, 1, text, length);
        wipe();
        EXPECT_EQ(get(kind, 1, 1, 5), 0);
        return std::string(out_[0].name, 20);
      });
    }
  }
}

// ---- failures

struct EmgbuRecordRow {
  uint32_t db_id;
  std::string name;
  size_t size;
  size_t gets;        // up to and with the one that fails
  std::string error;  // of its reader
};

TEST_F(LmainteGetEmgbuData, EveryRecordMustBeThereAndHaveItsSize) {
  for (const auto &kind : {kEmgbu, kEmgbr}) {
    const std::string type = std::to_string(kind.type);
    const EmgbuRecordRow rows[] = {{2, kind.record, kind.size, 1, "805 110CB231 8 " + type},
                                   {4, identity(kind, 0), 8192, 2, "805 110CB233 8 0"},
                                   {4, identity(kind, 1), 8192, 3, "805 110CB233 8 1"},
                                   {3, "local_mgb_info", 280, 4, "805 110CB241 8 " + type}};
    for (const auto &row : rows) {
      const doubles::StoredRecord bad[] = {{Bytes(row.size), 3, false},
                                           {Bytes(row.size), 3, true},
                                           {Bytes(row.size - 1)},
                                           {Bytes(row.size + 1)},
                                           {Bytes(row.size), 0, false}};
      for (const auto &stored : bad) {
        SetUp();
        machine().records[{row.db_id, row.name}] = stored;
        auto calls = gets(kind, {0, 1});
        calls.resize(row.gets);
        EXPECT_EQ(get(kind, -1, 2, 5), 8) << row.name;
        EXPECT_EQ(client_calls(), within_locks(calls)) << row.name;
        const Lines trace = doubles::trace();
        EXPECT_EQ(std::count(trace.begin(), trace.end(), row.error), 1) << row.name;
        EXPECT_EQ(machine().left_behind(), Lines{}) << row.name;
        EXPECT_TRUE(is_untouched(2)) << row.name;
      }
    }
  }
}

TEST_F(LmainteGetEmgbuData, UnitsBeforeTheMissingOneStayFilledWithoutWhatTheLocalUnitSays) {
  for (const auto &kind : {kEmgbu, kEmgbr}) {
    SetUp();
    machine().records.erase({4, identity(kind, 1)});
    EXPECT_EQ(get(kind, -1, 2, 5), 8);
    auto unit = expected(kind, 0);
    const auto pattern = doubles::untouched<EmgbUnitData>();
    unit.local_word = pattern.local_word;
    unit.fault_flags = pattern.fault_flags;
    unit.role_flag = pattern.role_flag;
    unit.local_number = pattern.local_number;
    EXPECT_TRUE(is_same(unit, out_[0])) << kind.record;
    EXPECT_TRUE(is_untouched(1)) << kind.record;
  }
}

struct UnitSessionRow {
  const char *failing;
  const char *error;
  Lines calls;
};

std::vector<UnitSessionRow> unit_session_rows() {
  const Lines opens = {"open 2", "open 3", "open 4"};
  const Lines closes = {"close 4", "close 3", "close 2"};
  return {
      {"open 2", "805 110CB212 -1 2", {"open 2"}},
      {"open 3", "805 110CB212 -1 3", {"open 2", "open 3", "close 2"}},
      {"open 4", "805 110CB212 -1 4", joined({opens, {"close 3", "close 2"}})},
      {"lock 2", "805 110CB213 -1 2", joined({opens, {"lock 2"}, closes})},
      {"lock 3", "805 110CB213 -1 3", joined({opens, {"lock 2", "lock 3", "unlock 2"}, closes})},
      {"lock 4", "805 110CB213 -1 4", joined({opens, {"lock 2", "lock 3", "lock 4", "unlock 3", "unlock 2"}, closes})},
  };
}

TEST_F(LmainteGetEmgbuData, FailedOpenOrLockUndoesWhatWasTaken) {
  for (const auto &row : unit_session_rows()) {
    SetUp();
    machine().fail(row.failing, 1, 0, 77);
    EXPECT_EQ(lmainte_get_emgbu_data(-1, 1, 3, out_), 8) << row.failing;
    EXPECT_EQ(client_calls(), row.calls) << row.failing;
    EXPECT_EQ(doubles::trace_of(0x110C8210), (Lines{"100 110C8210", row.error, "100 110C8211 8"})) << row.failing;
    EXPECT_EQ(machine().left_behind(), Lines{}) << row.failing;
    EXPECT_TRUE(all_untouched()) << row.failing;
  }
}

// What cannot be given back stays with the process, so each case has one of its own.
TEST_F(LmainteGetEmgbuData, FailedReleaseSpoilsTheReadAndLetsTheOthersClose) {
  for (const char *id : {"2", "3", "4"}) {
    in_a_process_of_its_own([this, id] {
      SetUp();
      machine().fail(std::string("close ") + id);
      EXPECT_EQ(lmainte_get_emgbu_data(-1, 1, 3, out_), 8) << id;
      EXPECT_EQ(client_calls(), within_locks(gets(kEmgbu, {0}))) << id;
      EXPECT_EQ(machine().left_behind(), (Lines{std::string("database ") + id + " open"}));
      EXPECT_TRUE(is_same(expected(kEmgbu, 0), out_[0])) << id;
    });
  }
  in_a_process_of_its_own([this] {
    SetUp();
    machine().fail("unlock 4");
    EXPECT_EQ(lmainte_get_emgbu_data(-1, 1, 3, out_), 8);
    EXPECT_EQ(machine().calls_of({"unlock", "close"}), (Lines{"unlock 4", "close 4", "close 3", "close 2"}));
  });
}

TEST_F(LmainteGetEmgbuData, WorksInsideTheCallersOwnSessions) {
  doubles::within_sessions({2, 3, 4}, [this] { EXPECT_EQ(lmainte_get_emgbu_data(-1, 2, 3, out_), 0); });
  EXPECT_TRUE(is_same(expected(kEmgbu, 1), out_[1]));
}

// ---- by type

class LmainteGetEmgbData : public EmgbTest {};

TEST_F(LmainteGetEmgbData, TypeChoosesTheKind) {
  for (const auto &kind : {kEmgbu, kEmgbr}) {
    SetUp();
    EXPECT_EQ(lmainte_get_emgb_data(kind.type, -1, 2, 5, out_), 0);
    EXPECT_TRUE(is_same(expected(kind, 0), out_[0]));
    EXPECT_TRUE(is_same(expected(kind, 1), out_[1]));
    EXPECT_TRUE(is_untouched(2));
    wipe();
    EXPECT_EQ(lmainte_get_emgb_data(kind.type, 1, 2, 5, out_), 0);
    EXPECT_TRUE(is_same(expected(kind, 1), out_[0]));
    EXPECT_TRUE(is_untouched(1));
  }
}

TEST_F(LmainteGetEmgbData, RecordsItsSteps) {
  lmainte_get_emgb_data(128, -1, 1, 1, out_);
  EXPECT_EQ(doubles::trace_of(0x110C8220), (Lines{"100 110C8228", "100 110C8229"}));
  EXPECT_EQ(doubles::trace_of(0x110C8210), (Lines{"100 110C8210", "100 110C8211 0"}));
  EXPECT_EQ(doubles::trace().front(), "100 110C8228");
  EXPECT_EQ(doubles::trace().back(), "100 110C8229");
  machine().start();
  SetUp();
  lmainte_get_emgb_data(130, -1, 1, 5, out_);
  EXPECT_EQ(doubles::trace_of(0x110C8220), (Lines{"100 110C8228", "100 110C8220", "100 110C8221 0", "100 110C8229"}));
}

TEST_F(LmainteGetEmgbData, OtherTypesAreRefusedWithoutReading) {
  for (const int32_t type : {129, 0, 131, -1, 128 + 256, 2, 161}) {
    machine().start();
    EXPECT_EQ(lmainte_get_emgb_data(type, -1, 1, 5, out_), 8) << type;
    EXPECT_EQ(machine().calls, Lines{}) << type;
    EXPECT_EQ(doubles::trace(), (Lines{"100 110C8228", "805 110CB229 " + std::to_string(type), "100 110C8229"}));
    EXPECT_TRUE(all_untouched()) << type;
  }
}

TEST_F(LmainteGetEmgbData, FailsWithItsReader) {
  EXPECT_EQ(lmainte_get_emgb_data(130, -1, 1, 4, out_), 8);
  EXPECT_EQ(lmainte_get_emgb_data(128, -1, 0, 4, out_), 8);
  EXPECT_EQ(lmainte_get_emgb_data(128, -1, 1, 4, nullptr), 8);
  EXPECT_EQ(lmainte_get_emgb_data(128, -1, 1, 7, out_), 8);
  EXPECT_EQ(machine().calls, Lines{});
  EXPECT_EQ(doubles::trace_of(0x110C8220).at(4), "805 110CB22A 130 8");
  EXPECT_EQ(doubles::trace_of(0x110C8220).at(7), "805 110CB22A 128 8");
  EXPECT_TRUE(all_untouched());
}

// ---- all of a model

class LmainteGetEmgbDataAll : public EmgbTest {};

TEST_F(LmainteGetEmgbDataAll, ReadsEveryUnitOfEveryModel) {
  for (int32_t model = 1; model <= 6; ++model) {
    SetUp();
    std::vector<EmgbUnitData> units = {expected(kEmgbu, 0)};
    Lines calls = gets(kEmgbu, {0});
    if (model >= 3 && model <= 5) {
      units.push_back(expected(kEmgbu, 1));
      calls = gets(kEmgbu, {0, 1});
    }
    if (model == 5) {
      units.push_back(expected(kEmgbr, 0));
      units.push_back(expected(kEmgbr, 1));
      calls = joined({calls, gets(kEmgbr, {0, 1})});
    }
    ASSERT_EQ(lmainte_get_emgb_data_all(model, out_), 0) << model;
    for (size_t i = 0; i < units.size(); ++i) EXPECT_TRUE(is_same(units[i], out_[i])) << model << ", record " << i;
    EXPECT_TRUE(is_untouched(units.size())) << model;
    EXPECT_EQ(client_calls(), within_locks(calls)) << "one bracket around both kinds on model " << model;
  }
}

TEST_F(LmainteGetEmgbDataAll, RecordsItsSteps) {
  lmainte_get_emgb_data_all(5, out_);
  EXPECT_EQ(doubles::trace_of(0x110C82E0), (Lines{"100 110C82E0", "100 110C82E1"}));
  EXPECT_EQ(doubles::trace_of(0x110C8210), (Lines{"100 110C8210", "100 110C8211 0"}));
  EXPECT_EQ(doubles::trace_of(0x110C8220), (Lines{"100 110C8220", "100 110C8221 0"}));
  EXPECT_EQ(doubles::trace().front(), "100 110C82E0");
  EXPECT_EQ(doubles::trace().back(), "100 110C82E1");
}

TEST_F(LmainteGetEmgbDataAll, RefusesNullBeforeAnyDatabase) {
  EXPECT_EQ(lmainte_get_emgb_data_all(5, nullptr), 8);
  EXPECT_EQ(machine().calls, Lines{});
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C82E0", "805 110CB2E1", "100 110C82E1"}));
}

TEST_F(LmainteGetEmgbDataAll, UnknownModelIsRefusedByItsReader) {
  for (const int32_t model : {0, 7, -1, 261}) {
    SetUp();
    EXPECT_EQ(lmainte_get_emgb_data_all(model, out_), 8) << model;
    EXPECT_EQ(client_calls(), within_locks({})) << model;
    EXPECT_EQ(doubles::trace_of(0x110C82E0), (Lines{"100 110C82E0", "805 110CB2E4 8", "100 110C82E1"}));
    EXPECT_EQ(doubles::trace_of(0x110C8210),
              (Lines{"100 110C8210", "805 110CB211 2 " + std::to_string(model), "100 110C8211 8"}));
    EXPECT_TRUE(all_untouched()) << model;
  }
}

TEST_F(LmainteGetEmgbDataAll, SecondKindThatFailsLeavesTheFirst) {
  machine().records.erase({2, "current_mgbr_info"});
  EXPECT_EQ(lmainte_get_emgb_data_all(5, out_), 8);
  EXPECT_EQ(client_calls(), within_locks(joined({gets(kEmgbu, {0, 1}), {"get 2 current_mgbr_info"}})));
  EXPECT_EQ(doubles::trace_of(0x110C82E0), (Lines{"100 110C82E0", "805 110CB2E5 8", "100 110C82E1"}));
  EXPECT_TRUE(is_same(expected(kEmgbu, 1), out_[1]));
  EXPECT_TRUE(is_untouched(2));
}

TEST_F(LmainteGetEmgbDataAll, FirstKindThatFailsStopsTheRead) {
  machine().records.erase({2, "current_mgb_info"});
  EXPECT_EQ(lmainte_get_emgb_data_all(5, out_), 8);
  EXPECT_EQ(client_calls(), within_locks({"get 2 current_mgb_info"}));
  EXPECT_TRUE(all_untouched());
}

TEST_F(LmainteGetEmgbDataAll, FailedLockUndoesWhatWasTaken) {
  machine().fail("lock 3", 1, 0, 77);
  EXPECT_EQ(lmainte_get_emgb_data_all(5, out_), 8);
  EXPECT_EQ(client_calls(),
            (Lines{"open 2", "open 3", "open 4", "lock 2", "lock 3", "unlock 2", "close 4", "close 3", "close 2"}));
  EXPECT_EQ(doubles::trace_of(0x110C82E0), (Lines{"100 110C82E0", "805 110CB2E3 -1 3", "100 110C82E1"}));
}

// ---- pairs

class LmainteGetEmgbDataPair : public EmgbTest {
 protected:
  void expect_units(const std::vector<EmgbUnitData> &units) {
    for (size_t i = 0; i < units.size(); ++i) EXPECT_TRUE(is_same(units[i], out_[i])) << "record " << i;
    EXPECT_TRUE(is_untouched(units.size()));
  }
};

TEST_F(LmainteGetEmgbDataPair, AllUnitsOfTheLargestModelAlternate) {
  ASSERT_EQ(lmainte_get_emgb_data_pair(-1, 5, out_), 0);
  expect_units({whole(kEmgbu, 0), whole(kEmgbr, 0), whole(kEmgbu, 1), whole(kEmgbr, 1)});
}

TEST_F(LmainteGetEmgbDataPair, NumberGivesBothOfTheLargestModel) {
  for (uint32_t n = 0; n < 2; ++n) {
    SetUp();
    ASSERT_EQ(lmainte_get_emgb_data_pair(static_cast<int32_t>(n), 5, out_), 0);
    expect_units({whole(kEmgbu, n), whole(kEmgbr, n)});
  }
}

TEST_F(LmainteGetEmgbDataPair, OtherHighEndModelsHaveTheFirstKind) {
  for (const int32_t model : {3, 4}) {
    SetUp();
    ASSERT_EQ(lmainte_get_emgb_data_pair(-1, model, out_), 0);
    expect_units({whole(kEmgbu, 0), whole(kEmgbu, 1)});
    for (uint32_t n = 0; n < 2; ++n) {
      SetUp();
      ASSERT_EQ(lmainte_get_emgb_data_pair(static_cast<int32_t>(n), model, out_), 0);
      expect_units({whole(kEmgbu, n)});
    }
  }
}

TEST_F(LmainteGetEmgbDataPair, UnitThatDoesNotExistIsSkipped) {
  for (const int32_t model : {3, 4, 5}) {
    for (const int32_t unit : {2, 5, -2, 257, INT32_MAX, INT32_MIN}) {
      SetUp();
      EXPECT_EQ(lmainte_get_emgb_data_pair(unit, model, out_), 0) << unit;
      EXPECT_TRUE(all_untouched()) << unit;
    }
  }
}

TEST_F(LmainteGetEmgbDataPair, EntryAndMidRangeModelsHaveNoPairs) {
  for (const int32_t model : {1, 2, 6}) {
    machine().start();
    EXPECT_EQ(lmainte_get_emgb_data_pair(-1, model, out_), 8) << model;
    EXPECT_EQ(lmainte_get_emgb_data_pair(0, model, out_), 8) << model;
    EXPECT_EQ(machine().calls, Lines{}) << model;
    EXPECT_EQ(doubles::trace().at(1), "805 110CB2E8 " + std::to_string(model));
    EXPECT_TRUE(all_untouched()) << model;
  }
}

TEST_F(LmainteGetEmgbDataPair, RefusesNullBeforeAnything) {
  EXPECT_EQ(lmainte_get_emgb_data_pair(-1, 5, nullptr), 8);
  EXPECT_EQ(machine().calls, Lines{});
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C82E0", "805 110CB2E1", "100 110C82E1"}));
}

TEST_F(LmainteGetEmgbDataPair, RecordsItsSteps) {
  lmainte_get_emgb_data_pair(-1, 5, out_);
  EXPECT_EQ(doubles::trace_of(0x110C82E0), (Lines{"100 110C82E0", "100 110C82E0", "100 110C82E1", "100 110C82E1"}));
  EXPECT_EQ(doubles::trace().front(), "100 110C82E0");
  EXPECT_EQ(doubles::trace().back(), "100 110C82E1");
  EXPECT_EQ(machine().calls.front(), "calloc");
}

TEST_F(LmainteGetEmgbDataPair, WithoutMemoryFailsBeforeAnyDatabase) {
  machine().fail("calloc", 1, ENOMEM);
  EXPECT_EQ(lmainte_get_emgb_data_pair(-1, 5, out_), 8);
  EXPECT_EQ(machine().calls, (Lines{"calloc"}));
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C82E0", "800A 110CB2E9 " + std::to_string(ENOMEM), "100 110C82E1"}));
}

TEST_F(LmainteGetEmgbDataPair, ReadThatFailsWritesNothing) {
  for (const char *name : {"current_mgb_info", "current_mgbr_info"}) {
    SetUp();
    machine().records.erase({2, name});
    EXPECT_EQ(lmainte_get_emgb_data_pair(-1, 5, out_), 8) << name;
    EXPECT_EQ(doubles::trace_of(0x110C82E0).at(4), "805 110CB2EA 8") << name;
    EXPECT_TRUE(all_untouched()) << name;
  }
}

TEST_F(LmainteGetEmgbDataPair, UnknownModelFails) {
  for (const int32_t model : {0, 7, -1}) {
    SetUp();
    EXPECT_EQ(lmainte_get_emgb_data_pair(-1, model, out_), 8) << model;
    EXPECT_TRUE(all_untouched()) << model;
  }
}

}  // namespace
