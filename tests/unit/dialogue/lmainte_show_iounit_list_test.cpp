#include <gtest/gtest.h>

#include "tests/unit/dialogue/show_test.h"

namespace {

using doubles::machine;
using doubles::UnitRow;

constexpr UnitRow kReasons[] = {
    {"/all well", 0x80000000, 0x80000000},   {"/bit 29", 0x80000000, 0x20000000},
    {"/bit 28", 0x80000000, 0x10000000},     {"/both bits", 0x80000000, 0x30000000},
    {"/other bits", 0x80000000, 0xCFFFFFFF}, {"/its own bits", 0xB0000000, 0x00000000},
    {"/all ones", 0xFFFFFFFF, 0xFFFFFFFF},   {"/ones, well", 0xFFFFFFFF, 0x00000000},
    {"/absent", 0x00000000, 0x00000000},     {"/absent, faulted", 0x7FFFFFFF, 0xFFFFFFFF},
};

class LmainteShowIounitList : public doubles::ShowTest {
 protected:
  // A board is listed by its IOU, whatever its CMU is like.
  SbData board(const UnitRow &row) {
    SbData board = {};
    board.cmu = unit<CmuData>("/not this one", 0, 0xFFFFFFFF);
    board.iou = unit<IouData>(row.name, row.status, 0);
    board.iou.parts_status = static_cast<int32_t>(row.condition);
    return board;
  }
  IoxListData expansion(const UnitRow &first, const UnitRow &second) {
    IoxListData iox;
    std::memset(&iox, 0xB5, sizeof iox);
    iox.boat[0] = unit<IoxBoatData>(first.name, first.status, first.condition);
    iox.boat[1] = unit<IoxBoatData>(second.name, second.status, second.condition);
    return iox;
  }

  std::string listed(const std::vector<ListLine> &lines) {
    const SbData no_board = {};
    const IoxListData no_iox = {};
    return page_of([&] {
      return lmainte_show_iounit_list(-1, static_cast<uint32_t>(boards_.size()), static_cast<uint32_t>(iox_.size()),
                                      boards_.empty() ? &no_board : boards_.data(),
                                      iox_.empty() ? &no_iox : iox_.data(), lines.data());
    });
  }
  std::string listed_under_a_head(uint32_t count) {
    return listed(doubles::list_lines("I/O units", "I/O units", count));
  }

  void put_boards() { boards_ = {board({"/IOU#0", kInstalled}), board({"/IOU#1", 0})}; }
  void put_first_expansion() {
    iox_ = {expansion({"/IOX@0/IOB#0", kInstalled}, {"/IOX@0/IOB#1", kInstalled, 0x10000000})};
  }
  void clear() {
    boards_.clear();
    iox_.clear();
  }

  std::string boards_for_every_reason() {
    for (const auto &row : kReasons) boards_.push_back(board(row));
    boards_.push_back(board({"/mainte status", kInstalled}));
    boards_.back().iou.mainte_status = 0x20000000;
    boards_.push_back(board({"/CMU is faulted", kInstalled}));
    boards_.back().cmu.status = static_cast<int32_t>(0xB0000000);
    return listed({doubles::end_mark()});
  }
  std::string boats_for_every_reason() {
    for (size_t i = 0; i < std::size(kReasons); i += 2) iox_.push_back(expansion(kReasons[i], kReasons[i + 1]));
    return listed({doubles::end_mark()});
  }

  std::vector<SbData> boards_;
  std::vector<IoxListData> iox_;
};

TEST_F(LmainteShowIounitList, ShowsTheUnitsOfBoardsThenTheBoats) {
  doubles::expect_golden("lmainte_show_iounit_list",
                         {{"boards and I/O expansion units",
                           [&] {
                             put_boards();
                             put_first_expansion();
                             iox_.push_back(expansion({"/IOX@1/IOB#0", 0}, {"/IOX@1/IOB#1", kInstalled, 0x20000000}));
                             return listed_under_a_head(6);
                           }},
                          {"boards alone",
                           [&] {
                             clear();
                             put_boards();
                             return listed_under_a_head(2);
                           }},
                          {"I/O expansion units alone",
                           [&] {
                             clear();
                             put_first_expansion();
                             return listed_under_a_head(2);
                           }},
                          {"no units",
                           [&] {
                             clear();
                             return listed_under_a_head(0);
                           }},
                          {"what makes the state of an IOU",
                           [&] {
                             clear();
                             return boards_for_every_reason();
                           }},
                          {"what makes the state of an I/O boat", [&] {
                             clear();
                             return boats_for_every_reason();
                           }}});
}

TEST_F(LmainteShowIounitList, AsksForTheLocationsInOrder) {
  put_boards();
  put_first_expansion();
  listed({doubles::end_mark()});
  // Each board's CMU has got a unit id before its IOU.
  EXPECT_EQ(machine().calls_of({"name"}), (doubles::Lines{"name 2684354560:2 form 0", "name 2684354560:4 form 0",
                                                          "name 2684354560:5 form 0", "name 2684354560:6 form 0"}));
}

TEST_F(LmainteShowIounitList, BoatWithoutALocationEndsTheList) {
  put_boards();
  put_first_expansion();
  machine().names.erase({0xA0000000, 5});
  EXPECT_EQ(lmainte_show_iounit_list(-1, 2, 1, boards_.data(), iox_.data(), no_lines()), 8);
  EXPECT_EQ(machine().calls_of({"name"}).size(), 3u);
  EXPECT_EQ(machine().pages, doubles::Lines{});
}

}  // namespace
