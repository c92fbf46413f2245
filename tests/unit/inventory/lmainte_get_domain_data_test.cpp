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

// An inventory of twenty-four domains.
class LmainteGetDomainData : public doubles::ReaderTest<DomainData, 25> {
 protected:
  void SetUp() override {
    LibraryTest::SetUp();
    for (uint32_t n = 0; n < 24; ++n) {
      machine().records[{2, numbered("current_domain_info_", n)}] = {
          RecordBytes(1464).word(0, 0x81020300 + n).byte(44, static_cast<uint8_t>(0xE0 + n))};
    }
  }

  static doubles::Image<DomainData> expected(uint32_t n) {
    doubles::Image<DomainData> record;
    record->number = static_cast<int32_t>(n);
    record->dom_info_0 = 0x81020300 + n;
    record->dom_byte_44 = static_cast<uint8_t>(0xE0 + n);
    return record;
  }
};

TEST_F(LmainteGetDomainData, FillsEveryFieldOnEveryModel) {
  for (int32_t model = 1; model <= 6; ++model) {
    wipe();
    ASSERT_EQ(lmainte_get_domain_data(-1, 2, model, out_), 0);
    EXPECT_TRUE(is_same(expected(0), out_[0])) << model;
    EXPECT_TRUE(is_same(expected(1), out_[1])) << model;
    EXPECT_TRUE(is_untouched(2)) << model;
  }
}

TEST_F(LmainteGetDomainData, ReadsAll) {
  ASSERT_EQ(lmainte_get_domain_data(-1, 24, 5, out_), 0);
  for (uint32_t n = 0; n < 24; ++n) EXPECT_TRUE(is_same(expected(n), out_[n])) << n;
  EXPECT_TRUE(is_untouched(24));
}

TEST_F(LmainteGetDomainData, NumberReadsThatOneIntoTheFirstRecord) {
  for (const int32_t count : {24, 1, -1}) {
    wipe();
    machine().calls.clear();
    EXPECT_EQ(lmainte_get_domain_data(5, count, 5, out_), 0);
    EXPECT_EQ(client_calls(), fetch_of(2, {"current_domain_info_05"}));
    EXPECT_TRUE(is_same(expected(5), out_[0]));
    EXPECT_TRUE(is_untouched(1));
  }
}

TEST_F(LmainteGetDomainData, ReadsTheRecordsInOrder) {
  lmainte_get_domain_data(-1, 3, 1, out_);
  EXPECT_EQ(client_calls(),
            fetch_of(2, {"current_domain_info_00", "current_domain_info_01", "current_domain_info_02"}));
  EXPECT_EQ(doubles::trace_of(0x110C0420), (Lines{"100 110C0420", "100 110C0421"}));
  EXPECT_EQ(doubles::trace().front(), "100 110C0420");
  EXPECT_EQ(doubles::trace().back(), "100 110C0421");
}

struct DomainArgumentRow {
  const char *says;
  int32_t count;
  int32_t model;
  bool out;
  const char *error;
};

TEST_F(LmainteGetDomainData, RefusesBadArgumentsBeforeAnyDatabase) {
  constexpr DomainArgumentRow kRows[] = {
      {"count 0", 0, 3, true, "805 110C1421 0"},
      {"no records to fill", 24, 3, false, "805 110C1421 24"},
      {"count 0 before the model", 0, 7, true, "805 110C1421 0"},
      {"model 0", 1, 0, true, "805 110C1422 0"},
      {"model 7", 1, 7, true, "805 110C1422 7"},
      {"a negative model", 1, -1, true, "805 110C1422 -1"},
      {"a model that looks like 3 in its low byte", 1, 259, true, "805 110C1422 259"},
  };
  for (const auto &row : kRows) {
    machine().start();
    EXPECT_EQ(lmainte_get_domain_data(-1, row.count, row.model, row.out ? out_ : nullptr), 8) << row.says;
    EXPECT_EQ(machine().calls, Lines{}) << row.says;
    EXPECT_EQ(doubles::trace(), (Lines{"100 110C0420", row.error, "100 110C0421"})) << row.says;
    EXPECT_TRUE(all_untouched()) << row.says;
  }
}

TEST_F(LmainteGetDomainData, RefusesWhatNoTableCanHoldBeforeAnyDatabase) {
  const std::pair<int32_t, int32_t> rows[] = {{-1, -1}, {-2, 1}, {-2, 24}, {INT32_MIN, 1}, {-1, INT32_MIN}};
  for (const auto &[domain, count] : rows) {
    machine().start();
    EXPECT_EQ(lmainte_get_domain_data(domain, count, 3, out_), 8) << domain << " " << count;
    EXPECT_EQ(client_calls(), Lines{});
    EXPECT_EQ(doubles::trace_of(0x110C0420), (Lines{"100 110C0420", "805 110C1423", "100 110C0421"}));
    EXPECT_TRUE(all_untouched());
  }
}

TEST_F(LmainteGetDomainData, MissingRecordFailsBeforeAnythingIsWritten) {
  machine().records.erase({2, "current_domain_info_01"});
  EXPECT_EQ(lmainte_get_domain_data(-1, 3, 3, out_), 8);
  EXPECT_EQ(client_calls(), fetch_of(2, {"current_domain_info_00", "current_domain_info_01"}));
  EXPECT_EQ(doubles::trace_of(0x110C0420), (Lines{"100 110C0420", "805 110C1423", "100 110C0421"}));
  EXPECT_TRUE(all_untouched());
  EXPECT_EQ(lmainte_get_domain_data(INT32_MAX, 1, 3, out_), 8);
}

TEST_F(LmainteGetDomainData, RecordOfAnotherSizeFails) {
  for (const size_t size : {1463U, 1465U, 0U}) {
    machine().records[{2, "current_domain_info_00"}] = {Bytes(size)};
    EXPECT_EQ(lmainte_get_domain_data(-1, 3, 3, out_), 8) << size;
    EXPECT_TRUE(all_untouched());
  }
}

TEST_F(LmainteGetDomainData, EmptyRecordFailsAtItsDomain) {
  machine().records[{2, "current_domain_info_01"}] = {Bytes(1464), 0, false};
  EXPECT_EQ(lmainte_get_domain_data(-1, 3, 3, out_), 8);
  EXPECT_TRUE(is_same(expected(0), out_[0]));
  EXPECT_TRUE(is_untouched(1));
  EXPECT_TRUE(is_untouched(2));
  EXPECT_EQ(doubles::trace_of(0x110C0420), (Lines{"100 110C0420", "805 110C1424 1 1", "100 110C0421"}));

  EXPECT_EQ(lmainte_get_domain_data(1, 3, 3, out_), 8);
  EXPECT_EQ(doubles::trace_of(0x110C0420).at(4), "805 110C1424 1 0");
}

TEST_F(LmainteGetDomainData, EveryCallOfTheClientCounts) {
  doubles::expect_every_call_to_count(
      fetch_of(2, {"current_domain_info_00", "current_domain_info_01"}),
      [this] { return lmainte_get_domain_data(-1, 2, 3, out_); }, [this] { return all_untouched(); });
}

TEST_F(LmainteGetDomainData, WorksInsideTheCallersOwnSession) {
  doubles::within_sessions({2}, [this] { EXPECT_EQ(lmainte_get_domain_data(5, 1, 3, out_), 0); });
  EXPECT_TRUE(is_same(expected(5), out_[0]));
}

}  // namespace
