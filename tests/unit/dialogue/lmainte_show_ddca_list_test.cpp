#include <gtest/gtest.h>

#include "tests/unit/dialogue/ddc_units.h"

namespace {

using doubles::machine;

class LmainteShowDdcaList : public doubles::DdcUnits {
 protected:
  static std::string listed(const std::vector<BpUnitData> &units, const std::vector<ListLine> &lines) {
    const auto count = static_cast<uint32_t>(units.size());
    return page_of([&] { return lmainte_show_ddca_list(-1, count, units.data(), lines.data()); });
  }
};

TEST_F(LmainteShowDdcaList, ShowsEveryUnitUnderItsNumber) {
  const auto lines = [](uint32_t count) { return doubles::list_lines("DDC units", "DDC units", count); };
  const BpUnitData none = {};
  doubles::expect_golden(
      "lmainte_show_ddca_list",
      {{"a head, a unit of each state, and a foot", [&] { return listed(units_of_each_state(), lines(4)); }},
       {"no units", [&] { return page_of([&] { return lmainte_show_ddca_list(-1, 0, &none, lines(0).data()); }); }},
       {"what makes a state", [&] { return listed(units_for_every_reason(), {doubles::end_mark()}); }}});
}

TEST_F(LmainteShowDdcaList, AsksForTheLocationOfEachUnit) {
  listed(units({{"/a", kInstalled}, {"/b", 0}}), {doubles::end_mark()});
  EXPECT_EQ(machine().calls_of({"name"}), (doubles::Lines{"name 2684354560:1 form 0", "name 2684354560:2 form 0"}));
}

}  // namespace
