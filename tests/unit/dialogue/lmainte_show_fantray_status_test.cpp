#include <gtest/gtest.h>

#include "tests/unit/dialogue/flagged_units.h"

namespace {

using doubles::machine;

class LmainteShowFantrayStatus : public doubles::FlaggedUnits<FantrayData> {
 protected:
  // The tables of these units, one after the other.
  static std::string tabled(const std::vector<FantrayData> &units, const std::vector<ListLine> &lines) {
    std::string pages;
    for (const auto &unit : units)
      pages += page_of([&] { return lmainte_show_fantray_status(-1, &unit, lines.data()); });
    return pages;
  }

  // Of its fans a tray's own state says nothing.
  std::vector<FantrayData> tray_with_faulted_fan() {
    auto trays = units({{"/one is faulted", kInstalled}});
    trays[0].fan_count = 1;
    trays[0].fan[0] = {static_cast<int32_t>(0xA0000000), 0x20};
    return trays;
  }
};

TEST_F(LmainteShowFantrayStatus, ShowsTheUnit) {
  doubles::expect_golden(
      "lmainte_show_fantray_status",
      {
          {"a head, a unit of each state, and a foot",
           [&] {
             return tabled(units_of_each_state({"/FAN_A#0", "/FAN_A#1", "/FAN_B#0", "/FAN_B#1"}),
                           doubles::table_lines("Fan tray"));
           }},
          {"what makes a state", [&] { return tabled(units_for_every_reason(), {doubles::end_mark()}); }},
          {"fans of the tray", [&] { return tabled(tray_with_faulted_fan(), {doubles::end_mark()}); }},
      });
}

TEST_F(LmainteShowFantrayStatus, AsksForTheLocation) {
  tabled(units({{"/a", kInstalled}}), {doubles::end_mark()});
  EXPECT_EQ(machine().calls_of({"name"}), (doubles::Lines{"name 2684354560:1 form 0"}));
}

}  // namespace
