#include <gtest/gtest.h>

#include "tests/unit/dialogue/flagged_units.h"

namespace {

using doubles::machine;

class LmainteShowPsuStatus : public doubles::FlaggedUnits<PsuData> {
 protected:
  // The tables of these units, one after the other.
  static std::string tabled(const std::vector<PsuData> &units, const std::vector<ListLine> &lines) {
    std::string pages;
    for (const auto &unit : units) pages += page_of([&] { return lmainte_show_psu_status(-1, &unit, lines.data()); });
    return pages;
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

TEST_F(LmainteShowPsuStatus, ShowsTheUnit) {
  doubles::expect_golden(
      "lmainte_show_psu_status",
      {
          {"a head, a unit of each state, and a foot",
           [&] {
             return tabled(units_of_each_state({"/PSU#0", "/PSU#1", "/PSU#2", "/PSU#3"}),
                           doubles::table_lines("Power supply"));
           }},
          {"what makes a state", [&] { return tabled(units_for_every_reason(), {doubles::end_mark()}); }},
          {"locations", [&] { return tabled(units_with_locations(), {doubles::end_mark()}); }},
      });
}

TEST_F(LmainteShowPsuStatus, AsksForTheLocation) {
  tabled(units({{"/a", kInstalled}}), {doubles::end_mark()});
  EXPECT_EQ(machine().calls_of({"name"}), (doubles::Lines{"name 2684354560:1 form 0"}));
}

}  // namespace
