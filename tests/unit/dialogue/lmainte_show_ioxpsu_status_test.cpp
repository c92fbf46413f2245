#include <gtest/gtest.h>

#include "tests/unit/doubles/library_test.h"

namespace {

using doubles::Lines;
using doubles::machine;

class LmainteShowIoxpsuStatus : public doubles::LibraryTest {
 protected:
  int32_t show() { return lmainte_show_ioxpsu_status(-1, this); }
};

TEST_F(LmainteShowIoxpsuStatus, LeavesAFileAndShowsAndRecordsNothing) {
  EXPECT_EQ(doubles::printed_by([this] { EXPECT_EQ(show(), 0); }), "");
  EXPECT_EQ(machine().disk.count("tmp"), 1u);
  EXPECT_EQ(doubles::trace(), Lines{});
  EXPECT_EQ(machine().calls_of({"fork"}), Lines{});
  machine().disk.clear();
}

TEST_F(LmainteShowIoxpsuStatus, ShellComesFirstThenAScratchFileIsTriedOut) {
  EXPECT_EQ(show(), 0);
  EXPECT_EQ(machine().calls, (Lines{"system ps | grep ps > tmp", "fopen /tmp/mainte_fru_list.4711 w",
                                    "fclose /tmp/mainte_fru_list.4711", "remove /tmp/mainte_fru_list.4711"}));
  machine().disk.erase("tmp");
}

TEST_F(LmainteShowIoxpsuStatus, MissingRecordFailsAtOnce) {
  EXPECT_EQ(lmainte_show_ioxpsu_status(-1, nullptr), 8);
  EXPECT_EQ(machine().calls, Lines{});
  EXPECT_EQ(doubles::trace(), Lines{});
}

TEST_F(LmainteShowIoxpsuStatus, ScratchFileThatCannotBeMadeFails) {
  machine().fail("fopen", 1, EACCES);
  EXPECT_EQ(show(), 8);
  EXPECT_EQ(machine().calls.size(), 2u);
  EXPECT_EQ(doubles::trace(), Lines{});
  machine().disk.clear();
}

TEST_F(LmainteShowIoxpsuStatus, SucceedsWhateverElseFails) {
  machine().fail("system", 1);
  machine().fail("remove", 1);
  EXPECT_EQ(show(), 0);
  machine().disk.clear();
}

}  // namespace
