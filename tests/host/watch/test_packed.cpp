// A scene on its way between two processes.
#include "host/watch/packed.h"

#include <gtest/gtest.h>

#include "tests/host/watch/scenes.h"

namespace {

watch::Scene some_scene() {
  watch::Scene scene;
  scene.server = {.model = "qa",
                  .in_maintenance_mode = true,
                  .fan_speed = "high",
                  .note = "note",
                  .units = {{.name = "/PSU#0",
                             .carrier = 7,
                             .state = watch::State::kUnreadable,
                             .led = watch::Led::kBlinks,
                             .maintenance = true,
                             .detached = false,
                             .link_down = true,
                             .fan = "low",
                             .note = std::string("\0\x1b", 2)}},
                  .parts = {{1, 2, 3, true, false}},
                  .bent = {"one", ""},
                  .programs = {"two"}};
  scene.trace = {"three"};
  scene.log = {"four"};
  scene.at_work = {"five", "six"};
  scene.trouble = "seven";
  return scene;
}

TEST(Packed, ComesOutAsItWentIn) {
  const watch::Scene scene = some_scene(), other = watch::unpacked(watch::packed(scene));
  EXPECT_EQ(watch::packed(other), watch::packed(scene));
  const watch::Unit &unit = other.server.units.at(0), &before = scene.server.units[0];
  EXPECT_EQ(std::tie(unit.name, unit.carrier, unit.state, unit.led, unit.maintenance, unit.detached, unit.link_down,
                     unit.fan, unit.note),
            std::tie(before.name, before.carrier, before.state, before.led, before.maintenance, before.detached,
                     before.link_down, before.fan, before.note));
  const watch::Part &part = other.server.parts.at(0);
  EXPECT_EQ(std::tuple(part.board, part.part, part.domain, part.active, part.readable),
            std::tuple(1U, 2U, 3U, true, false));
  EXPECT_EQ(other.server.model + other.server.fan_speed + other.server.note, "qahighnote");
  EXPECT_TRUE(other.server.in_maintenance_mode);
  EXPECT_EQ(other.server.bent, scene.server.bent);
  EXPECT_EQ(other.server.programs, scene.server.programs);
  EXPECT_EQ(std::tie(other.trace, other.log, other.at_work, other.trouble),
            std::tie(scene.trace, scene.log, scene.at_work, scene.trouble));
}

TEST(Packed, IsRefusedWhereItIsCutOrMakesNoSense) {
  const std::string whole = watch::packed(some_scene());
  for (std::size_t size = 0; size < whole.size(); ++size) {
    EXPECT_THROW(watch::unpacked(std::string_view(whole).substr(0, size)), std::runtime_error) << size;
  }
  std::string huge = whole;
  huge.replace(0, 4, "\xff\xff\xff\xff");
  EXPECT_THROW(watch::unpacked(huge), std::runtime_error);
  watch::Scene wrong = some_scene();
  wrong.server.units[0].state = static_cast<watch::State>(9);
  EXPECT_THROW(watch::unpacked(watch::packed(wrong)), std::runtime_error);
}

}  // namespace
