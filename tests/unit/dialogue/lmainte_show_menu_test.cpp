#include <gtest/gtest.h>

#include "tests/unit/doubles/library_test.h"

namespace {

using doubles::end_mark;
using doubles::line;
using doubles::Lines;
using doubles::machine;

const char *const kPath = "/tmp/mainte_fru_list.4711";

uintptr_t text(const char *text) {
  return reinterpret_cast<uintptr_t>(text);
}

class LmainteShowMenu : public doubles::LibraryTest {
 protected:
  // The menu as the pager got it.
  std::string shown(const std::vector<ListLine> &lines) {
    machine().pages.clear();
    EXPECT_EQ(lmainte_show_menu(lines.data()), 0);
    EXPECT_EQ(machine().pages.size(), 1u);
    EXPECT_EQ(machine().pages_path, kPath);
    return machine().pages.empty() ? "" : machine().pages[0];
  }

  const ListLine menu_[3] = {line(0, "Maintenance\n"), line(0, " 1. Replace\n"), end_mark()};
};

TEST_F(LmainteShowMenu, ShowsEveryLineBeforeTheEnd) {
  EXPECT_EQ(shown({line(0, "a\n"), line(1, "b\n"), line(5, "c\n"), line(-2, "d\n"), line(0, "e\n"), end_mark()}),
            "a\nb\nc\nd\ne\n");
}

TEST_F(LmainteShowMenu, MenuWithoutLinesIsShownEmpty) {
  EXPECT_EQ(shown({end_mark()}), "");
}

TEST_F(LmainteShowMenu, NothingBehindTheEndIsShown) {
  EXPECT_EQ(shown({line(0, "a\n"), end_mark(), line(0, "b\n")}), "a\n");
}

TEST_F(LmainteShowMenu, FormatsALineWithItsTenValues) {
  EXPECT_EQ(shown({line(0, "%d %d %d %d %d %d %d %d %d %d\n", {1, 2, 3, 4, 5, 6, 7, 8, 9, 10}), end_mark()}),
            "1 2 3 4 5 6 7 8 9 10\n");
}

TEST_F(LmainteShowMenu, ValuesAreNumbersAndTexts) {
  EXPECT_EQ(shown({line(0, "%s is %d, %lu, %x%%\n", {text("it"), static_cast<uintptr_t>(-3), 44, 0xAB}), end_mark()}),
            "it is -3, 44, ab%\n");
}

TEST_F(LmainteShowMenu, PercentThatCameFromAValueStays) {
  EXPECT_EQ(shown({line(0, "%s\n", {text("%s %d %n")}), end_mark()}), "%s %d %n\n");
}

TEST_F(LmainteShowMenu, CutsALineAt1023Characters) {
  const std::string letters(1022, 'm');
  EXPECT_EQ(shown({line(0, "%s\n", {text(letters.c_str())}), line(0, "next\n"), end_mark()}), letters + "\nnext\n");
  const std::string one_more(1023, 'm');
  EXPECT_EQ(shown({line(0, "%s\n", {text(one_more.c_str())}), line(0, "next\n"), end_mark()}), one_more + "next\n");
  const std::string many(3000, 'm');
  EXPECT_EQ(shown({line(0, "%s\n", {text(many.c_str())}), line(0, "next\n"), end_mark()}), one_more + "next\n");
}

TEST_F(LmainteShowMenu, IsNotTranslated) {
  machine().catalogue["Maintenance\n"] = "Wartung\n";
  lmainte_show_menu(menu_);
  EXPECT_EQ(machine().pages, (Lines{"Maintenance\n 1. Replace\n"}));
  EXPECT_EQ(machine().looked_up, Lines{});
}

TEST_F(LmainteShowMenu, FileIsClosedBeforeItIsShownAndRemovedAfterwards) {
  EXPECT_EQ(lmainte_show_menu(menu_), 0);
  EXPECT_EQ(machine().calls,
            (Lines{std::string("fopen ") + kPath + " w", std::string("fclose ") + kPath, "sigprocmask block all asking",
                   "fork", "sigprocmask set", "waitpid 500", std::string("remove ") + kPath}));
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C8170", "100 110C02E0", "100 110C02E1 0", "100 110C8171"}));
}

TEST_F(LmainteShowMenu, FileIsNamedAfterTheProcessOfEachCall) {
  machine().pid = 99;
  lmainte_show_menu(menu_);
  EXPECT_EQ(machine().calls.front(), "fopen /tmp/mainte_fru_list.99 w");
}

TEST_F(LmainteShowMenu, MissingLinesFail) {
  EXPECT_EQ(lmainte_show_menu(nullptr), 8);
  EXPECT_EQ(machine().calls, Lines{});
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C8170", "805 110CB171", "100 110C8171"}));
}

TEST_F(LmainteShowMenu, FileThatCannotBeCreatedFails) {
  machine().fail("fopen", 1, EACCES);
  EXPECT_EQ(lmainte_show_menu(menu_), 8);
  EXPECT_EQ(machine().calls_of({"fork", "remove"}), Lines{});
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C8170", "800A 110CB172 13", "100 110C8171"}));
}

TEST_F(LmainteShowMenu, PagerThatFailsFailsAndTheFileIsRemoved) {
  machine().programs = {doubles::exits(127)};
  EXPECT_EQ(lmainte_show_menu(menu_), 8);
  EXPECT_EQ(machine().calls_of({"remove"}).size(), 1u);
  EXPECT_EQ(doubles::trace_of(0x110C8170), (Lines{"100 110C8170", "805 110CB173 8", "100 110C8171"}));
}

TEST_F(LmainteShowMenu, OperatorWhoLeavesEarlyIsNoFailure) {
  machine().programs = {doubles::exits(1)};
  EXPECT_EQ(lmainte_show_menu(menu_), 0);
}

TEST_F(LmainteShowMenu, FileThatCannotBeRemovedFails) {
  machine().fail("remove", 1, EBUSY);
  EXPECT_EQ(lmainte_show_menu(menu_), 8);
  EXPECT_EQ(doubles::trace_of(0x110C8170), (Lines{"100 110C8170", "800A 110CB174 -1 16", "100 110C8171"}));
  machine().disk.clear();
}

TEST_F(LmainteShowMenu, FileThatFailsToCloseIsShown) {
  machine().fail("fclose");
  EXPECT_EQ(lmainte_show_menu(menu_), 0);
  EXPECT_EQ(machine().pages.size(), 1u);
}

}  // namespace
