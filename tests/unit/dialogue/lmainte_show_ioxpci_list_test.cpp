#include <gtest/gtest.h>

#include "tests/unit/dialogue/slots_test.h"

namespace {

using doubles::machine;

class LmainteShowIoxpciList : public doubles::SlotsTest {
 protected:
  // An expansion unit whose slots, from word 11 of its record on, are not installed.
  IoxBoatData boat(uint32_t status = kInstalled) {
    auto record = unit<IoxBoatData>("/IOX@0/IOB#0", status, 0);
    std::fill(record.word + 5, record.word + 75, 0u);
    return record;
  }

  // With slot 0 installed.
  IoxBoatData boat_with_slot(uint32_t status = kInstalled) {
    auto record = boat(status);
    put(record, 0, {"/IOX@0/IOB#0/PCI#0", kInstalled, 5, kOn});
    return record;
  }

  void put(IoxBoatData &boat, uint32_t k, const doubles::Slot &slot) {
    uint32_t words[81];
    std::memcpy(words, &boat, sizeof words);
    put_slot(words + 11 + size_t{10} * k, slot);
    std::memcpy(&boat, words, sizeof words);
  }

  static std::string listed(uint32_t slots, const IoxBoatData &boat, const std::vector<ListLine> &lines) {
    return page_of([&] { return lmainte_show_ioxpci_list(-1, slots, &boat, lines.data()); });
  }
  static std::string listed(uint32_t slots, const IoxBoatData &boat) {
    return listed(slots, boat, {doubles::end_mark()});
  }

  std::string slots_0_and_2() {
    auto record = boat_with_slot();
    put(record, 2, {"/IOX@0/IOB#0/PCI#2", kInstalled, 2, 0});
    put(record, 3, {"/not asked for", kInstalled, 3, kOn});
    return listed(3, record, lines());
  }
  std::string without_slot_0() {
    auto record = boat();
    put(record, 0, {"/not installed", 0x7FFFFFFF, 5, 0});
    put(record, 1, {"/IOX@0/IOB#0/PCI#1", kInstalled, 1, kOn});
    return listed(2, record);
  }
  std::string without_slots() {
    auto record = boat();
    put(record, 0, {"/not installed", 0, 5, kOn});
    return listed(7, record);
  }
  std::string all_seven() {
    auto record = boat();
    for (uint32_t k = 0; k < 7; ++k) put(record, k, {"/IOX@0/IOB#0/PCI#" + std::to_string(k), kInstalled, k, kOn});
    return listed(7, record);
  }
};

TEST_F(LmainteShowIoxpciList, ShowsTheExpansionUnitThenItsInstalledSlots) {
  doubles::expect_golden("lmainte_show_ioxpci_list",
                         {{"slots 0 and 2 of three", [&] { return slots_0_and_2(); }},
                          {"slot 0 is not installed", [&] { return without_slot_0(); }},
                          {"no slot is installed", [&] { return without_slots(); }},
                          {"no slots are asked for", [&] { return listed(0, boat_with_slot()); }},
                          {"the unit is not installed", [&] { return listed(1, boat_with_slot(0)); }},
                          {"all seven", [&] { return all_seven(); }}});
}

TEST_F(LmainteShowIoxpciList, AsksForTheUnitsLocationFirst) {
  listed(7, boat_with_slot());
  EXPECT_EQ(machine().calls_of({"name"}), (doubles::Lines{"name 2684354560:1 form 0", "name 2684354560:2 form 0"}));
}

TEST_F(LmainteShowIoxpciList, SlotWithoutALocationEndsTheList) {
  const auto record = boat_with_slot();
  machine().names.erase({0xA0000000, 2});
  EXPECT_EQ(lmainte_show_ioxpci_list(-1, 1, &record, no_lines()), 8);
  EXPECT_EQ(machine().pages, doubles::Lines{});
}

}  // namespace
