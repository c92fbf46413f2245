// What is told of a command that has left a score.
#include "host/replay/verdict.h"

#include <gtest/gtest.h>

#include <cstring>
#include <list>

#include "host/replay/score.h"
#include "tests/host/recording/made_recording.h"

namespace {

TEST(AVerdict, TellsHowACommandEndedThatDiffersFromNoCall) {
  struct Row {
    const char *says;
    bool recorded_ends;
    std::uint32_t made;
    replay::Ending ending;
    bool differs;
    const char *sentence, *of_command;
  };
  for (const Row &row : std::list<Row>{
           {"the same end", true, 2, {5}, false, "No difference in 2 calls.", ""},
           {"another end",
            true,
            2,
            {0},
            true,
            "The command makes the same 2 calls, and ends in another way:",
            "exit status 0"},
           {"no end",
            true,
            2,
            {0, 60},
            true,
            "The command makes the same 2 calls, and ends in another way:",
            "none; it was ended after 60 seconds without a call"},
           {"no end, where none is recorded",
            false,
            2,
            {0, 60},
            false,
            "No difference in 2 calls. How the recorded command ended is not in the recording.",
            ""},
           {"an end too early", true, 1, {3}, true, "The command ended with exit status 3 before call 2 of 2:", ""},
           {"silence",
            true,
            1,
            {0, 1},
            true,
            "The command made no call for 1 second, and was ended before call 2 of 2:",
            ""},
           {"silence from the beginning",
            true,
            0,
            {0, 60},
            true,
            "The command made no call for 60 seconds, and was ended before call 1 of 2:",
            ""},
           {"no call",
            true,
            0,
            {0},
            true,
            "The command ended with exit status 0 and asked for nothing. Is it linked with its platform as a shared "
            "library? The first of 2 calls:",
            ""},
       }) {
    MadeRecording made;
    made.begin();
    made.add({.kind = LMAINTE_RECORD_OPEN, .first = 2});
    made.add({.kind = LMAINTE_RECORD_CLOSE, .first = 2});
    if (row.recorded_ends) made.add({.kind = LMAINTE_RECORD_END, .result = 5});
    const recording::Recording recording = recording::read(made.bytes, "it");
    const replay::Run run = replay::runs_of(recording).at(0);
    std::string score = replay::score_of(run);
    std::memcpy(score.data() + offsetof(replay_score, next), &row.made, sizeof row.made);
    EXPECT_EQ(replay::calls_made(score), row.made) << row.says;
    const replay::Verdict verdict = replay::verdict_of(score, run, row.ending);
    EXPECT_EQ(verdict.differs, row.differs) << row.says;
    EXPECT_EQ(verdict.sentence, row.sentence) << row.says;
    EXPECT_EQ(verdict.of_command, row.of_command) << row.says;
  }
  EXPECT_EQ(replay::calls_made("none"), 0u);
}

}  // namespace
