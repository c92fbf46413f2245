// The picture of a scene, in cells.
#include "host/watch/picture.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/host/watch/scenes.h"

namespace {

using watch::Letters;
using watch::Picture;
using watch::Scene;
using watch::View;

std::string text_of(const Picture &picture) {
  std::string text;
  for (const std::string &line : picture.canvas.lines()) text += line + "\n";
  return text;
}

std::string picture_of(const Scene &scene, const View &view = {}, int rows = 24, int columns = 80,
                       Letters letters = Letters::kAscii) {
  return text_of(watch::draw(scene, view, rows, columns, letters));
}

bool shows(const std::string &text, const std::string &what) {
  return text.find(what) != std::string::npos;
}

struct MarkCase {
  const char *says;
  void (*change)(watch::Unit &unit);
  const char *shown;
};

constexpr MarkCase kMarks[] = {
    {"a unit in order", [](watch::Unit &) {}, " 1.    2."},
    {"one that is degraded", [](watch::Unit &unit) { unit.state = watch::State::kDegraded; }, " 1D    2."},
    {"one that is faulted", [](watch::Unit &unit) { unit.state = watch::State::kFaulted; }, " 1F    2."},
    {"one that is out", [](watch::Unit &unit) { unit.state = watch::State::kOut; }, " 1-    2."},
    {"one that cannot be read", [](watch::Unit &unit) { unit.state = watch::State::kUnreadable; }, " 1?    2."},
    {"one under maintenance", [](watch::Unit &unit) { unit.maintenance = true; }, " 1.m   2."},
    {"one out of operation", [](watch::Unit &unit) { unit.detached = true; }, " 1.o   2."},
    {"one with a link that is down", [](watch::Unit &unit) { unit.link_down = true; }, " 1.l   2."},
    {"one that is both", [](watch::Unit &unit) { unit.maintenance = unit.detached = true; }, " 1.&   2."},
    {"a LED that is on", [](watch::Unit &unit) { unit.led = watch::Led::kOn; }, " 1. *  2."},
    {"a LED that blinks, dark", [](watch::Unit &unit) { unit.led = watch::Led::kBlinks; }, " 1. +  2."},
};

TEST(Picture, MarksEachStateByALetter) {
  for (const MarkCase &row : kMarks) {
    Scene scene = scene_of("qb2");
    row.change(unit_in(scene, "/PSU#1"));
    std::string shown = picture_of(scene);
    // Tiles are five cells wide.
    const std::string wanted = "PSU 0.  " + std::string(row.shown).substr(0, 5) + " 2.";
    EXPECT_TRUE(shows(shown, wanted)) << row.says << ": " << wanted << "\n" << shown;
  }
}

TEST(Picture, LetsALedBlink) {
  Scene scene = scene_of("qa");
  unit_in(scene, "/PSU#1").led = watch::Led::kBlinks;
  EXPECT_TRUE(shows(picture_of(scene, {}), " 1. +"));
  EXPECT_TRUE(shows(picture_of(scene, {.is_lit = true}), " 1. *"));
}

TEST(Picture, MarksTheCarrierOfATroubledUnit) {
  Scene scene = scene_of("qe3");
  unit_in(scene, "/CMU#3/MEM#03A").state = watch::State::kFaulted;
  EXPECT_TRUE(shows(picture_of(scene), " 3 CMU!"));
  View view;
  view.chosen = watch::find_unit(scene.server, "/CMU#3");
  EXPECT_TRUE(shows(picture_of(scene, view), "/CMU#3: Normal; /CMU#3/MEM#03A: Faulted")) << picture_of(scene, view);
  view.inside = view.chosen;
  view.chosen = watch::find_unit(scene.server, "/CMU#3/MEM#03A");
  EXPECT_TRUE(shows(picture_of(scene, view), "03AF")) << picture_of(scene, view);
}

TEST(Picture, SaysWhatTheServerDoes) {
  Scene scene = scene_of("qa");
  scene.server.in_maintenance_mode = true;
  scene.server.fan_speed = "high";
  EXPECT_TRUE(
      shows(picture_of(scene, {.box = "box"}), " qa: MAINTENANCE MODE, fans high, service processor unit 0; box "));
  scene.server.fan_speed = "";
  EXPECT_TRUE(shows(picture_of(scene, {.box = "box"}), " qa; box ")) << "where nobody knows";
}

TEST(Picture, ShowsDomainsOfParts) {
  Scene scene = scene_of("qe1");
  scene.server.parts[1] = {0, 1, 12, false, true};
  scene.server.parts[2] = {0, 2, 0, false, false};
  scene.server.parts[3] = {0, 3, 255, false, true};
  EXPECT_TRUE(shows(picture_of(scene), "+00-12 ?? --")) << picture_of(scene);
}

TEST(Picture, ShowsWhatATerminalWouldObey) {
  Scene scene = scene_of("qa");
  unit_in(scene, "/PSU#0").note = "\x1b[2J\xe2\x80\xae";  // NOLINT(misc-misleading-bidirectional): it is shown
  scene.at_work = {"sh \x07"};
  View view;
  view.chosen = watch::find_unit(scene.server, "/PSU#0");
  for (const Letters letters : {Letters::kAscii, Letters::kUnicode}) {
    const std::string shown = picture_of(scene, view, 24, 80, letters);
    EXPECT_TRUE(shows(shown, "/PSU#0 (\\x1b[2J\\xe2\\x80\\xae): Normal")) << shown;
    EXPECT_TRUE(shows(shown, "At work  sh \\x07"));
    EXPECT_EQ(
        std::ranges::count_if(shown, [](char byte) { return byte != '\n' && static_cast<unsigned char>(byte) < ' '; }),
        0);
  }
}

TEST(Picture, HasAsciiLettersAloneWhereThereAreNoOthers) {
  for (const char *model : {"qa", "qb1", "qb2", "qe1", "qe2", "qe3"}) {
    Scene scene = scene_of(model);
    for (watch::Unit &unit : scene.server.units) {
      unit.led = watch::Led::kOn;
      unit.state = watch::State::kOut;
      unit.note = "\xc3\xa9";
    }
    for (const char byte : picture_of(scene, {.chosen = 0})) EXPECT_LT(static_cast<unsigned char>(byte), 0x80);
  }
}

TEST(Picture, ShowsTheNewestOfTheTraceAndHowMuchIsBent) {
  Scene scene = scene_of("qe3");
  for (int i = 0; i < 30; ++i) {
    scene.trace.push_back("record " + std::to_string(i));
    scene.server.bent.push_back("bent " + std::to_string(i));
  }
  const std::string small = picture_of(scene);
  EXPECT_TRUE(shows(small, "Bent     bent 0")) << small;
  EXPECT_TRUE(shows(small, "more")) << small;
  EXPECT_TRUE(shows(small, "record 29")) << small;
  const std::string large = picture_of(scene, {}, 120, 200);
  EXPECT_TRUE(shows(large, "record 0\n")) << large;
  EXPECT_TRUE(shows(large, "bent 29")) << large;
  EXPECT_TRUE(shows(large, " F Faulted ")) << "the legend, in a window with room for it: " << large;
}

TEST(Picture, TellsWhyTheBoxCannotBeRead) {
  Scene scene = scene_of("qe3");
  scene.trouble = "the box is gone.";
  EXPECT_TRUE(shows(picture_of(scene), "\nthe box is gone.\n"));
}

TEST(Picture, CutsOffWhatHasNoRoom) {
  Scene scene = scene_of("qa");
  scene.at_work = {std::string(100, 'x')};
  EXPECT_TRUE(shows(picture_of(scene), "\nAt work  " + std::string(70, 'x') + ">\n")) << picture_of(scene);
}

TEST(Picture, KnowsWhatIsWhere) {
  Scene scene = scene_of("qe1");
  const Picture picture = watch::draw(scene, {}, 24, 80, Letters::kAscii);
  const std::size_t unit = watch::find_unit(scene.server, "/PSU#40").value();
  const auto region = std::ranges::find(picture.regions, std::optional(unit), &watch::Region::unit);
  ASSERT_NE(region, picture.regions.end());
  EXPECT_EQ(picture.canvas.lines()
                .at(static_cast<std::size_t>(region->row))
                .substr(static_cast<std::size_t>(region->column), 3),
            "40.");
}

}  // namespace
