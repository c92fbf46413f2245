#include "host/recorder/wording.h"

#include <gtest/gtest.h>

namespace {

using recorder::Lines;

struct Row {
  const char *says;
  Lines fresh, before;
  const char *text;
};

TEST(DecidingText, IsAShortStablePieceOfTheLastLine) {
  const Row rows[] = {
      {"the question behind a list",
       {"1. PSU#0   Normal", "Which power supply do you replace? Type its number, q to give up:"},
       {},
       "Which power supply do you replace?"},
      {"a unit's number stays",
       {"Pull out /PCI_BOX#1000 now. Type 1 when it is out:"},
       {},
       "Pull out /PCI_BOX#1000 now."},
      {"the pager's line without sizes", {"--More-- (69% of 798 bytes)"}, {}, "--More--"},
      {"no process id", {"Process 48311 asks: go on?"}, {}, "asks: go on?"},
      {"no time", {"At 12:03:44 the test began"}, {}, "the test began"},
      {"no date", {"Since 2026-11-22 it runs"}, {}, "it runs"},
      {"a progress line without its dots", {"Watching the unit    0.."}, {}, "Watching the unit"},
      {"an answer that was typed is not what decided", {"The table", "3"}, {}, "The table"},
      {"a prompt of signs where there is nothing else", {"$"}, {}, "$"},
      {"nothing new", {"The table"}, {"The table"}, ""},
      {"what came since", {"The table", "The question"}, {"The table"}, "The question"},
      {"what stands there once rather than twice", {"Type 1 or 2", "Type 1 or 2   Use it"}, {}, "Use it"},
      {"a second column where the first stands there twice",
       {"Unit is in", "Unit is in   Slot is out"},
       {},
       "Slot is out"},
      {"no control character and no reversed text",
       {"good",
        "ab\xe2\x80\xae"
        "cd"},
       {},
       "good"},
      {"a long line's first words",
       {"this line has no sentence and goes on and on over more than sixty characters"},
       {},
       "this line has no sentence and goes on and on over more than"},
      {"nothing on an empty screen", {}, {}, ""},
  };
  for (const Row &row : rows) EXPECT_EQ(recorder::deciding_text(row.fresh, row.before), row.text) << row.says;
}

}  // namespace
