#include <gtest/gtest.h>

#include "tests/unit/dialogue/flagged_units.h"

namespace {

using doubles::machine;

class LmainteShowFantrayList : public doubles::FlaggedUnits<FantrayData> {
 protected:
  static std::string listed(const std::vector<FantrayData> &units, const std::vector<ListLine> &lines) {
    const auto count = static_cast<uint32_t>(units.size());
    return page_of([&] { return lmainte_show_fantray_list(-1, count, units.data(), lines.data()); });
  }

  // Of its fans a tray's own state says nothing.
  std::vector<FantrayData> tray_with_faulted_fan() {
    auto trays = units({{"/one is faulted", kInstalled}});
    trays[0].fan_count = 1;
    trays[0].fan[0] = {static_cast<int32_t>(0xA0000000), 0x20};
    return trays;
  }
};

TEST_F(LmainteShowFantrayList, ShowsEveryUnitUnderItsNumber) {
  const auto lines = [](uint32_t count) { return doubles::list_lines("Fan trays", "fan trays", count); };
  const FantrayData none = {};
  doubles::expect_golden(
      "lmainte_show_fantray_list",
      {
          {"a head, a unit of each state, and a foot",
           [&] {
             return listed(units_of_each_state({"/FAN_A#0", "/FAN_A#1", "/FAN_B#0", "/FAN_B#1"}), lines(4));
           }},
          {"no units",
           [&] { return page_of([&] { return lmainte_show_fantray_list(-1, 0, &none, lines(0).data()); }); }},
          {"what makes a state", [&] { return listed(units_for_every_reason(), {doubles::end_mark()}); }},
          {"fans of the tray", [&] { return listed(tray_with_faulted_fan(), {doubles::end_mark()}); }},
      });
}

TEST_F(LmainteShowFantrayList, CountsBeyondNinetyNine) {
  const std::vector<FantrayData> hundred(100, unit<FantrayData>("/FAN_A#0", 0, 0));
  const auto page = listed(hundred, {doubles::end_mark()});
  const std::string last = "99. FAN_A#0         Not installed\n100. FAN_A#0         Not installed\n";
  EXPECT_EQ(page.substr(page.size() - last.size()), last);
}

TEST_F(LmainteShowFantrayList, AsksForTheLocationOfEachUnit) {
  listed(units({{"/a", kInstalled}, {"/b", 0}}), {doubles::end_mark()});
  EXPECT_EQ(machine().calls_of({"name"}), (doubles::Lines{"name 2684354560:1 form 0", "name 2684354560:2 form 0"}));
}

}  // namespace
