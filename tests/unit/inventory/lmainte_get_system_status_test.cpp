#include "tests/unit/inventory/reader_test.h"

namespace {

using doubles::Bytes;
using doubles::client_calls;
using doubles::fetch_of;
using doubles::Lines;
using doubles::machine;
using doubles::RecordBytes;

class LmainteGetSystemStatus : public doubles::ReaderTest<SystemStatus, 2> {
 protected:
  void SetUp() override {
    LibraryTest::SetUp();
    machine().records[{2, "current_system_info"}] = {RecordBytes(176).word(8, 0x81028003).word(32, 0x91929394)};
  }
};

TEST_F(LmainteGetSystemStatus, FillsBothFields) {
  ASSERT_EQ(lmainte_get_system_status(out_), 0);
  EXPECT_EQ(out_[0].system_status, 0x81028003u);
  EXPECT_EQ(out_[0].system_info_8, 0x91929394u);
  EXPECT_TRUE(is_untouched(1));
}

TEST_F(LmainteGetSystemStatus, ReadsOneRecord) {
  lmainte_get_system_status(out_);
  EXPECT_EQ(client_calls(), fetch_of(2, {"current_system_info"}));
  EXPECT_EQ(doubles::trace_of(0x110C0410), (Lines{"100 110C0410", "100 110C0411"}));
  EXPECT_EQ(doubles::trace().front(), "100 110C0410");
  EXPECT_EQ(doubles::trace().back(), "100 110C0411");
}

TEST_F(LmainteGetSystemStatus, RefusesNullBeforeAnyDatabase) {
  EXPECT_EQ(lmainte_get_system_status(nullptr), 8);
  EXPECT_EQ(machine().calls, Lines{});
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C0410", "805 110C1411", "100 110C0411"}));
}

TEST_F(LmainteGetSystemStatus, MissingRecordLeavesTheOutputUntouched) {
  machine().records.clear();
  EXPECT_EQ(lmainte_get_system_status(out_), 8);
  EXPECT_EQ(client_calls(), fetch_of(2, {"current_system_info"}));
  EXPECT_EQ(doubles::trace_of(0x110C0410), (Lines{"100 110C0410", "805 110C1412", "100 110C0411"}));
  EXPECT_TRUE(all_untouched());
}

TEST_F(LmainteGetSystemStatus, EmptyRecordLeavesTheOutputUntouched) {
  machine().records[{2, "current_system_info"}] = {Bytes(176), 0, false};
  EXPECT_EQ(lmainte_get_system_status(out_), 8);
  EXPECT_EQ(doubles::trace_of(0x110C0410), (Lines{"100 110C0410", "805 110C1413", "100 110C0411"}));
  EXPECT_TRUE(all_untouched());
}

TEST_F(LmainteGetSystemStatus, RecordOfAnotherSizeFails) {
  for (const size_t size : {175U, 177U, 0U}) {
    machine().records[{2, "current_system_info"}] = {Bytes(size)};
    EXPECT_EQ(lmainte_get_system_status(out_), 8) << size;
    EXPECT_TRUE(all_untouched());
  }
}

TEST_F(LmainteGetSystemStatus, HigherLockedDatabaseFails) {
  lmainte_scdb_lock(3);
  EXPECT_EQ(lmainte_get_system_status(out_), 8);
  EXPECT_TRUE(all_untouched());
  lmainte_scdb_unlock(3);
}

TEST_F(LmainteGetSystemStatus, EveryCallOfTheClientCounts) {
  doubles::expect_every_call_to_count(
      fetch_of(2, {"current_system_info"}), [this] { return lmainte_get_system_status(out_); },
      [this] { return all_untouched(); });
}

TEST_F(LmainteGetSystemStatus, WorksInsideTheCallersOwnSession) {
  doubles::within_sessions({2}, [this] { EXPECT_EQ(lmainte_get_system_status(out_), 0); });
  EXPECT_EQ(out_[0].system_status, 0x81028003u);
}

// ---- expansion units, of which the database holds nothing

class LmainteGetIoxData : public doubles::LibraryTest {};

TEST_F(LmainteGetIoxData, SucceedsAndTouchesNothing) {
  machine().trace_result = -1;
  machine().fail("open", 0);
  EXPECT_EQ(lmainte_get_iox_data(), 0);
  EXPECT_EQ(machine().calls, Lines{});
  EXPECT_EQ(doubles::trace(), Lines{});
}

}  // namespace
