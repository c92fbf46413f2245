// What an operator who keeps their head types at what stands last on the screen.
#include <gtest/gtest.h>

#include "host/sweep/careful.h"

namespace {

struct Screen {
  const char *what;
  std::vector<std::string> screen;
  const char *keys;
};

TEST(CarefulOperator, AnswersWhatIsAsked) {
  const Screen rows[] = {
      {"a question is given up", {"1. PSU#0", "Type its number, q to give up:", "", ""}, "q\n"},
      {"so is one with a question mark", {"Go on?"}, "q\n"},
      {"a pager is ended", {"PSU#0  Normal", "--More-- (50% of 120 bytes)"}, "q"},
      {"Enter is pressed where it is asked for", {"Press Enter to begin."}, "\n"},
      {"what has been answered is no question", {"Type its number, q to give up: 1"}, ""},
      {"progress is none", {"Testing /PSU#0    0....."}, ""},
      {"an empty screen asks nothing", {"", ""}, ""},
  };
  for (const Screen &row : rows) EXPECT_EQ(sweep::careful_keys(row.screen), row.keys) << row.what;
}

}  // namespace
