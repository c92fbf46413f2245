#include <gtest/gtest.h>

#include "tests/unit/dialogue/flagged_units.h"

namespace {

using doubles::machine;

class LmainteShowPsuList : public doubles::FlaggedUnits<PsuData> {
 protected:
  static std::string listed(const std::vector<PsuData> &units, const std::vector<ListLine> &lines) {
    const auto count = static_cast<uint32_t>(units.size());
    return page_of([&] { return lmainte_show_psu_list(-1, count, units.data(), lines.data()); });
  }

  // One leading slash is dropped.
  std::vector<PsuData> units_with_locations() {
    return units({{"/sixteen letters_", kInstalled},
                  {"/seventeen letters", kInstalled},
                  {"/BP_A#0/PSU#1", kInstalled},
                  {"//PSU#2", kInstalled},
                  {"PSU#3", kInstalled},
                  {"/%d%s", kInstalled},
                  {"/", kInstalled}});
  }
};

TEST_F(LmainteShowPsuList, ShowsEveryUnitUnderItsNumber) {
  const auto lines = [](uint32_t count) { return doubles::list_lines("Power supplies", "power supplies", count); };
  const PsuData none = {};
  doubles::expect_golden(
      "lmainte_show_psu_list",
      {
          {"a head, a unit of each state, and a foot",
           [&] {
             return listed(units_of_each_state({"/PSU#0", "/PSU#1", "/PSU#2", "/PSU#3"}), lines(4));
           }},
          {"no units", [&] { return page_of([&] { return lmainte_show_psu_list(-1, 0, &none, lines(0).data()); }); }},
          {"what makes a state", [&] { return listed(units_for_every_reason(), {doubles::end_mark()}); }},
          {"locations", [&] { return listed(units_with_locations(), {doubles::end_mark()}); }},
      });
}

TEST_F(LmainteShowPsuList, CountsBeyondNinetyNine) {
  const std::vector<PsuData> hundred(100, unit<PsuData>("/PSU#0", 0, 0));
  const auto page = listed(hundred, {doubles::end_mark()});
  const std::string last = "99. PSU#0           Not installed\n100. PSU#0           Not installed\n";
  EXPECT_EQ(page.substr(page.size() - last.size()), last);
}

TEST_F(LmainteShowPsuList, AsksForTheLocationOfEachUnit) {
  listed(units({{"/a", kInstalled}, {"/b", 0}}), {doubles::end_mark()});
  EXPECT_EQ(machine().calls_of({"name"}), (doubles::Lines{"name 2684354560:1 form 0", "name 2684354560:2 form 0"}));
}

}  // namespace
