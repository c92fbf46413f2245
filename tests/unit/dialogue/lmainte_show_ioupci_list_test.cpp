#include <gtest/gtest.h>

#include "tests/unit/dialogue/slots_test.h"

namespace {

using doubles::machine;

class LmainteShowIoupciList : public doubles::SlotsTest {
 protected:
  void SetUp() override {
    SlotsTest::SetUp();
    std::memset(&board_, 0xB5, sizeof board_);
    std::memset(board_.iou.reserved, 0, sizeof board_.iou.reserved);
  }

  void put(uint32_t k, const doubles::Slot &slot) { put_slot(board_.iou.reserved + size_t{10} * k, slot); }

  std::string listed(uint32_t slots, const std::vector<ListLine> &lines) {
    return page_of([&] { return lmainte_show_ioupci_list(-1, slots, &board_, lines.data()); });
  }

  std::string all_eight() {
    for (uint32_t k = 0; k < 8; ++k) put(k, {"/IOU#0/PCI#" + std::to_string(k), kInstalled, k, kOn});
    return listed(8, {doubles::end_mark()});
  }
  std::string numbers_and_powers() {
    put(0, {"/bit 30 alone", kInstalled, 7, 0x40000000});
    put(1, {"/every bit but 30", kInstalled, 7, 0xBFFFFFFF});
    put(2, {"/no bit", kInstalled, 7, 0});
    put(3, {"/all bits", 0xFFFFFFFF, 7, 0xFFFFFFFF});
    put(4, {"/negative number", kInstalled, 0xFFFFFFFF, kOn});
    put(5, {"/greatest number", kInstalled, 0x7FFFFFFF, kOn});
    put(6, {"/least number", kInstalled, 0x80000000, kOn});
    put(7, {"/twenty-one characters", kInstalled, 7, kOn});
    return listed(8, {doubles::end_mark()});
  }

  SbData board_;
};

TEST_F(LmainteShowIoupciList, ShowsInstalledSlots) {
  doubles::expect_golden("lmainte_show_ioupci_list", {{"no slot is installed",
                                                       [&] {
                                                         put(1, {"/not installed", 0x7FFFFFFF, 1, kOn});
                                                         return listed(8, lines());
                                                       }},
                                                      {"slots 0 and 2 of three",
                                                       [&] {
                                                         put(0, {"/IOU#0/PCI#0", kInstalled, 0, kOn});
                                                         put(2, {"/IOU#0/PCI#2", kInstalled, 2, 0});
                                                         put(3, {"/not asked for", kInstalled, 3, kOn});
                                                         return listed(3, lines());
                                                       }},
                                                      {"no slots are asked for", [&] { return listed(0, lines()); }},
                                                      {"all eight", [&] { return all_eight(); }},
                                                      {"number and power", [&] { return numbers_and_powers(); }}});
}

TEST_F(LmainteShowIoupciList, AsksForTheLocationsOfInstalledSlotsAlone) {
  put(0, {"/a", kInstalled, 0, 0});
  put(1, {"/b", 0, 0, 0});
  put(2, {"/c", kInstalled, 0, 0});
  listed(3, {doubles::end_mark()});
  EXPECT_EQ(machine().calls_of({"name"}), (doubles::Lines{"name 2684354560:1 form 0", "name 2684354560:3 form 0"}));
}

}  // namespace
