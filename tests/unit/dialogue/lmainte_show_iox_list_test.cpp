// The empty lists: of I/O expansion units, and of their power supplies.

#include <functional>

#include <gtest/gtest.h>

#include "tests/unit/doubles/library_test.h"

namespace {

using doubles::Lines;
using doubles::machine;

struct EmptyList {
  const char *name;
  int32_t (*show)(int32_t, const void *, const ListLine *);
};

void PrintTo(const EmptyList &list, std::ostream *out) {
  *out << list.name;
}

class EmptyLists : public doubles::LibraryTest, public ::testing::WithParamInterface<EmptyList> {
 protected:
  int32_t show(const void *units = nullptr) { return GetParam().show(-1, units, lines_); }

  const ListLine lines_[2] = {doubles::head("I/O expansion units\n"), doubles::end_mark()};
};

INSTANTIATE_TEST_SUITE_P(Of, EmptyLists,
                         ::testing::Values(EmptyList{"iox", lmainte_show_iox_list},
                                           EmptyList{"ioxpsu", lmainte_show_ioxpsu_list}),
                         [](const auto &row) { return row.param.name; });

TEST_P(EmptyLists, ShowsAnEmptyFileOfTheCurrentDirectory) {
  EXPECT_EQ(show(), 0);
  EXPECT_EQ(machine().pages, Lines{""});
  EXPECT_EQ(machine().pages_path, "mainte_fru_list.4711");
  EXPECT_EQ(machine().calls,
            (Lines{"fopen mainte_fru_list.4711 w", "fclose mainte_fru_list.4711", "sigprocmask block all asking",
                   "fork", "sigprocmask set", "waitpid 500", "system rm -f mainte_fru_list.4711"}));
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C0150", "100 110C02E0", "100 110C02E1 0", "100 110C0151"}));
}

TEST_P(EmptyLists, UnitsAreNotLookedAt) {
  EXPECT_EQ(show(reinterpret_cast<const void *>(1)), 0);
  EXPECT_EQ(machine().pages, Lines{""});
}

TEST_P(EmptyLists, PagerIsGivenTheFile) {
  machine().children_are_real = true;
  EXPECT_EQ(show(), 0);
  EXPECT_STREQ(machine().executed().arguments, "/bin/busybox\nmore\nmainte_fru_list.4711\n2>\n/dev/null\n");
}

TEST_P(EmptyLists, MissingLinesShowNothing) {
  EXPECT_EQ(GetParam().show(-1, this, nullptr), 0);
  EXPECT_EQ(machine().calls, Lines{});
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C0150", "805 110C1151", "100 110C0151"}));
}

TEST_P(EmptyLists, FileThatCannotBeCreatedIsNotShown) {
  machine().fail("fopen", 1, EROFS);
  EXPECT_EQ(show(), 0);
  EXPECT_EQ(machine().calls, (Lines{"fopen mainte_fru_list.4711 w"}));
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C0150", "800A 110C1152 30", "100 110C0151"}));
}

TEST_P(EmptyLists, PagerThatFailsIsNoFailureAndTheFileGoes) {
  machine().programs = {doubles::exits(127)};
  EXPECT_EQ(show(), 0);
  EXPECT_EQ(machine().calls.back(), "system rm -f mainte_fru_list.4711");
  EXPECT_EQ(doubles::trace_of(0x110C0150), (Lines{"100 110C0150", "100 110C0151"}));
}

TEST_P(EmptyLists, ShellThatFailsIsNoFailure) {
  machine().fail("system", 1, EAGAIN);
  EXPECT_EQ(show(), 0);
  machine().disk.clear();
}

}  // namespace
