// What is particular to the operations on system boards: how board and division come into the argument line.

#include <gtest/gtest.h>

#include "tests/unit/doubles/library_test.h"
#include "tests/unit/ops/operations.h"

namespace {

using doubles::a_unit;
using doubles::Lines;
using doubles::machine;

class BoardOperations : public doubles::LibraryTest {
 protected:
  void SetUp() override {
    LibraryTest::SetUp();
    machine().children_are_real = true;
  }

  // The argument line that was run last, blanks between its words.
  static std::string line() {
    std::string words = machine().executed().arguments;
    words.erase(0, words.find('\n') + 1);
    for (auto &c : words)
      if (c == '\n') c = ' ';
    if (!words.empty()) words.pop_back();
    return words;
  }
};

struct NumberRow {
  int32_t number;
  const char *tested, *set_up, *deleted, *all_deleted;
};

TEST_F(BoardOperations, BoardNumberIsTheSecondWordWithItsSign) {
  constexpr NumberRow kRows[] = {
      {0, "-q -y 0", "-m n -x 1 sb 0", "-q y -c unassign 00-0", "-q y -c unassign 00-0 00-1 00-2 00-3"},
      {9, "-q -y 9", "-m n -x 1 sb 9", "-q y -c unassign 09-0", "-q y -c unassign 09-0 09-1 09-2 09-3"},
      {15, "-q -y 15", "-m n -x 1 sb 15", "-q y -c unassign 15-0", "-q y -c unassign 15-0 15-1 15-2 15-3"},
      {100, "-q -y 100", "-m n -x 1 sb 100", "-q y -c unassign 100-0", "-q y -c unassign 100-0 100-1 100-2 100-3"},
      {-1, "-q -y -1", "-m n -x 1 sb -1", "-q y -c unassign -1-0", "-q y -c unassign -1-0 -1-1 -1-2 -1-3"},
      {INT32_MIN, "-q -y -2147483648", "-m n -x 1 sb -2147483648", "-q y -c unassign -2147483648-0",
       "-q y -c unassign -2147483648-0 -2147483648-1 -2147483648-2 -2147483648-3"},
  };
  for (const auto &row : kRows) {
    const UnitRecord board = a_unit(16, row.number, "/CMU#0");
    EXPECT_EQ(lmainte_test_sb(10, &board), 0);
    EXPECT_EQ(line(), row.tested);
    EXPECT_EQ(lmainte_set_xsb(1, 0, 10, &board), 0);
    EXPECT_EQ(line(), row.set_up);
    EXPECT_EQ(lmainte_clear_xsb(1, 10, &board), 0);
    EXPECT_EQ(line(), row.deleted);
    EXPECT_EQ(lmainte_clear_xsb(4, 10, &board), 0);
    EXPECT_EQ(line(), row.all_deleted);
  }
}

TEST_F(BoardOperations, AnyTypeOfUnitIsTestedSetUpAndDeleted) {
  const UnitRecord unit = a_unit(-5, 2, "");
  EXPECT_EQ(lmainte_test_sb(10, &unit), 0);
  EXPECT_EQ(doubles::trace_of(0x110C81C0).at(1), "100 110C81C2 -5 2");
  EXPECT_EQ(lmainte_set_xsb(4, 0, 10, &unit), 0);
  EXPECT_EQ(doubles::trace_of(0x110C81A0).at(1), "100 110C81A2 -5 2");
  EXPECT_EQ(lmainte_clear_xsb(4, 10, &unit), 0);
  EXPECT_EQ(doubles::trace_of(0x110C81B0).at(1), "100 110C81B2 -5 2");
}

// ---- set-up

struct DivisionRow {
  const char *says;
  int32_t division, mirror;
};

TEST_F(BoardOperations, SetUpRefusesWhatIsNotOffered) {
  constexpr DivisionRow kRows[] = {
      {"division 4, mirrored", 4, 1}, {"mirror 2", 1, 2},
      {"mirror -1", 1, -1},           {"division 4, mirror 2", 4, 2},
      {"division 2", 2, 0},           {"division 2, mirrored", 2, 1},
      {"division 0", 0, 0},           {"division 0, mirrored", 0, 1},
      {"a division of -1", -1, 0},    {"division 257", 257, 0},
      {"mirror 256", 1, 256},
  };
  for (const auto &row : kRows) {
    machine().start();
    EXPECT_EQ(lmainte_set_xsb(row.division, row.mirror, 10, &doubles::the_board()), 8) << row.says;
    EXPECT_EQ(machine().calls, Lines{}) << row.says;
    const std::string error = "805 110CB1A3 " + std::to_string(row.division) + " " + std::to_string(row.mirror);
    EXPECT_EQ(doubles::trace(), (Lines{"100 110C81A0", "100 110C81A2 16 3", "100 110C81A3 8", error, "100 110C81A1"}))
        << row.says;
  }
}

// ---- links

TEST_F(BoardOperations, CmusAndIousAreLinked) {
  const UnitRecord iou = a_unit(80, 1, "/IOU#1");
  EXPECT_EQ(lmainte_link_board(1, 10, &iou), 0);
  EXPECT_EQ(line(), "-u /IOU#1 -c up");
  EXPECT_EQ(doubles::trace_of(0x110C81E0),
            (Lines{"100 110C81E0", "100 110C81E2 80 1", "100 110C81E3 15", "100 110C81E4 0", "100 110C81E1"}));
}

TEST_F(BoardOperations, NoOtherTypeOfUnitIsLinked) {
  for (const int32_t type : {0, 15, 17, 32, 40, 79, 81, 104, 161, 272, -16, INT32_MIN}) {
    machine().start();
    const UnitRecord unit = a_unit(type, 1, "/CMU#1");
    EXPECT_EQ(lmainte_link_board(1, 10, &unit), 8) << type;
    EXPECT_EQ(machine().calls, Lines{}) << type;
    const std::string told = std::to_string(type);
    EXPECT_EQ(doubles::trace(), (Lines{"100 110C81E0", "100 110C81E2 " + told + " 1", "100 110C81E3 15",
                                       "805 110CB1E3 " + told, "100 110C81E1"}));
  }
}

TEST_F(BoardOperations, TypeIsCheckedBeforeTheDirection) {
  const UnitRecord unit = a_unit(161, 1, "/PSU#1");
  EXPECT_EQ(lmainte_link_board(7, 10, &unit), 8);
  EXPECT_EQ(doubles::trace().at(3), "805 110CB1E3 161");
}

TEST_F(BoardOperations, LineOfALinkIsAFormatItself) {
  const UnitRecord unit = a_unit(16, 1, "/CMU%%1");
  EXPECT_EQ(lmainte_link_board(0, 10, &unit), 0);
  EXPECT_EQ(line(), "-u /CMU%1 -c down");
}

TEST_F(BoardOperations, LineOfALinkIsCutAt127Characters) {
  const std::string name(127, 'x');
  const UnitRecord unit = a_unit(16, 1, name.c_str());
  EXPECT_EQ(lmainte_link_board(1, 10, &unit), 0);
  EXPECT_EQ(line(), "-u " + std::string(124, 'x'));
  const UnitRecord shorter = a_unit(16, 1, name.substr(0, 119).c_str());
  EXPECT_EQ(lmainte_link_board(1, 10, &shorter), 0);
  EXPECT_EQ(line(), "-u " + std::string(119, 'x') + " -c u");
  EXPECT_EQ(line().size(), 127u);
}

}  // namespace
