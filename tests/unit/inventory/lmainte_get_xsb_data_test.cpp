#include "tests/unit/inventory/reader_test.h"

namespace {

using doubles::Bytes;
using doubles::client_calls;
using doubles::fetch_of;
using doubles::is_same;
using doubles::Lines;
using doubles::machine;
using doubles::numbered;
using doubles::RecordBytes;

// An inventory of sixty-four extended system boards.
class LmainteGetXsbData : public doubles::ReaderTest<XsbData, 64> {
 protected:
  void SetUp() override {
    LibraryTest::SetUp();
    for (uint32_t n = 0; n < 64; ++n) {
      machine().records[{1, numbered("setup_xsb_info_", n)}] = {RecordBytes(192).word(128, 0x01010100 + n)};
      machine().records[{2, numbered("current_xsb_info_", n)}] = {RecordBytes(152)
                                                                      .word(0, 0x02020200 + n)
                                                                      .word(52, 0x03030300 + n)
                                                                      .word(56, 0x84040400 + n)
                                                                      .byte(61, static_cast<uint8_t>(0x80 + n))};
    }
  }

  static doubles::Image<XsbData> expected(uint32_t n) {
    doubles::Image<XsbData> record;
    record->number = static_cast<int32_t>(n);
    record->cur_info_0 = 0x02020200 + n;
    record->cur_info_13 = 0x03030300 + n;
    record->current_domain = static_cast<int32_t>(0x84040400 + n);
    record->setup_domain = static_cast<int32_t>(0x01010100 + n);
    record->active = static_cast<uint8_t>(0x80 + n);
    return record;
  }
};

TEST_F(LmainteGetXsbData, FillsEveryFieldOnEveryHighEndModel) {
  for (const int32_t model : {3, 4, 5}) {
    wipe();
    ASSERT_EQ(lmainte_get_xsb_data(-1, 2, model, out_), 0);
    EXPECT_TRUE(is_same(expected(0), out_[0])) << model;
    EXPECT_TRUE(is_same(expected(1), out_[1])) << model;
    EXPECT_TRUE(is_untouched(2)) << model;
  }
}

TEST_F(LmainteGetXsbData, NumberReadsSoManyFromThatOneOn) {
  ASSERT_EQ(lmainte_get_xsb_data(8, 4, 5, out_), 0);
  for (uint32_t i = 0; i < 4; ++i) EXPECT_TRUE(is_same(expected(8 + i), out_[i]));
  EXPECT_TRUE(is_untouched(4));
}

TEST_F(LmainteGetXsbData, NumberZeroIsTheFirst) {
  ASSERT_EQ(lmainte_get_xsb_data(0, 2, 5, out_), 0);
  EXPECT_TRUE(is_same(expected(1), out_[1]));
  EXPECT_TRUE(is_untouched(2));
}

TEST_F(LmainteGetXsbData, ReadsAllSixtyFour) {
  ASSERT_EQ(lmainte_get_xsb_data(-1, 64, 5, out_), 0);
  for (uint32_t n = 0; n < 64; ++n) EXPECT_TRUE(is_same(expected(n), out_[n])) << n;
}

TEST_F(LmainteGetXsbData, ReadsTheSetupRecordsThenTheCurrentOnes) {
  lmainte_get_xsb_data(8, 2, 3, out_);
  EXPECT_EQ(client_calls(), doubles::joined({fetch_of(1, {"setup_xsb_info_08", "setup_xsb_info_09"}),
                                             fetch_of(2, {"current_xsb_info_08", "current_xsb_info_09"})}));
}

TEST_F(LmainteGetXsbData, RecordsItsSteps) {
  lmainte_get_xsb_data(-1, 1, 3, out_);
  EXPECT_EQ(doubles::trace_of(0x110C8000), (Lines{"100 110C8000", "100 110C8001"}));
  EXPECT_EQ(doubles::trace().front(), "100 110C8000");
  EXPECT_EQ(doubles::trace().back(), "100 110C8001");
}

TEST_F(LmainteGetXsbData, RefusesBadArgumentsBeforeAnyDatabase) {
  const Lines trace = {"100 110C8000", "805 110CB001", "100 110C8001"};
  expect_refused(doubles::kRefusedArguments, lmainte_get_xsb_data, trace);
  constexpr doubles::Arguments kOtherModels[] = {
      {"qb1, which has none", 1, 1, true},
      {"qb2, which has none", 1, 2, true},
      {"qa, which has none", 1, 6, true},
  };
  expect_refused(kOtherModels, lmainte_get_xsb_data, trace);
}

TEST_F(LmainteGetXsbData, RefusesWhatNoTableCanHoldBeforeAnyDatabase) {
  const std::pair<int32_t, int32_t> rows[] = {{-1, -1}, {8, -1}, {-2, 1}, {INT32_MIN, 1}, {-1, INT32_MIN}};
  for (const auto &[xsb, count] : rows) {
    machine().start();
    EXPECT_EQ(lmainte_get_xsb_data(xsb, count, 3, out_), 8) << xsb << " " << count;
    EXPECT_EQ(client_calls(), Lines{});
    EXPECT_EQ(doubles::trace_of(0x110C8000).at(1).substr(0, 12), "805 110CB002");
    EXPECT_TRUE(all_untouched());
  }
}

TEST_F(LmainteGetXsbData, RunPastTheLastNumberEndsThere) {
  for (const auto &[db_id, name, size] :
       {std::tuple{1U, "setup_xsb_info_2147483647", 192U}, std::tuple{2U, "current_xsb_info_2147483647", 152U}})
    machine().records[{db_id, name}] = {Bytes(size)};
  EXPECT_EQ(lmainte_get_xsb_data(INT32_MAX, 2, 3, out_), 8);
  EXPECT_TRUE(is_untouched(1));
}

TEST_F(LmainteGetXsbData, MissingRecordFailsBeforeAnythingIsWritten) {
  machine().records.erase({2, "current_xsb_info_09"});
  EXPECT_EQ(lmainte_get_xsb_data(8, 4, 3, out_), 8);
  EXPECT_EQ(machine().calls_of({"get"}).back(), "get 2 current_xsb_info_09");
  EXPECT_EQ(doubles::trace_of(0x110C8000), (Lines{"100 110C8000", "805 110CB003", "100 110C8001"}));
  EXPECT_TRUE(all_untouched());

  machine().records.erase({1, "setup_xsb_info_09"});
  machine().calls.clear();
  EXPECT_EQ(lmainte_get_xsb_data(8, 4, 3, out_), 8);
  EXPECT_EQ(client_calls(), fetch_of(1, {"setup_xsb_info_08", "setup_xsb_info_09"}));
  EXPECT_EQ(doubles::trace_of(0x110C8000).at(4), "805 110CB002");
  EXPECT_TRUE(all_untouched());
}

TEST_F(LmainteGetXsbData, RecordOfAnotherSizeFails) {
  for (const auto &[db_id, name, size] :
       {std::tuple{1U, "setup_xsb_info_01", 191U}, std::tuple{1U, "setup_xsb_info_01", 193U},
        std::tuple{2U, "current_xsb_info_01", 151U}, std::tuple{2U, "current_xsb_info_01", 153U}}) {
    machine().start();
    SetUp();
    machine().records[{db_id, name}] = {Bytes(size)};
    EXPECT_EQ(lmainte_get_xsb_data(-1, 2, 3, out_), 8) << name << " " << size;
    EXPECT_TRUE(all_untouched());
  }
}

TEST_F(LmainteGetXsbData, EmptyRecordFailsAtItsBoard) {
  for (const auto &[db_id, name, size] :
       {std::tuple{1U, "setup_xsb_info_10", 192U}, std::tuple{2U, "current_xsb_info_10", 152U}}) {
    SetUp();
    wipe();
    machine().records[{db_id, name}] = {Bytes(size), 0, false};
    EXPECT_EQ(lmainte_get_xsb_data(8, 4, 3, out_), 8) << name;
    EXPECT_TRUE(is_same(expected(9), out_[1])) << name;
    EXPECT_TRUE(is_untouched(2)) << name;
    EXPECT_EQ(doubles::trace_of(0x110C8000), (Lines{"100 110C8000", "805 110CB004 10 2", "100 110C8001"})) << name;
  }
}

TEST_F(LmainteGetXsbData, EveryCallOfTheClientCounts) {
  doubles::expect_every_call_to_count(
      doubles::joined({fetch_of(1, {"setup_xsb_info_08", "setup_xsb_info_09"}),
                       fetch_of(2, {"current_xsb_info_08", "current_xsb_info_09"})}),
      [this] { return lmainte_get_xsb_data(8, 2, 3, out_); }, [this] { return all_untouched(); });
}

TEST_F(LmainteGetXsbData, WorksInsideTheCallersOwnSessions) {
  doubles::within_sessions({1, 2}, [this] { EXPECT_EQ(lmainte_get_xsb_data(-1, 1, 3, out_), 0); });
  EXPECT_TRUE(is_same(expected(0), out_[0]));
}

}  // namespace
