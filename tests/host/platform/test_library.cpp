#include <cstring>

#include "include/lmainte.h"
#include "tests/host/platform/box_fixture.h"

namespace {

using LibraryInABox = BoxTest;

TEST_F(LibraryInABox, ReadsARunOfRecordsAndLeavesItsTrace) {
  store(4, "fru_psu_qe_info_03", "three");
  store(4, "fru_psu_qe_info_04", "four!");
  EXPECT_EQ(in_child([] {
              lmainte_access_entry *table = lmainte_db_make_access_table(3, 2, 5, "fru_psu_qe_info_%02d");
              const bool read = lmainte_db_get_data(LMAINTE_DB_FRU, table) == 0 &&
                                std::memcmp(table[0].data, "three", 5) == 0 &&
                                std::memcmp(table[1].data, "four!", 5) == 0;
              lmainte_db_free_access_table(table);
              return read ? 0 : 1;
            }),
            0);
  EXPECT_TRUE(lockable(4));
  const auto entries = box::TraceRing::read(place.trace());
  ASSERT_GT(entries.size(), 6U);
  EXPECT_EQ(entries.front().event, 0x110C03B0U);
  EXPECT_EQ(entries.back().event, 0x110C03C1U);
}

TEST_F(LibraryInABox, SeesARecordThatIsMissing) {
  EXPECT_EQ(in_child([] {
              lmainte_access_entry *table = lmainte_db_make_access_table(0, 1, 5, "current_psu_info");
              const int result = lmainte_db_get_data(LMAINTE_DB_CURRENT, table);
              lmainte_db_free_access_table(table);
              return result == -1 ? 0 : 1;
            }),
            0);
  int failures = 0;
  for (const box::TraceEntry &entry : box::TraceRing::read(place.trace())) {
    if (entry.level == 0x800A && entry.word_count == 4 && entry.words[2] == 0xFFFFFFFCU) ++failures;
  }
  EXPECT_EQ(failures, 1) << "the trace says that there is no such record";
}

}  // namespace
