// What tells that something has changed in a box.
#include "host/box/pulse.h"

#include <gtest/gtest.h>

#include <fstream>

#include "host/box/call_ring.h"
#include "host/box/contents.h"
#include "host/box/hardware.h"
#include "host/box/points.h"
#include "host/box/trace_ring.h"
#include "tests/host/box/scratch.h"

namespace {

struct PulseTest : testing::Test {
  PulseTest() {
    box::create_box(place, LMAINTE_MODEL_QA);
    pulse.feel();
  }
  // "server trace log people", as far as they changed.
  std::string changed() {
    const box::Pulse::Beat beat = pulse.feel();
    return std::string(beat.server ? "server " : "") + (beat.trace ? "trace " : "") + (beat.log ? "log " : "") +
           (beat.people ? "people " : "");
  }

  Scratch scratch;
  box::Place place{scratch / "box"};
  box::Pulse pulse{place};
};

TEST_F(PulseTest, BeatsForAllAtFirstAndForNothingThen) {
  EXPECT_EQ(changed(), "");
  EXPECT_TRUE(box::Pulse(place).feel().server);
}

TEST_F(PulseTest, BeatsForWhatChanges) {
  box::Hardware hardware(place);
  // Each save counts, also where the clock of files is too coarse to tell two of them apart.
  for (int i = 0; i < 20; ++i) {
    hardware.set_led("/PSU#0", i % 2 == 0 ? "on" : "off");
    EXPECT_EQ(changed(), "server ") << i;
  }
  EXPECT_EQ(hardware.led("/PSU#0"), "off");
  EXPECT_EQ(changed(), "") << "reading changes nothing";
  box::TraceRing ring;
  ASSERT_TRUE(ring.map(place.trace().c_str()));
  for (int i = 0; i < 3; ++i) {
    ring.append(1, 2, 3, 4, nullptr, 0);
    EXPECT_EQ(changed(), "trace ");
  }
  box::CallRing calls;
  ASSERT_TRUE(calls.map(place.calls().c_str()));
  ASSERT_TRUE(calls.append({}));
  EXPECT_EQ(changed(), "trace ") << "what passes between a command and its platform belongs to it";
  std::ofstream(place.events(), std::ios::app) << "x";
  EXPECT_EQ(changed(), "log ");
  std::filesystem::create_directories(place.root() / "mgb/lib");
  std::ofstream(place.root() / "mgb/lib/run.1.2") << "";
  EXPECT_EQ(changed(), "people ");
}

TEST_F(PulseTest, BeatsForADeviationAndWhenItHappens) {
  box::deviate(place, {.kind = box::PointKind::kLog, .name = "", .number = 2, .turn = {box::Way::kRefused, 0}});
  EXPECT_EQ(changed(), "server ");
  box::PointCounter counter;
  ASSERT_TRUE(counter.map(place.points().c_str()));
  counter.reach(box::PointKind::kLog, "");
  counter.reach(box::PointKind::kLog, "");
  EXPECT_EQ(changed(), "server ");
}

TEST_F(PulseTest, BeatsWhereTheBoxIsMadeAnewOrIsGone) {
  std::filesystem::remove_all(place.root());
  EXPECT_EQ(changed(), "server trace log people ");
  EXPECT_EQ(changed(), "");
  box::create_box(place, LMAINTE_MODEL_QB1);
  EXPECT_EQ(changed().substr(0, 13), "server trace ");
}

}  // namespace
