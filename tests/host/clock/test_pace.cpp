#include <gtest/gtest.h>

#include "host/clock/pace.h"

namespace {

using box_time::nanoseconds;
using box_time::Sight;
using std::chrono::milliseconds;

enum class They { kWait, kWork, kWaitOnWall, kAreLate };

// What the keeper sees after so many milliseconds of the wall and of the processor, and the next moment, 0 for none.
struct Look {
  They they;
  int wall, processor;
  int moment;
  int passed;  // what the box's time is then
};

struct Row {
  const char *sentence;
  std::uint32_t times;  // 0: full speed
  std::vector<Look> looks;
};

class Pace : public testing::TestWithParam<Row> {};

TEST_P(Pace, IsAsTheRowSays) {
  const Row &row = GetParam();
  box_time::Pace pace({row.times}, nanoseconds(0));
  nanoseconds wall{0}, processor{0};
  for (std::size_t i = 0; i < row.looks.size(); ++i) {
    const Look &look = row.looks[i];
    wall += milliseconds(look.wall);
    processor += milliseconds(look.processor);
    Sight sight;
    sight.wall = wall;
    sight.processor = processor;
    sight.is_quiet = look.they == They::kWait || look.they == They::kWaitOnWall;
    sight.waits_on_wall = look.they == They::kWaitOnWall;
    sight.is_late = look.they == They::kAreLate;
    if (look.moment != 0) sight.moment = milliseconds(look.moment);
    EXPECT_EQ(pace.look(sight), milliseconds(look.passed)) << row.sentence << ": look " << i;
  }
}

constexpr auto kWait = They::kWait, kWork = They::kWork, kWaitOnWall = They::kWaitOnWall, kAreLate = They::kAreLate;

const Row kRows[] = {
    {"at full speed, time jumps to the next moment when all wait", 0, {{kWait, 1, 0, 60'000, 60'000}}},
    {"at full speed, time stands while somebody works, however long the wall waits",
     0,
     {{kWork, 20, 5, 100, 0}, {kWork, 20, 5, 100, 0}}},
    {"at full speed, time stands where all wait for nothing", 0, {{kWait, 20, 0, 0, 0}}},
    {"nobody passes a moment that one does not know of yet",
     0,
     {{kWait, 1, 0, 50, 50}, {kAreLate, 20, 300, 70, 50}, {kWait, 1, 0, 70, 70}}},
    {"at full speed, who works long sees time pass as fast as they use the processor",
     0,
     {{kWork, 20, 200, 0, 0}, {kWork, 20, 30, 0, 30}, {kWork, 20, 30, 0, 60}}},
    {"and time stops at a moment for which somebody waits", 0, {{kWork, 20, 200, 500, 0}, {kWork, 20, 900, 500, 500}}},
    {"who waits in between has not worked long",
     0,
     {{kWork, 20, 150, 0, 0}, {kWait, 1, 0, 0, 0}, {kWork, 20, 150, 0, 0}}},
    {"at full speed, a wait on the wall takes its time",
     0,
     {{kWaitOnWall, 10, 0, 1000, 10}, {kWaitOnWall, 10, 0, 1000, 20}}},
    {"a wait on the wall does not pass a moment", 0, {{kWaitOnWall, 10, 0, 4, 4}}},
    {"a keeper that has not looked for long does not know what has happened", 0, {{kWaitOnWall, 5000, 0, 1000, 20}}},
    {"by speed, time passes so many times as fast", 10, {{kWait, 5, 0, 0, 50}, {kWork, 5, 5, 0, 100}}},
    {"by speed, time stops at a moment until all that follows is done",
     10,
     {{kWait, 5, 0, 20, 20}, {kWork, 5, 1, 90, 20}, {kWork, 5, 1, 90, 20}, {kWait, 5, 0, 90, 70}}},
    {"by speed, who works too long does not hold the time any more",
     10,
     {{kWait, 5, 0, 20, 20}, {kWork, 5, 201, 90, 70}}},
    {"a step that is late stretches the time", 100, {{kWait, 5000, 0, 0, 2000}}},
    {"a clock of the wall that goes back changes nothing", 2, {{kWait, 10, 0, 0, 20}, {kWait, -5, 0, 0, 20}}},
};

INSTANTIATE_TEST_SUITE_P(Rows, Pace, testing::ValuesIn(kRows));

TEST(Speed, IsFullOrANumber) {
  EXPECT_TRUE(box_time::speed_of("full")->is_full());
  EXPECT_EQ(box_time::speed_of("1")->times, 1U);
  EXPECT_EQ(box_time::speed_of("1000")->times, 1000U);
  for (const char *word : {"", "0", "1001", "-1", "2x", "Full"}) EXPECT_FALSE(box_time::speed_of(word)) << word;
}

}  // namespace
