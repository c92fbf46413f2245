// Where units stand in the picture, in every model's chassis.
#include "host/watch/layout.h"

#include <gtest/gtest.h>

#include <set>

#include "tests/host/watch/scenes.h"

namespace {

using watch::Look;
using watch::Plan;
using watch::Spot;

constexpr int kPlenty = 100,
              kChassisRows = 16;  // of a terminal of 24 rows: without the frame, what happens, and the keys

struct LayoutCase {
  const char *says, *model;
  int rows;
};

class Layout : public testing::TestWithParam<LayoutCase> {};

TEST_P(Layout, HasEachUnitOnceInItsOwnCells) {
  const watch::Scene scene = scene_of(GetParam().model);
  const Plan plan = watch::plan_of(scene.server, watch::kLeastWidth, GetParam().rows);
  EXPECT_LE(plan.rows, GetParam().rows);
  std::set<std::size_t> units, boards;
  std::set<std::pair<int, int>> cells;
  for (const Spot &spot : plan.spots) {
    EXPECT_TRUE((spot.look == Look::kDomains ? boards : units).insert(spot.unit).second)
        << spot.unit << " stands twice";
    EXPECT_LT(spot.row, plan.rows);
    EXPECT_LE(spot.column + spot.width, watch::kLeastWidth);
    for (int i = 0; i < spot.width; ++i) {
      EXPECT_TRUE(cells.insert({spot.row, spot.column + i}).second) << spot.row << " " << spot.column;
    }
  }
  EXPECT_EQ(boards.size() * 4, scene.server.parts.size());
  for (std::size_t i = 0; i < scene.server.units.size(); ++i) {
    const watch::Unit &unit = scene.server.units[i];
    const bool is_fan = unit.name.find("/FAN#") != std::string::npos;
    const bool has_place = unit.carrier == watch::kNobody || (GetParam().rows == kPlenty && !is_fan);
    EXPECT_TRUE(!has_place || units.contains(i)) << unit.name;
    EXPECT_FALSE(is_fan && units.contains(i)) << unit.name;
  }
}

TEST_P(Layout, HasCaptionsThatCoverNothing) {
  const watch::Scene scene = scene_of(GetParam().model);
  const Plan plan = watch::plan_of(scene.server, watch::kLeastWidth, GetParam().rows);
  for (const watch::Caption &caption : plan.captions) {
    for (const Spot &spot : plan.spots) {
      const int end = caption.column + static_cast<int>(caption.text.size());
      EXPECT_FALSE(spot.row == caption.row && spot.column < end && caption.column < spot.column + spot.width)
          << caption.text << " and " << spot.text;
    }
    for (const int rule : plan.rules) EXPECT_NE(rule, caption.row);
  }
}

INSTANTIATE_TEST_SUITE_P(
    OfEachModel, Layout,
    testing::Values(
        LayoutCase{"QaWithRoom", "qa", kPlenty}, LayoutCase{"Qb1WithRoom", "qb1", kPlenty},
        LayoutCase{"Qb2WithRoom", "qb2", kPlenty}, LayoutCase{"Qe1WithRoom", "qe1", kPlenty},
        LayoutCase{"Qe2WithRoom", "qe2", kPlenty}, LayoutCase{"Qe3WithRoom", "qe3", kPlenty},
        LayoutCase{"QaOnASmallTerminal", "qa", kChassisRows}, LayoutCase{"Qb1OnASmallTerminal", "qb1", kChassisRows},
        LayoutCase{"Qb2OnASmallTerminal", "qb2", kChassisRows}, LayoutCase{"Qe1OnASmallTerminal", "qe1", kChassisRows},
        LayoutCase{"Qe2OnASmallTerminal", "qe2", kChassisRows}, LayoutCase{"Qe3OnASmallTerminal", "qe3", kChassisRows}),
    [](const auto &row) { return row.param.says; });

TEST(LayoutInside, HasAllThatAUnitCarries) {
  const watch::Scene scene = scene_of("qe3");
  for (const char *name : {"/CMU#15", "/IOU#0", "/FAN_A#35"}) {
    const std::size_t unit = watch::find_unit(scene.server, name).value();
    const Plan plan = watch::plan_inside(scene.server, unit, watch::kLeastWidth);
    std::size_t carried = 0;
    for (const watch::Unit &other : scene.server.units) carried += other.carrier == unit ? 1 : 0;
    EXPECT_EQ(plan.spots.size(), carried) << name;
    for (const Spot &spot : plan.spots) EXPECT_EQ(scene.server.units[spot.unit].carrier, unit);
  }
  EXPECT_TRUE(watch::plan_inside(scene.server, watch::find_unit(scene.server, "/PSU#0").value(), 78).spots.empty());
}

}  // namespace
