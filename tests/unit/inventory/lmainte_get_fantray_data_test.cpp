#include "tests/unit/inventory/reader_test.h"

namespace {

using doubles::Bytes;
using doubles::client_calls;
using doubles::fetch_of;
using doubles::is_same;
using doubles::kInstalled;
using doubles::Lines;
using doubles::machine;
using doubles::numbered;
using doubles::RecordBytes;

// The fan trays of each model: how many there are, and the fans of each.
struct Model {
  int32_t code;
  const lmainte_fan_count *table;
  std::vector<uint8_t> fans;
};

const std::vector<Model> &models() {
  static const std::vector<Model> kModels = {
      {1, max_fan_num_qb1, {1, 1, 1, 1, 2, 2}},
      {2, max_fan_num_qb2, {1, 1, 1, 1, 2, 2, 2, 2}},
      {3, max_fan_num_qe1, {2, 2, 3, 3, 3, 3, 2, 2, 2, 2, 2, 2}},
      {4, max_fan_num_qe2, std::vector<uint8_t>(16, 3)},
      {5, max_fan_num_qe3, std::vector<uint8_t>(32, 3)},
      {6, max_fan_num_qa, {1, 1, 1, 1}},
  };
  return kModels;
}

const Model &model_of(int32_t code) {
  for (const auto &model : models())
    if (model.code == code) return model;
  throw code;
}

bool is_high_end(int32_t model) {
  return model >= 3 && model <= 5;
}

TEST(FanCounts, OfEveryModel) {
  for (const auto &model : models()) {
    const auto *row = model.table;
    for (size_t tray = 0; tray < model.fans.size(); ++tray, ++row) {
      EXPECT_EQ(row->tray, tray) << "model " << model.code;
      EXPECT_EQ(row->fans, model.fans[tray]) << "model " << model.code << ", tray " << tray;
    }
    EXPECT_EQ(row->tray, 255) << "model " << model.code;
  }
}

// An inventory of thirty-two fan trays, all installed and well.
class LmainteGetFantrayData : public doubles::ReaderTest<FantrayData, 34> {
 protected:
  void SetUp() override {
    LibraryTest::SetUp();
    for (uint32_t n = 0; n < 32; ++n) {
      put_head(n, kInstalled, 0);
      for (uint32_t fan = 0; fan < 3; ++fan) put_fan(n, fan, fan_status(n, fan), fan_flags(n, fan));
      put_fru(n, "TRAY-" + std::to_string(n));
    }
  }

  // Words and flags that tell tray and fan, the flags without the bits that say something of the state.
  static uint32_t fan_status(uint32_t n, uint32_t fan) { return 0x81000000 + 256 * n + fan; }
  static uint8_t fan_flags(uint32_t n, uint32_t fan) {
    return static_cast<uint8_t>((n % 4) << 6 | (n / 4 % 2) << 3 | fan);
  }

  void put_head(uint32_t n, uint32_t status, uint8_t flags) {
    const size_t at = size_t{216} * n;
    current_.word(at, 0xC0000000 + n).word(at + 4, 0xD0000000 + n).word(at + 8, status).byte(at + 20, flags);
    machine().records[{2, "current_fantray_info"}] = {current_};
  }
  void put_fan(uint32_t n, uint32_t fan, uint32_t status, uint8_t flags) {
    const size_t at = size_t{216} * n + size_t{56} * fan;
    current_.word(at + 32, status).byte(at + 44, flags);
    machine().records[{2, "current_fantray_info"}] = {current_};
  }
  static std::string fru_name(uint32_t n) { return numbered("fru_fan_qe_info_", n); }
  static void put_fru(uint32_t n, const std::string &name) { put_fru(n, name, static_cast<uint8_t>(name.size())); }
  static void put_fru(uint32_t n, const std::string &name, uint8_t length) {
    machine().records[{4, fru_name(n)}] = {RecordBytes(256).byte(43, length).text(44, name)};
  }

  // The record of tray n, with the fans of the entry `fans_of`.
  static doubles::Image<FantrayData> expected(int32_t model, uint32_t n, uint32_t fans_of) {
    doubles::Image<FantrayData> record;
    record->type = 180;
    record->number = static_cast<int32_t>(n);
    record->unit_id[0] = 0xC0000000 + n;
    record->unit_id[1] = 0xD0000000 + n;
    record->status = static_cast<int32_t>(kInstalled);
    record->mainte_status = static_cast<int32_t>(kInstalled);
    record->fan_count = model_of(model).fans.at(n);
    for (uint32_t fan = 0; fan < static_cast<uint32_t>(record->fan_count); ++fan) {
      record->fan[fan].status = static_cast<int32_t>(fan_status(fans_of, fan));
      record->fan[fan].flags = fan_flags(fans_of, fan);
    }
    const std::string name = "TRAY-" + std::to_string(n);
    if (is_high_end(model)) name.copy(record->fru_name, sizeof record->fru_name);
    record->flags = 0;
    return record;
  }
  static doubles::Image<FantrayData> expected(int32_t model, uint32_t n) { return expected(model, n, n); }

  static Lines fru_names(uint32_t first, uint32_t count) {
    Lines names;
    for (uint32_t i = 0; i < count; ++i) names.push_back(fru_name(first + i));
    return names;
  }

  uint32_t status() { return static_cast<uint32_t>(out_[0].status); }

  RecordBytes current_{6912};
};

// ---- what is read

TEST_F(LmainteGetFantrayData, ListHoldsEveryTrayOfEveryModel) {
  for (const auto &model : models()) {
    if (model.code == 3) continue;
    wipe();
    const auto count = static_cast<uint32_t>(model.fans.size());
    ASSERT_EQ(lmainte_get_fantray_data(-1, static_cast<int32_t>(count), model.code, out_), 0) << model.code;
    for (uint32_t n = 0; n < count; ++n)
      EXPECT_TRUE(is_same(expected(model.code, n), out_[n])) << "model " << model.code << ", tray " << n;
    EXPECT_TRUE(is_untouched(count));
  }
}

TEST_F(LmainteGetFantrayData, ListOfQe1HasAnOrderOfItsOwnAndTheFansOfThePositions) {
  ASSERT_EQ(lmainte_get_fantray_data(-1, 12, 3, out_), 0);
  constexpr uint32_t kTrays[] = {2, 3, 4, 5, 0, 1, 6, 7, 8, 9, 10, 11};
  for (uint32_t i = 0; i < 12; ++i) EXPECT_TRUE(is_same(expected(3, kTrays[i], i), out_[i])) << "position " << i;
  EXPECT_TRUE(is_untouched(12));
}

TEST_F(LmainteGetFantrayData, NumberReadsThatTrayWithItsOwnFans) {
  for (const auto &model : models()) {
    for (uint32_t n = 0; n < model.fans.size(); ++n) {
      wipe();
      ASSERT_EQ(lmainte_get_fantray_data(static_cast<int32_t>(n), 1, model.code, out_), 0);
      EXPECT_TRUE(is_same(expected(model.code, n), out_[0])) << "model " << model.code << ", tray " << n;
      EXPECT_TRUE(is_untouched(1));
    }
  }
}

TEST_F(LmainteGetFantrayData, NumberMakesTheCountOne) {
  for (const int32_t count : {12, -5}) {
    wipe();
    machine().calls.clear();
    EXPECT_EQ(lmainte_get_fantray_data(2, count, 3, out_), 0) << count;
    EXPECT_TRUE(is_same(expected(3, 2), out_[0])) << count;
    EXPECT_TRUE(is_untouched(1)) << count;
    EXPECT_EQ(client_calls(), doubles::joined({fetch_of(2, {"current_fantray_info"}), fetch_of(4, fru_names(2, 1))}));
  }
}

TEST_F(LmainteGetFantrayData, EntryAndMidRangeModelsReadTheCurrentRecordAlone) {
  for (const int32_t model : {1, 2, 6}) {
    machine().start();
    SetUp();
    EXPECT_EQ(lmainte_get_fantray_data(-1, 4, model, out_), 0);
    EXPECT_EQ(client_calls(), fetch_of(2, {"current_fantray_info"})) << model;
    EXPECT_EQ(doubles::trace_of(0x110C03C0), (Lines{"100 110C03C0", "100 110C03C1"})) << "one table is freed";
  }
}

TEST_F(LmainteGetFantrayData, HighEndModelsReadTheFruRecordsAfterTheCurrentOne) {
  for (const int32_t model : {3, 4, 5}) {
    machine().calls.clear();
    EXPECT_EQ(lmainte_get_fantray_data(-1, 7, model, out_), 0);
    EXPECT_EQ(client_calls(), doubles::joined({fetch_of(2, {"current_fantray_info"}), fetch_of(4, fru_names(0, 7))}))
        << model;
  }
}

TEST_F(LmainteGetFantrayData, RecordsItsSteps) {
  lmainte_get_fantray_data(-1, 2, 5, out_);
  EXPECT_EQ(doubles::trace_of(0x110C03E0), (Lines{"100 110C03E0", "100 110C03E1"}));
  EXPECT_EQ(doubles::trace_of(0x110C03F0), (Lines{"100 110C03F0", "100 110C03F1"}));
  EXPECT_EQ(doubles::trace().front(), "100 110C03E0");
  EXPECT_EQ(doubles::trace().back(), "100 110C03E1");
}

// ---- arguments

TEST_F(LmainteGetFantrayData, RefusesBadArgumentsBeforeAnyDatabase) {
  expect_refused(doubles::kRefusedArguments, lmainte_get_fantray_data,
                 {"100 110C03E0", "805 110C13E1", "100 110C03E1"});
}

TEST_F(LmainteGetFantrayData, NegativeCountFailsOnTheHighEndAfterTheCurrentRecord) {
  for (const int32_t model : {3, 4, 5}) {
    machine().calls.clear();
    EXPECT_EQ(lmainte_get_fantray_data(-1, -1, model, out_), 8);
    EXPECT_EQ(client_calls(), fetch_of(2, {"current_fantray_info"}));
    EXPECT_TRUE(all_untouched());
  }
}

TEST_F(LmainteGetFantrayData, NegativeCountWritesNothingElsewhere) {
  for (const int32_t model : {1, 2, 6}) {
    lmainte_get_fantray_data(-1, -1, model, out_);
    EXPECT_TRUE(all_untouched());
  }
}

// ---- trays that a model lacks

TEST_F(LmainteGetFantrayData, TrayThatTheModelLacksFails) {
  for (const auto &model : models()) {
    const auto count = static_cast<int32_t>(model.fans.size());
    for (const int32_t tray : {count, count + 1, 254, 255, 256, -2, INT32_MAX, INT32_MIN}) {
      machine().start();
      SetUp();
      if (tray >= 32) put_fru(static_cast<uint32_t>(tray), "BEYOND");
      EXPECT_EQ(lmainte_get_fantray_data(tray, 1, model.code, out_), 8) << "model " << model.code << ", tray " << tray;
      EXPECT_TRUE(is_untouched(1));
    }
  }
}

TEST_F(LmainteGetFantrayData, TrayThatTheModelLacksIsRecorded) {
  EXPECT_EQ(lmainte_get_fantray_data(6, 1, 1, out_), 8);
  EXPECT_EQ(doubles::trace_of(0x110C03F0), (Lines{"100 110C03F0", "805 110C13F2 6", "100 110C03F1"}));
}

TEST_F(LmainteGetFantrayData, LongerListThanTheModelHasFailsAfterTheLast) {
  for (const auto &model : models()) {
    wipe();
    put_fru(32, "BEYOND");
    const auto count = static_cast<int32_t>(model.fans.size());
    EXPECT_EQ(lmainte_get_fantray_data(-1, count + 1, model.code, out_), 8) << model.code;
    EXPECT_EQ(out_[count - 1].number, count - 1);
    EXPECT_TRUE(is_untouched(static_cast<size_t>(count) + 1));
  }
}

// The identities that are read are those of the first trays, the trays that are shown first are 2 to 5.
TEST_F(LmainteGetFantrayData, ShortListOfQe1LacksTheIdentityOfTheTraysShownFirst) {
  EXPECT_EQ(lmainte_get_fantray_data(-1, 1, 3, out_), 8);
  EXPECT_EQ(out_[0].number, 2);
  EXPECT_EQ(doubles::trace_of(0x110C03F0).at(1), "805 110C13F3 2");

  wipe();
  EXPECT_EQ(lmainte_get_fantray_data(-1, 3, 3, out_), 8);
  EXPECT_TRUE(is_same(expected(3, 2, 0), out_[0]));
  EXPECT_TRUE(is_untouched(2));

  put_head(2, 0, 0);
  EXPECT_EQ(lmainte_get_fantray_data(-1, 1, 3, out_), 0) << "a tray that is not installed needs no identity";
  EXPECT_EQ(lmainte_get_fantray_data(-1, 6, 3, out_), 0);
}

// ---- status

TEST_F(LmainteGetFantrayData, MergesTheFlagByteIntoTheTraysStatus) {
  for (const int32_t model : {1, 2, 3, 4, 5, 6}) {
    for (const auto &row : doubles::kMergedStates) {
      put_head(0, row.stored, row.flags);
      EXPECT_EQ(lmainte_get_fantray_data(0, 1, model, out_), 0) << row.says;
      EXPECT_EQ(status(), row.status) << row.says;
      EXPECT_EQ(out_[0].mainte_status, out_[0].status) << row.says;
      EXPECT_EQ(out_[0].flags, row.flags) << row.says;
      EXPECT_EQ(static_cast<uint32_t>(out_[0].fan[0].status), fan_status(0, 0)) << row.says;
    }
  }
}

TEST_F(LmainteGetFantrayData, MergesTheFlagByteIntoEachFansStatus) {
  for (const int32_t model : {3, 4, 5}) {
    for (uint32_t fan = 0; fan < 3; ++fan) {
      for (const auto &row : doubles::kMergedStates) {
        put_fan(2, fan, row.stored, row.flags);
        EXPECT_EQ(lmainte_get_fantray_data(2, 1, model, out_), 0) << row.says;
        EXPECT_EQ(static_cast<uint32_t>(out_[0].fan[fan].status), row.status) << row.says << ", fan " << fan;
        EXPECT_EQ(out_[0].fan[fan].flags, row.flags) << row.says;
        EXPECT_EQ(status(), kInstalled) << row.says;
      }
    }
  }
}

// ---- names

TEST_F(LmainteGetFantrayData, CopiesTheNameAsLongAsItIs) {
  for (const int32_t model : {3, 4, 5}) {
    doubles::expect_names([&](uint8_t length, const std::string &text) {
      put_fru(0, text, length);
      wipe();
      EXPECT_EQ(lmainte_get_fantray_data(0, 1, model, out_), 0);
      EXPECT_EQ(out_[0].flags, 0);
      return std::string(out_[0].fru_name, 18);
    });
  }
}

TEST_F(LmainteGetFantrayData, AbsentTrayNeedsNoFruRecordAndKeepsTheNameUntouched) {
  for (const int32_t model : {3, 4, 5}) {
    SetUp();
    wipe();
    put_head(1, 0x7FFFFFFF, 0);
    machine().records.erase({4, fru_name(1)});
    EXPECT_EQ(lmainte_get_fantray_data(1, 1, model, out_), 0) << model;
    EXPECT_EQ(std::string(out_[0].fru_name, 18), std::string(18, doubles::kUntouched)) << model;
    EXPECT_EQ(lmainte_get_fantray_data(-1, 6, model, out_), 0) << model;
  }
}

TEST_F(LmainteGetFantrayData, AbsentTrayKeepsTheNameUntouchedEvenWithAFruRecord) {
  put_head(1, 0, 0);
  EXPECT_EQ(lmainte_get_fantray_data(1, 1, 5, out_), 0);
  EXPECT_EQ(std::string(out_[0].fru_name, 18), std::string(18, doubles::kUntouched));
}

TEST_F(LmainteGetFantrayData, FruRecordOfAnAbsentTrayThatFailsWithABufferIsFreed) {
  put_head(1, 0, 0);
  machine().records[{4, fru_name(1)}] = {Bytes(256, 1), 3, true};
  EXPECT_EQ(lmainte_get_fantray_data(1, 1, 5, out_), 0);
  EXPECT_EQ(std::string(out_[0].fru_name, 18), std::string(18, doubles::kUntouched));
}

// ---- failures

TEST_F(LmainteGetFantrayData, MissingFruRecordOfAnInstalledTrayFails) {
  machine().records.erase({4, fru_name(1)});
  for (const int32_t model : {3, 4, 5}) {
    EXPECT_EQ(lmainte_get_fantray_data(-1, 12, model, out_), 8) << model;
    EXPECT_EQ(machine().calls_of({"get"}).back(), "get 4 fru_fan_qe_info_01") << model;
    EXPECT_TRUE(all_untouched()) << model;
  }
  EXPECT_EQ(doubles::trace_of(0x110C03E0).at(1), "805 110C13E3 4 0");
  EXPECT_EQ(lmainte_get_fantray_data(-1, 4, 6, out_), 0) << "other models have none";
}

TEST_F(LmainteGetFantrayData, FruRecordOfAnotherSizeFailsEvenForAnAbsentTray) {
  put_head(0, 0, 0);
  for (const size_t size : {255U, 257U}) {
    machine().records[{4, fru_name(0)}] = {Bytes(size, 1)};
    EXPECT_EQ(lmainte_get_fantray_data(0, 1, 5, out_), 8) << size;
    EXPECT_TRUE(all_untouched());
  }
}

TEST_F(LmainteGetFantrayData, EmptyFruRecordOfAnInstalledTrayFailsAtThatOne) {
  machine().records[{4, fru_name(1)}] = {Bytes(256, 1), 0, false};
  EXPECT_EQ(lmainte_get_fantray_data(-1, 3, 5, out_), 8);
  EXPECT_TRUE(is_same(expected(5, 0), out_[0]));
  EXPECT_TRUE(is_untouched(2));
  EXPECT_EQ(doubles::trace_of(0x110C03F0), (Lines{"100 110C03F0", "805 110C13F3 1", "100 110C03F1"}));
}

TEST_F(LmainteGetFantrayData, CurrentRecordThatIsMissingFails) {
  for (const int32_t model : {1, 2, 3, 4, 5, 6}) {
    machine().start();
    EXPECT_EQ(lmainte_get_fantray_data(-1, 3, model, out_), 8);
    EXPECT_EQ(client_calls(), fetch_of(2, {"current_fantray_info"}));
    EXPECT_EQ(doubles::trace_of(0x110C03E0), (Lines{"100 110C03E0", "805 110C13E2 2", "100 110C03E1"}));
    EXPECT_TRUE(all_untouched());
  }
}

TEST_F(LmainteGetFantrayData, CurrentRecordThatIsEmptyFails) {
  for (const int32_t model : {1, 2, 3, 4, 5, 6}) {
    machine().start();
    SetUp();
    machine().records[{2, "current_fantray_info"}] = {Bytes(6912), 0, false};
    EXPECT_EQ(lmainte_get_fantray_data(-1, 3, model, out_), 8) << model;
    EXPECT_TRUE(all_untouched()) << model;
  }
}

TEST_F(LmainteGetFantrayData, CurrentRecordOfAnotherSizeFails) {
  for (const size_t size : {6911U, 6913U}) {
    machine().records[{2, "current_fantray_info"}] = {Bytes(size)};
    EXPECT_EQ(lmainte_get_fantray_data(-1, 3, 6, out_), 8) << size;
    EXPECT_EQ(lmainte_get_fantray_data(-1, 3, 5, out_), 8) << size;
  }
}

TEST_F(LmainteGetFantrayData, EveryCallOfTheClientCounts) {
  const Lines current = fetch_of(2, {"current_fantray_info"});
  for (const int32_t model : {1, 3}) {
    const Lines names = model == 3 ? fetch_of(4, fru_names(0, 6)) : Lines{};
    doubles::expect_every_call_to_count(
        doubles::joined({current, names}), [&] { return lmainte_get_fantray_data(-1, 6, model, out_); },
        [this] { return all_untouched(); });
  }
}

TEST_F(LmainteGetFantrayData, WorksInsideTheCallersOwnSessions) {
  doubles::within_sessions({2, 4}, [this] { EXPECT_EQ(lmainte_get_fantray_data(5, 1, 5, out_), 0); });
  EXPECT_TRUE(is_same(expected(5, 5), out_[0]));
}

}  // namespace
