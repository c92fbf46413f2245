#include <gtest/gtest.h>

#include "tests/unit/dialogue/boards_test.h"

namespace {

using doubles::machine;
using doubles::UnitRow;

constexpr uint32_t kCmu = 0;
constexpr uint32_t kIou = 1;
constexpr uint32_t kBoth = 2;

class LmainteShowSbStatus : public doubles::BoardsTest {
 protected:
  static std::string tabled(uint32_t kind, const SbData &board,
                            const std::vector<ListLine> &lines = {doubles::end_mark()}) {
    return page_of([&] { return lmainte_show_sb_status(-1, kind, &board, lines.data()); });
  }
  static std::string tabled_under_a_head(uint32_t kind, const SbData &board) {
    return tabled(kind, board, doubles::table_lines("System board"));
  }

  void put(UnitData &module, const UnitRow &row) { module = unit<UnitData>(row.name, row.status, row.condition); }

  // Two CPU modules and three memory modules, of a CMU that is degraded.
  SbData board_with_modules() {
    SbData board = this->board("/CMU#0", "/IOU#0");
    set_cmu(board, kInstalled, 0x10000000, 0x20000000);
    put(board.cmu.cpum[0], {"/CPUM#0", kInstalled});
    put(board.cmu.cpum[3], {"/CPUM#3", kInstalled, 0x20000000});
    put(board.cmu.dimm[0], {"/MEM#00A", kInstalled});
    put(board.cmu.dimm[7], {"/MEM#03B", kInstalled, 0x10000000});
    put(board.cmu.dimm[31], {"/MEM#17B", kInstalled, 0x30000000});
    return board;
  }
  SbData board_with_all_modules() {
    SbData board = this->board("/CMU#0", "/IOU#0");
    for (uint32_t n = 0; n < 4; ++n) put(board.cmu.cpum[n], {("/CPUM#" + std::to_string(n)).c_str(), kInstalled});
    for (uint32_t n = 0; n < 32; ++n) put(board.cmu.dimm[n], {("/DIMM " + std::to_string(n)).c_str(), kInstalled});
    return board;
  }

  // The tables of a board's CMU in these states, one after the other.
  std::string states_of_a_cmu(const std::vector<UnitRow> &rows) {
    std::string pages;
    for (const auto &row : rows) {
      SbData one = board(row.name, "/x");
      set_cmu(one, row.status, row.condition);
      if (std::string(row.name) == "/parts bit 29") one.cmu.parts_status = 0x20000000;
      pages += tabled(kCmu, one);
    }
    return pages;
  }
  std::string states_of_an_iou(const std::vector<UnitRow> &rows) {
    std::string pages;
    for (const auto &row : rows) {
      SbData one = board("/x", row.name);
      set_iou(one, row.status, row.condition);
      if (std::string(row.name) == "/mainte status") one.iou.mainte_status = 0x20000000;
      pages += tabled(kIou, one);
    }
    return pages;
  }
  std::string states_of_a_module() {
    SbData one = board("/CMU#0", "/x");
    put(one.cmu.cpum[0], {"/all well", 0x80000000, 0x80000000});
    put(one.cmu.cpum[1], {"/bit 29", 0x80000000, 0x20000000});
    put(one.cmu.cpum[2], {"/bit 28", 0x80000000, 0x10000000});
    put(one.cmu.cpum[3], {"/all ones", 0xFFFFFFFF, 0x30000000});
    put(one.cmu.dimm[0], {"/both bits", 0x80000000, 0x30000000});
    put(one.cmu.dimm[1], {"/its own", 0xB0000000, 0});
    put(one.cmu.dimm[2], {"/made ones", 0xCFFFFFFF, 0xFFFFFFFF});
    put(one.cmu.dimm[3], {"/ones, 28", 0xFFFFFFFF, 0x10000000});
    put(one.cmu.dimm[4], {"/absent", 0x7FFFFFFF, 0x30000000});
    return tabled(kCmu, one);
  }
  std::string absent_cmu() {
    SbData one = board("/CMU#0", "/x");
    set_cmu(one, 0, 0x20000000);
    put(one.cmu.cpum[0], {"/CPUM#0", kInstalled});
    return tabled(kCmu, one);
  }
  std::string locations() {
    SbData one = board("/fourteen chars", "/x");
    put(one.cmu.cpum[0], {"/ten chars_", kInstalled});
    put(one.cmu.cpum[1], {"/eleven char", kInstalled});
    return tabled(kCmu, one);
  }
};

TEST_F(LmainteShowSbStatus, ShowsTheBoardAndItsInstalledModules) {
  doubles::expect_golden(
      "lmainte_show_sb_status",
      {{"a CMU with no module", [&] { return tabled_under_a_head(kCmu, board("/CMU#0", "/IOU#0")); }},
       {"a CMU with modules", [&] { return tabled_under_a_head(kCmu, board_with_modules()); }},
       {"an IOU", [&] { return tabled_under_a_head(kIou, board_with_modules()); }},
       {"both", [&] { return tabled_under_a_head(kBoth, board_with_modules()); }},
       {"a CMU with all modules", [&] { return tabled(kCmu, board_with_all_modules()); }},
       {"states of a CMU",
        [&] {
          return states_of_a_cmu({{"/all well", 0x80000000, 0x80000000},
                                  {"/bit 29", 0x80000000, 0x20000000},
                                  {"/bit 28", 0x80000000, 0x10000000},
                                  {"/both bits", 0x80000000, 0x30000000},
                                  {"/its own bits", 0xB0000000, 0xCFFFFFFF},
                                  {"/all ones", 0xFFFFFFFF, 0xFFFFFFFF},
                                  {"/made of ones", 0xCFFFFFFF, 0x30000000},
                                  {"/ones, well", 0xFFFFFFFF, 0},
                                  {"/absent", 0, 0x20000000},
                                  {"/absent, ones", 0x7FFFFFFF, 0xFFFFFFFF},
                                  {"/parts bit 29", 0x80000000, 0}});
        }},
       {"states of an IOU",
        [&] {
          return states_of_an_iou({{"/all well", 0x80000000, 0x80000000},
                                   {"/bit 29", 0x80000000, 0x20000000},
                                   {"/bit 28", 0x80000000, 0x10000000},
                                   {"/both bits", 0x80000000, 0x30000000},
                                   {"/its own bits", 0xB0000000, 0},
                                   {"/all ones", 0xFFFFFFFF, 0x30000000},
                                   {"/absent", 0x7FFFFFFF, 0x30000000},
                                   {"/mainte status", 0x80000000, 0}});
        }},
       {"states of a module", [&] { return states_of_a_module(); }},
       {"a CMU that is not installed", [&] { return absent_cmu(); }},
       {"locations", [&] { return locations(); }}});
}

TEST_F(LmainteShowSbStatus, AsksForTheOtherFormOfTheLocations) {
  SbData one = board("/CMU#0", "/IOU#0");
  put(one.cmu.cpum[1], {"/CPUM#1", kInstalled});
  put(one.cmu.dimm[2], {"/MEM#01A", kInstalled});
  const std::string cpum = std::to_string(one.cmu.cpum[1].unit_id[1]);
  const std::string dimm = std::to_string(one.cmu.dimm[2].unit_id[1]);
  const std::string iou = std::to_string(one.iou.unit_id[1]);
  tabled(kBoth, one);
  EXPECT_EQ(machine().calls_of({"name"}),
            (doubles::Lines{"name 2684354560:1 form 1", "name 2684354560:" + cpum + " form 1",
                            "name 2684354560:" + dimm + " form 1", "name 2684354560:" + iou + " form 1"}));
}

TEST_F(LmainteShowSbStatus, UnknownKindIsRefusedBeforeAllElse) {
  for (const uint32_t kind : {3U, 0xFFFFFFFFU}) {
    machine().start();
    EXPECT_EQ(lmainte_show_sb_status(-1, kind, nullptr, nullptr), 8);
    EXPECT_EQ(machine().calls, doubles::Lines{});
    EXPECT_EQ(
        doubles::trace(),
        (doubles::Lines{"100 110C8160", "805 110CB161 " + std::to_string(static_cast<int>(kind)), "100 110C8161"}));
  }
}

struct MissingRow {
  const char *says;
  uint32_t kind;
  int missing;  // the place of the location, in the order in which they are asked for
};

TEST_F(LmainteShowSbStatus, FirstUnitWithoutALocationEndsTheTable) {
  constexpr MissingRow kRows[] = {{"the CMU", kCmu, 1},          {"a CPU module", kCmu, 2},
                                  {"a memory module", kCmu, 4},  {"the IOU alone", kIou, 1},
                                  {"the CMU of both", kBoth, 1}, {"the IOU behind the modules", kBoth, 7}};
  for (const auto &row : kRows) {
    machine().start();
    const SbData board = board_with_modules();
    machine().fail("name", row.missing, 0, 77);
    EXPECT_EQ(lmainte_show_sb_status(-1, row.kind, &board, doubles::table_lines("x").data()), 8) << row.says;
    EXPECT_EQ(machine().calls_of({"name"}).size(), static_cast<size_t>(row.missing)) << row.says;
    EXPECT_EQ(machine().pages, doubles::Lines{}) << row.says;
    EXPECT_EQ(doubles::trace(), (doubles::Lines{"100 110C8160", "800A 110CB165 77", "100 110C8161"})) << row.says;
  }
}

}  // namespace
