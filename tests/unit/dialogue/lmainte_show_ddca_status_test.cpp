#include <gtest/gtest.h>

#include "tests/unit/dialogue/ddc_units.h"

namespace {

using doubles::machine;

class LmainteShowDdcaStatus : public doubles::DdcUnits {
 protected:
  // The tables of these units, one after the other.
  static std::string tabled(const std::vector<BpUnitData> &units, const std::vector<ListLine> &lines) {
    std::string pages;
    for (const auto &unit : units) pages += page_of([&] { return lmainte_show_ddca_status(-1, &unit, lines.data()); });
    return pages;
  }
};

TEST_F(LmainteShowDdcaStatus, ShowsTheUnit) {
  doubles::expect_golden(
      "lmainte_show_ddca_status",
      {{"a head, a unit of each state, and a foot",
        [&] { return tabled(units_of_each_state(), doubles::table_lines("DDC unit")); }},
       {"what makes a state", [&] { return tabled(units_for_every_reason(), {doubles::end_mark()}); }}});
}

TEST_F(LmainteShowDdcaStatus, AsksForTheLocation) {
  tabled(units({{"/a", kInstalled}}), {doubles::end_mark()});
  EXPECT_EQ(machine().calls_of({"name"}), (doubles::Lines{"name 2684354560:1 form 0"}));
}

}  // namespace
