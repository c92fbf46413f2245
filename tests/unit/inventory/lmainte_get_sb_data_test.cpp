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

// The memory modules in the order of the operator's list.
constexpr uint32_t kListed[] = {17, 19, 16, 18, 1, 3,  0, 2,  21, 23, 20, 22, 5,  7,  4,  6,
                                25, 27, 24, 26, 9, 11, 8, 10, 29, 31, 28, 30, 13, 15, 12, 14};

// The quarter of the board that holds a memory module, by its number.
constexpr uint32_t kQuarters[] = {0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3,
                                  0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3};

const char *family_of(int32_t model) {
  return model >= 3 && model <= 5 ? "fru_iou_qe_info_" : "fru_iou_qb_info_";
}

// Identifying words and names that tell kind, board and unit.
uint32_t id_of(uint32_t kind, uint32_t board, uint32_t unit = 0) {
  return kind << 24 | board << 16 | unit;
}
std::string name_of(const char *kind, uint32_t board, uint32_t unit = 0) {
  return std::string(kind) + std::to_string(board) + "/" + std::to_string(unit);
}

// One board as the database has it. All is installed and well until a test says otherwise.
struct Board {
  RecordBytes setup{256}, cmu{1760}, cpum{2976}, dimm{1792}, iou{2016};
};

class LmainteGetSbData : public doubles::ReaderTest<SbData, 3> {
 protected:
  void SetUp() override {
    LibraryTest::SetUp();
    wipe();
    for (uint32_t n : {0U, 1U, 3U, 15U}) put_board(n, 0);
  }

  // The entries of the two kinds of modules in their current records.
  static size_t cpum_at(uint32_t k) { return size_t{744} * k; }
  static size_t dimm_at(uint32_t d) { return size_t{56} * d; }

  void put_board(uint32_t n, uint32_t xsb_mode) {
    Board &board = boards_[n];
    board = {};
    board.setup.word(0, id_of(0xA0, n)).word(4, id_of(0xA1, n));
    put_entry(board.cmu, 0, id_of(0xB0, n));
    board.cmu.word(24, id_of(0xB6, n)).word(28, id_of(0xB7, n)).word(36, xsb_mode).word(44, id_of(0xBB, n));
    put_entry(board.iou, 0, id_of(0xE0, n));
    for (uint32_t k = 0; k < 4; ++k) put_entry(board.cpum, cpum_at(k), id_of(0xC0, n, k));
    for (uint32_t d = 0; d < 32; ++d) put_entry(board.dimm, dimm_at(d), id_of(0xD0, n, d));
    put_identities(n);
    store(n);
  }
  static void put_entry(RecordBytes &record, size_t at, uint32_t id) {
    record.word(at, id).word(at + 4, id + 0x8000).word(at + 8, kInstalled);
  }
  static void put_identities(uint32_t n) {
    put_name(numbered("fru_cmu_info_", n), name_of("CMU", n));
    for (const char *family : {"fru_iou_qb_info_", "fru_iou_qe_info_"})
      put_name(numbered(family, n), name_of("IOU", n));
    for (uint32_t k = 0; k < 4; ++k) put_name(numbered("fru_cpu_info_", 4 * n + k), name_of("CPU", n, k));
    for (uint32_t d = 0; d < 32; ++d) {
      machine().records[{4, numbered("fru_dimm_info_", 32 * n + d, 3)}] = {
          RecordBytes(256).text(94, "(" + dimm_identity(n, d) + ")")};
    }
  }
  static std::string dimm_identity(uint32_t n, uint32_t d) {
    return {static_cast<char>('a' + n), static_cast<char>('0' + d / 10), static_cast<char>('0' + d % 10), '\xFE'};
  }
  static void put_name(const std::string &record, const std::string &name) {
    put_name(record, name, static_cast<uint8_t>(name.size()));
  }
  static void put_name(const std::string &record, const std::string &name, uint8_t length) {
    machine().records[{4, record}] = {RecordBytes(8192).byte(6187, length).text(6188, name)};
  }

  void store(uint32_t n) {
    const Board &board = boards_[n];
    machine().records[{1, numbered("setup_cmu_info_", n)}] = {board.setup};
    machine().records[{2, numbered("current_cmu_info_", n)}] = {board.cmu};
    machine().records[{2, numbered("current_cpu_module_info_", n)}] = {board.cpum};
    machine().records[{2, numbered("current_dimm_info_", n)}] = {board.dimm};
    machine().records[{2, numbered("current_iou_info_", n)}] = {board.iou};
  }

  // ---- what the reader makes of it

  static void expect_module(UnitData &unit, int32_t type, uint32_t number, uint32_t id, const std::string &name,
                            uint32_t xsb) {
    unit.type = type;
    unit.number = static_cast<int32_t>(number);
    unit.unit_id[0] = id;
    unit.unit_id[1] = id + 0x8000;
    unit.status = static_cast<int32_t>(kInstalled);
    unit.mainte_status = static_cast<int32_t>(kInstalled);
    name.copy(unit.fru_name, sizeof unit.fru_name);
    unit.xsb = static_cast<int32_t>(xsb);
  }

  static CmuData expected_cmu(uint32_t n, uint32_t xsb_mode) {
    const bool is_one = xsb_mode == 1;
    auto cmu = doubles::untouched<CmuData>();
    cmu.type = 16;
    cmu.number = static_cast<int32_t>(n);
    cmu.unit_id[0] = id_of(0xB0, n);
    cmu.unit_id[1] = id_of(0xB0, n) + 0x8000;
    cmu.status = static_cast<int32_t>(kInstalled);
    cmu.mainte_status = static_cast<int32_t>(kInstalled);
    cmu.parts_status = kInstalled;
    cmu.cur_info_6 = id_of(0xB6, n);
    cmu.cur_info_7 = id_of(0xB7, n);
    cmu.setup_info_0 = id_of(0xA0, n);
    cmu.setup_info_1 = id_of(0xA1, n);
    cmu.xsb_mode = static_cast<int32_t>(xsb_mode);
    cmu.cur_info_11 = id_of(0xBB, n);
    for (uint32_t k = 0; k < 4; ++k) {
      expect_module(cmu.cpum[k], 32, k, id_of(0xC0, n, k), name_of("CPU", n, k), 4 * n + (is_one ? 0 : k));
      cmu.xsb[k] = static_cast<int32_t>(4 * n + (is_one ? 0 : k));
    }
    for (uint32_t i = 0; i < 32; ++i) {
      const uint32_t d = kListed[i];
      expect_module(cmu.dimm[i], 40, d, id_of(0xD0, n, d), dimm_identity(n, d), 4 * n + (is_one ? 0 : kQuarters[d]));
    }
    name_of("CMU", n).copy(cmu.fru_name, sizeof cmu.fru_name);
    return cmu;
  }

  static IouData expected_iou(uint32_t n, uint32_t xsb_mode) {
    auto iou = doubles::untouched<IouData>();
    iou.type = 80;
    iou.number = static_cast<int32_t>(n);
    iou.unit_id[0] = id_of(0xE0, n);
    iou.unit_id[1] = id_of(0xE0, n) + 0x8000;
    iou.status = static_cast<int32_t>(kInstalled);
    iou.mainte_status = 0x80000000;
    iou.parts_status = static_cast<int32_t>(kInstalled);
    name_of("IOU", n).copy(iou.fru_name, sizeof iou.fru_name);
    for (uint32_t k = 0; k < 4; ++k) iou.xsb[k] = static_cast<int32_t>(4 * n + (xsb_mode == 1 ? 0 : k));
    return iou;
  }

  ::testing::AssertionResult is_board(uint32_t n, uint32_t xsb_mode, const SbData &out) {
    if (auto same = is_same(expected_cmu(n, xsb_mode), out.cmu); !same) return same << ", of CMU " << n;
    if (auto same = is_same(expected_iou(n, xsb_mode), out.iou); !same) return same << ", of IOU " << n;
    return ::testing::AssertionSuccess();
  }

  // ---- what it asks of the client

  static Lines gets(uint32_t db_id, const char *stem, uint32_t first, uint32_t count, int digits = 2) {
    Lines lines;
    for (uint32_t i = 0; i < count; ++i)
      lines.push_back("get " + std::to_string(db_id) + " " + numbered(stem, first + i, digits));
    return lines;
  }
  static Lines cmu_gets(uint32_t n) {
    Lines dimms;
    for (const uint32_t d : kListed) dimms.push_back("get 4 " + numbered("fru_dimm_info_", 32 * n + d, 3));
    return joined({gets(1, "setup_cmu_info_", n, 1), gets(2, "current_cmu_info_", n, 1), gets(4, "fru_cmu_info_", n, 1),
                   gets(2, "current_cmu_info_", n, 1), gets(2, "current_cpu_module_info_", n, 1),
                   gets(4, "fru_cpu_info_", 4 * n, 4), gets(2, "current_cmu_info_", n, 1),
                   gets(2, "current_dimm_info_", n, 1), dimms});
  }
  static Lines iou_gets(uint32_t n, int32_t model) {
    return joined(
        {gets(2, "current_cmu_info_", n, 1), gets(2, "current_iou_info_", n, 1), gets(4, family_of(model), n, 1)});
  }
  static Lines cmu_calls(uint32_t n) {
    return joined({{"lock 1", "lock 2", "lock 4"}, cmu_gets(n), {"unlock 4", "unlock 2", "unlock 1"}});
  }
  static Lines iou_calls(uint32_t n, int32_t model) {
    return joined({{"lock 2", "lock 4"}, iou_gets(n, model), {"unlock 4", "unlock 2"}});
  }
  static Lines within_opens(const Lines &calls) {
    return joined({{"open 1", "open 2", "open 4"}, calls, {"close 4", "close 2", "close 1"}});
  }

  std::map<uint32_t, Board> boards_;
};

// ---- what is read

TEST_F(LmainteGetSbData, FillsEveryFieldOnEveryModel) {
  for (int32_t model = 1; model <= 6; ++model) {
    SetUp();
    ASSERT_EQ(lmainte_get_sb_data(-1, 2, model, out_), 0);
    EXPECT_TRUE(is_board(0, 0, out_[0])) << model;
    EXPECT_TRUE(is_board(1, 0, out_[1])) << model;
    EXPECT_TRUE(is_untouched(2)) << model;
  }
}

TEST_F(LmainteGetSbData, NumberReadsThatBoardIntoTheFirstRecord) {
  for (const int32_t count : {16, 1, INT32_MAX}) {
    SetUp();
    ASSERT_EQ(lmainte_get_sb_data(3, count, 5, out_), 0);
    EXPECT_TRUE(is_board(3, 0, out_[0]));
    EXPECT_TRUE(is_untouched(1));
    EXPECT_EQ(client_calls(), within_opens(joined({cmu_calls(3), iou_calls(3, 5)})));
  }
}

TEST_F(LmainteGetSbData, ReadsTheLastBoardOfTheLargestModel) {
  ASSERT_EQ(lmainte_get_sb_data(15, 1, 5, out_), 0);
  EXPECT_TRUE(is_board(15, 0, out_[0]));
  EXPECT_EQ(machine().calls_of({"get"}).at(8), "get 4 fru_cpu_info_63");
  EXPECT_EQ(machine().calls_of({"get"}).at(11), "get 4 fru_dimm_info_497");
}

TEST_F(LmainteGetSbData, ReadsAllCmusBeforeTheFirstIou) {
  for (int32_t model = 1; model <= 6; ++model) {
    SetUp();
    lmainte_get_sb_data(-1, 2, model, out_);
    EXPECT_EQ(client_calls(),
              within_opens(joined({cmu_calls(0), cmu_calls(1), iou_calls(0, model), iou_calls(1, model)})))
        << model;
  }
}

TEST_F(LmainteGetSbData, RecordsItsSteps) {
  lmainte_get_sb_data(-1, 1, 3, out_);
  EXPECT_EQ(doubles::trace_of(0x110C0030), (Lines{"100 110C0030", "100 110C0031"}));
  for (const uint32_t entry : {0x110C0040U, 0x110C0050U, 0x110C80A0U, 0x110C80B0U})
    EXPECT_EQ(doubles::trace_of(entry).size(), 2u) << std::hex << entry;
  EXPECT_EQ(doubles::trace().front(), "100 110C0030");
  EXPECT_EQ(doubles::trace().back(), "100 110C0031");
}

TEST_F(LmainteGetSbData, ModeOneMakesTheBoardOneExtendedBoard) {
  for (const uint32_t mode : {1U, 0U, 2U, 4U, 0x101U, 0xFFFFFFFFU, 0x01000000U}) {
    SetUp();
    put_board(3, mode);
    ASSERT_EQ(lmainte_get_sb_data(3, 1, 5, out_), 0);
    EXPECT_TRUE(is_board(3, mode, out_[0])) << mode;
  }
}

// ---- arguments

struct BoardArgumentRow {
  const char *says;
  int32_t sb;
  int32_t count;
  int32_t model;
  bool out;
  const char *error;
};

TEST_F(LmainteGetSbData, RefusesBadArgumentsBeforeAnyDatabase) {
  constexpr BoardArgumentRow kRows[] = {
      {"count 0", -1, 0, 3, true, "805 110C1035 0"},
      {"count 0 with a number", 3, 0, 3, true, "805 110C1035 0"},
      {"a negative count", -1, -1, 3, true, "805 110C1035 -1"},
      {"a negative count with a number", 3, -1, 3, true, "805 110C1035 -1"},
      {"no records to fill", -1, 16, 3, false, "805 110C1035 16"},
      {"count 0 before the model", -1, 0, 7, true, "805 110C1035 0"},
      {"model 0", -1, 1, 0, true, "805 110C1036 0"},
      {"model 7", -1, 1, 7, true, "805 110C1036 7"},
      {"a negative model", -1, 1, -3, true, "805 110C1036 -3"},
      {"a model that looks like 3 in its low byte", 0, 1, 259, true, "805 110C1036 259"},
  };
  for (const auto &row : kRows) {
    machine().start();
    EXPECT_EQ(lmainte_get_sb_data(row.sb, row.count, row.model, row.out ? out_ : nullptr), 8) << row.says;
    EXPECT_EQ(machine().calls, Lines{}) << row.says;
    EXPECT_EQ(doubles::trace(), (Lines{"100 110C0030", row.error, "100 110C0031"})) << row.says;
    EXPECT_TRUE(all_untouched()) << row.says;
  }
}

TEST_F(LmainteGetSbData, BoardsThatDoNotExistFail) {
  for (const int32_t sb : {-2, 2, 16, 255, 256, 259, INT32_MAX, INT32_MIN}) {
    machine().calls.clear();
    EXPECT_EQ(lmainte_get_sb_data(sb, 1, 5, out_), 8) << sb;
    EXPECT_EQ(machine().calls_of({"get"}).size(), 1u) << sb;
    EXPECT_TRUE(all_untouched()) << sb;
  }
}

TEST_F(LmainteGetSbData, BoardWithoutAPlaceForItsNumberFails) {
  machine().records[{1, "setup_cmu_info_255"}] = {Bytes(256)};
  machine().records[{2, "current_cmu_info_255"}] = {Bytes(1760)};
  machine().records[{4, "fru_cmu_info_255"}] = {Bytes(8192)};
  EXPECT_EQ(lmainte_get_sb_data(255, 1, 5, out_), 8);
  EXPECT_EQ(machine().calls_of({"get"}).size(), 3u);
  EXPECT_EQ(doubles::trace_of(0x110C0050), (Lines{"100 110C0050", "805 110C1055 -1", "100 110C0051"}));
}

// ---- states

TEST_F(LmainteGetSbData, AbsentUnitsKeepTheirNamesUntouched) {
  Board &board = boards_[1];
  board.cmu.word(8, 0x7FFFFFFF);
  board.iou.word(8, 0x7FFFFFFF);
  board.cpum.word(cpum_at(2) + 8, 0x7FFFFFFF);
  board.dimm.word(dimm_at(17) + 8, 0x7FFFFFFF);
  store(1);
  ASSERT_EQ(lmainte_get_sb_data(1, 1, 3, out_), 0);
  const std::string pattern(20, doubles::kUntouched);
  const SbData &sb = out_[0];
  EXPECT_EQ(std::string(sb.cmu.fru_name, 20), pattern);
  EXPECT_EQ(std::string(sb.iou.fru_name, 20), pattern);
  EXPECT_EQ(std::string(sb.cmu.cpum[2].fru_name, 20), pattern);
  EXPECT_EQ(std::string(sb.cmu.dimm[0].fru_name, 20), pattern);
  EXPECT_EQ(std::string(sb.cmu.cpum[1].fru_name, 7), "CPU1/1Z");
  EXPECT_EQ(std::string(sb.cmu.dimm[1].fru_name, 4), dimm_identity(1, 19));
  for (const int32_t status : {sb.cmu.status, sb.cmu.mainte_status, sb.iou.status, sb.iou.parts_status,
                               sb.cmu.cpum[2].status, sb.cmu.cpum[2].mainte_status, sb.cmu.dimm[0].status})
    EXPECT_EQ(status, 0x7FFFFFFF);
}

TEST_F(LmainteGetSbData, IouIsAlwaysInstalledAndNormalToTheOperator) {
  for (const uint32_t status : {0U, 0x80000000U, 0xA0000000U, 0x90000000U, 0xFFFFFFFFU, 0x7FFFFFFFU}) {
    boards_[0].iou.word(8, status);
    store(0);
    ASSERT_EQ(lmainte_get_sb_data(0, 1, 3, out_), 0);
    EXPECT_EQ(out_[0].iou.mainte_status, 0x80000000u);
    EXPECT_EQ(static_cast<uint32_t>(out_[0].iou.status), status);
    EXPECT_EQ(static_cast<uint32_t>(out_[0].iou.parts_status), status);
  }
}

struct PartsRow {
  const char *says;
  std::map<uint32_t, uint32_t> cpum;  // status words, all others are 0
  std::map<uint32_t, uint32_t> dimm;
  uint32_t parts_status;
};

TEST_F(LmainteGetSbData, PartsAreSummedUp) {
  const PartsRow rows[] = {
      {"none is installed", {}, {}, 0},
      {"none is installed, whatever its other bits", {{0, 0x7FFFFFFF}}, {{31, 0x30000000}}, 0},
      {"one CPU module", {{3, 0x80000000}}, {}, 0x80000000},
      {"one memory module", {}, {{31, 0x80000000}}, 0x80000000},
      {"other bits say nothing", {{0, 0xCFFFFFFF}}, {}, 0x80000000},
      {"a degraded one", {{1, 0x90000000}}, {}, 0x90000000},
      {"a degraded one, then one that is well", {{0, 0x90000000}, {3, 0x80000000}}, {}, 0x90000000},
      {"one that is well, then a degraded one", {{0, 0x80000000}, {3, 0x90000000}}, {}, 0x90000000},
      {"a faulted one", {{3, 0xA0000000}}, {}, 0xA0000000},
      {"a faulted one before a degraded one", {{0, 0xA0000000}, {1, 0x90000000}}, {}, 0xA0000000},
      {"a faulted one behind a degraded one", {{0, 0x90000000}, {1, 0xA0000000}}, {}, 0xA0000000},
      {"one that is both", {{0, 0xB0000000}}, {}, 0xA0000000},
      {"a faulted memory module", {{0, 0x80000000}}, {{0, 0xA0000000}}, 0xA0000000},
      {"a degraded memory module", {{0, 0x80000000}}, {{16, 0x90000000}}, 0x90000000},
      {"both kinds are joined", {{0, 0x90000000}}, {{5, 0xA0000000}}, 0xB0000000},
      {"an absent one is not faulted", {{0, 0x20000000}, {1, 0x80000000}}, {{5, 0x30000000}}, 0x80000000},
  };
  for (const auto &row : rows) {
    Board &board = boards_[0];
    for (uint32_t k = 0; k < 4; ++k) board.cpum.word(cpum_at(k) + 8, 0);
    for (uint32_t d = 0; d < 32; ++d) board.dimm.word(dimm_at(d) + 8, 0);
    for (const auto &[k, status] : row.cpum) board.cpum.word(cpum_at(k) + 8, status);
    for (const auto &[d, status] : row.dimm) board.dimm.word(dimm_at(d) + 8, status);
    machine().start();
    put_identities(0);
    store(0);
    ASSERT_EQ(lmainte_get_sb_data(0, 1, 3, out_), 0) << row.says;
    EXPECT_EQ(out_[0].cmu.parts_status, row.parts_status) << row.says;
  }
}

TEST_F(LmainteGetSbData, CopiesNamesAsLongAsTheyAre) {
  const std::pair<const char *, const char *> rows[] = {{"fru_cmu_info_00", out_[0].cmu.fru_name},
                                                        {"fru_cpu_info_03", out_[0].cmu.cpum[3].fru_name},
                                                        {"fru_iou_qe_info_00", out_[0].iou.fru_name}};
  for (const auto &[record, name] : rows) {
    SCOPED_TRACE(record);
    doubles::expect_names([this, record = record, name = name](uint8_t length, const std::string &text) {
      SetUp();
      put_name(record, text, length);
      EXPECT_EQ(lmainte_get_sb_data(0, 1, 3, out_), 0);
      return std::string(name, 20);
    });
  }
}

// ---- records that cannot be read

struct BoardRecordRow {
  uint32_t db_id;
  const char *name;
  size_t size;
  size_t gets;        // up to and with the one that fails
  const char *error;  // of its reader
};

constexpr BoardRecordRow kBoardRecords[] = {
    {1, "setup_cmu_info_01", 256, 1, "805 110C1045 8 1"},
    {2, "current_cmu_info_01", 1760, 2, "805 110C1045 8 1"},
    {4, "fru_cmu_info_01", 8192, 3, "805 110C1045 8 1"},
    {2, "current_cpu_module_info_01", 2976, 5, "805 110C1056 8 1"},
    {4, "fru_cpu_info_04", 8192, 6, "805 110C1057 8 0"},
    {4, "fru_cpu_info_07", 8192, 9, "805 110C1057 8 3"},
    {2, "current_dimm_info_01", 1792, 11, "805 110CB0B6 8 1"},
    {4, "fru_dimm_info_049", 256, 12, "805 110CB0B7 8 17"},
    {4, "fru_dimm_info_046", 256, 43, "805 110CB0B7 8 14"},
    {2, "current_iou_info_01", 2016, 45, "805 110CB0A5 8 1"},
    {4, "fru_iou_qe_info_01", 8192, 46, "805 110CB0A5 8 1"},
};

// Whether a record is a module's, whose reader the CMU's reader calls.
bool is_of_a_module(const BoardRecordRow &row) {
  return row.gets > 3 && row.gets <= 43;
}

TEST_F(LmainteGetSbData, EveryRecordMustBeThereAndHaveItsSize) {
  const Lines all = joined({cmu_gets(1), iou_gets(1, 5)});
  for (const auto &row : kBoardRecords) {
    const doubles::StoredRecord bad[] = {{Bytes(row.size), 3, false},
                                         {Bytes(row.size), 3, true},
                                         {Bytes(row.size - 1)},
                                         {Bytes(row.size + 1)},
                                         {Bytes(row.size), 0, false}};
    for (const auto &stored : bad) {
      SetUp();
      machine().records[{row.db_id, row.name}] = stored;
      EXPECT_EQ(lmainte_get_sb_data(1, 1, 5, out_), 8) << row.name;
      EXPECT_EQ(machine().calls_of({"get"}), Lines(all.begin(), all.begin() + static_cast<ptrdiff_t>(row.gets)))
          << row.name;
      const Lines record = {"100 110C0030", row.gets <= 43 ? "805 110C1037 8" : "805 110C1038 8", "100 110C0031"};
      EXPECT_EQ(doubles::trace_of(0x110C0030), record) << row.name;
      const Lines trace = doubles::trace();
      EXPECT_EQ(std::count(trace.begin(), trace.end(), row.error), 1) << row.name;
      EXPECT_EQ(std::count(trace.begin(), trace.end(), "805 110C1046 8 1"), is_of_a_module(row) ? 1 : 0) << row.name;
      EXPECT_EQ(machine().left_behind(), Lines{}) << row.name;
    }
  }
}

TEST_F(LmainteGetSbData, IdentityOfAnAbsentModuleMustBeThereToo) {
  boards_[0].dimm.word(dimm_at(2) + 8, 0);
  boards_[0].cpum.word(cpum_at(1) + 8, 0);
  for (const char *name : {"fru_dimm_info_002", "fru_cpu_info_01"}) {
    SetUp();
    boards_[0].dimm.word(dimm_at(2) + 8, 0);
    boards_[0].cpum.word(cpum_at(1) + 8, 0);
    store(0);
    EXPECT_EQ(lmainte_get_sb_data(0, 1, 3, out_), 0);
    machine().records.erase({4, name});
    EXPECT_EQ(lmainte_get_sb_data(0, 1, 3, out_), 8) << name;
  }
}

TEST_F(LmainteGetSbData, MissingModuleLeavesThoseBeforeFilledAndTheRestUntouched) {
  machine().records.erase({4, "fru_dimm_info_000"});  // seventh in the list
  EXPECT_EQ(lmainte_get_sb_data(-1, 2, 3, out_), 8);
  auto expected = doubles::untouched<SbData>();
  const CmuData board = expected_cmu(0, 0);
  std::copy(board.cpum, board.cpum + 4, expected.cmu.cpum);
  std::copy(board.dimm, board.dimm + 6, expected.cmu.dimm);
  EXPECT_TRUE(is_same(expected, out_[0]));
  EXPECT_TRUE(is_untouched(1));
}

TEST_F(LmainteGetSbData, MissingCmuStopsBeforeAnyIou) {
  machine().records.erase({1, "setup_cmu_info_01"});
  EXPECT_EQ(lmainte_get_sb_data(-1, 3, 3, out_), 8);
  auto expected = doubles::untouched<SbData>();
  expected.cmu = expected_cmu(0, 0);
  EXPECT_TRUE(is_same(expected, out_[0]));
  EXPECT_TRUE(is_untouched(1));
  EXPECT_TRUE(is_untouched(2));
}

TEST_F(LmainteGetSbData, MissingIouLeavesEveryCmuFilled) {
  machine().records.erase({2, "current_iou_info_00"});
  EXPECT_EQ(lmainte_get_sb_data(-1, 2, 3, out_), 8);
  for (uint32_t n = 0; n < 2; ++n) {
    auto expected = doubles::untouched<SbData>();
    expected.cmu = expected_cmu(n, 0);
    EXPECT_TRUE(is_same(expected, out_[n])) << n;
  }
}

// ---- sessions that fail

struct BoardSessionRow {
  const char *failing;
  int nth;
  const char *error;  // of the whole reader
  Lines before;       // calls up to the failing one
  Lines after;
};

std::vector<BoardSessionRow> board_session_rows() {
  const Lines opens = {"open 1", "open 2", "open 4"};
  const Lines closes = {"close 4", "close 2", "close 1"};
  return {
      {"open 1", 1, "805 110C1031 1 -1", {"open 1"}, {}},
      {"open 2", 1, "805 110C1031 2 -1", {"open 1", "open 2"}, {"close 1"}},
      {"open 4", 1, "805 110C1031 4 -1", opens, {"close 2", "close 1"}},
      {"lock 1", 1, "805 110C1037 8", joined({opens, {"lock 1"}}), closes},
      {"lock 2", 1, "805 110C1037 8", joined({opens, {"lock 1", "lock 2"}}), joined({{"unlock 1"}, closes})},
      {"lock 4", 1, "805 110C1037 8", joined({opens, {"lock 1", "lock 2", "lock 4"}}),
       joined({{"unlock 2", "unlock 1"}, closes})},
  };
}

TEST_F(LmainteGetSbData, FailedOpenOrLockUndoesWhatWasTaken) {
  for (const auto &row : board_session_rows()) {
    SetUp();
    machine().fail(row.failing, row.nth, 0, 77);
    EXPECT_EQ(lmainte_get_sb_data(0, 1, 3, out_), 8) << row.failing;
    EXPECT_EQ(client_calls(), joined({row.before, row.after})) << row.failing;
    EXPECT_EQ(doubles::trace_of(0x110C0030), (Lines{"100 110C0030", row.error, "100 110C0031"})) << row.failing;
    EXPECT_EQ(machine().left_behind(), Lines{}) << row.failing;
    EXPECT_TRUE(all_untouched()) << row.failing;
  }
}

TEST_F(LmainteGetSbData, LockThatFailsForTheSecondBoardLeavesTheFirst) {
  for (const char *failing : {"lock 1", "lock 2", "lock 4"}) {
    SetUp();
    machine().fail(failing, 2);
    EXPECT_EQ(lmainte_get_sb_data(-1, 2, 3, out_), 8) << failing;
    auto expected = doubles::untouched<SbData>();
    expected.cmu = expected_cmu(0, 0);
    EXPECT_TRUE(is_same(expected, out_[0])) << failing;
    EXPECT_TRUE(is_untouched(1)) << failing;
    EXPECT_EQ(machine().calls_of({"unlock", "close"}).back(), "close 1") << failing;
    EXPECT_EQ(machine().left_behind(), Lines{}) << failing;
  }
}

TEST_F(LmainteGetSbData, LockThatFailsForTheIouLeavesTheCmu) {
  machine().fail("lock 4", 2);
  EXPECT_EQ(lmainte_get_sb_data(0, 1, 3, out_), 8);
  EXPECT_EQ(client_calls(), within_opens(joined({cmu_calls(0), {"lock 2", "lock 4", "unlock 2"}})));
  auto expected = doubles::untouched<SbData>();
  expected.cmu = expected_cmu(0, 0);
  EXPECT_TRUE(is_same(expected, out_[0]));
}

// What cannot be given back stays with the process, so each case has one of its own.
TEST_F(LmainteGetSbData, FailedCloseSpoilsTheReadAndLetsTheOthersClose) {
  for (const char *id : {"1", "2", "4"}) {
    in_a_process_of_its_own([this, id] {
      SetUp();
      machine().fail(std::string("close ") + id, 1, 0, 77);
      EXPECT_EQ(lmainte_get_sb_data(0, 1, 3, out_), 8) << id;
      EXPECT_EQ(client_calls(), within_opens(joined({cmu_calls(0), iou_calls(0, 3)}))) << id;
      EXPECT_EQ(doubles::trace_of(0x110C0030),
                (Lines{"100 110C0030", std::string("805 110C1034 ") + id + " -1", "100 110C0031"}));
      EXPECT_EQ(machine().left_behind(), (Lines{std::string("database ") + id + " open"}));
      EXPECT_TRUE(is_board(0, 0, out_[0])) << id;
    });
  }
}

TEST_F(LmainteGetSbData, FailedUnlockSpoilsTheReadAndKeepsTheLocksBelow) {
  in_a_process_of_its_own([this] {
    SetUp();
    machine().fail("unlock 4", 1, 0, 77);
    EXPECT_EQ(lmainte_get_sb_data(0, 1, 3, out_), 8);
    EXPECT_EQ(client_calls(), within_opens(joined({{"lock 1", "lock 2", "lock 4"}, cmu_gets(0), {"unlock 4"}})));
    EXPECT_EQ(doubles::trace_of(0x110C0040),
              (Lines{"100 110C0040", "805 110C1043 4 -1", "805 110C1043 2 -1", "805 110C1043 1 -1", "100 110C0041"}));
    EXPECT_EQ(machine().left_behind(), (Lines{"database 1 locked", "database 2 locked", "database 4 locked"}));
  });
  in_a_process_of_its_own([this] {
    SetUp();
    machine().fail("unlock 1");
    EXPECT_EQ(lmainte_get_sb_data(0, 1, 3, out_), 8);
    EXPECT_EQ(client_calls(), within_opens(cmu_calls(0)));
    EXPECT_EQ(machine().left_behind(), (Lines{"database 1 locked"}));
  });
}

TEST_F(LmainteGetSbData, HigherLockedDatabaseKeepsTheBoardsFromBeingRead) {
  lmainte_scdb_lock(5);
  EXPECT_EQ(lmainte_get_sb_data(0, 1, 3, out_), 8);
  EXPECT_EQ(machine().calls_of({"get"}), Lines{});
  lmainte_scdb_unlock(5);
  EXPECT_EQ(lmainte_get_sb_data(0, 1, 3, out_), 0);
}

TEST_F(LmainteGetSbData, WorksInsideTheCallersOwnSessions) {
  doubles::within_sessions({1, 2, 4}, [this] {
    EXPECT_EQ(lmainte_get_sb_data(0, 1, 3, out_), 0);
    EXPECT_EQ(client_calls(), joined({cmu_gets(0), iou_gets(0, 3)}));
  });
  EXPECT_TRUE(is_board(0, 0, out_[0]));
}

}  // namespace
