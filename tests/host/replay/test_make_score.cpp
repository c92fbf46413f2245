// One run of a recording, as the library that answers from it gets it.
#include "host/replay/make_score.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstring>

#include "host/replay/score.h"
#include "tests/host/recording/made_recording.h"

namespace {

std::vector<replay::Run> runs_of(const recording::Recording &recording) {
  return replay::runs_of(recording);
}

TEST(Runs, BelongToTheirProcessesAndTheirChildren) {
  MadeRecording made;
  made.begin();
  made.add({.kind = LMAINTE_RECORD_OPEN, .first = 2});
  made.add({.kind = LMAINTE_RECORD_END, .result = 5});
  const recording::Recording recording = recording::read(made.bytes, "it");
  const auto runs = runs_of(recording);
  ASSERT_EQ(runs.size(), 1u);
  EXPECT_EQ(runs[0].words, "caller");
  EXPECT_EQ(runs[0].records.size(), 3u);
  EXPECT_TRUE(runs[0].has_end);
  EXPECT_EQ(runs[0].exit_status, 5);
  EXPECT_EQ(runs[0].flaw, "");
}

// What the others of the run do behind that may have come behind a call that is not there.
TEST(Runs, EndWhereOneOfTheirProcessesFoundNoRoom) {
  MadeRecording made;
  made.begin();
  made.begin_child(101);
  made.add({.kind = LMAINTE_RECORD_OPEN, .first = 2, .pid = 101});
  made.add({.kind = LMAINTE_RECORD_FULL, .pid = 101});
  made.add({.kind = LMAINTE_RECORD_OPEN, .first = 3});
  made.add({.kind = LMAINTE_RECORD_END, .result = 5});
  const recording::Recording recording = recording::read(made.bytes, "it");
  const auto runs = runs_of(recording);
  ASSERT_EQ(runs.size(), 1u);
  EXPECT_EQ(runs[0].records.size(), 4u);
  EXPECT_FALSE(runs[0].has_end);
  EXPECT_EQ(runs[0].flaw, "");
}

TEST(Runs, SayWhyNoCommandCanRunAgainstThem) {
  MadeRecording left_out, too_long, written, without_model, gap;
  const auto leave_out = [](MadeRecording &made, std::uint32_t kind) {
    made.begin();
    made.add({.kind = kind | LMAINTE_RECORD_LEFT_OUT, .first = 2, .text = "x", .content = "abcd"});
  };
  left_out.bytes = "without contents\n";
  leave_out(left_out, LMAINTE_RECORD_GET);
  leave_out(too_long, LMAINTE_RECORD_SEND);
  leave_out(written, LMAINTE_RECORD_FILE_WRITE);
  without_model.begin(1, 0);
  gap.begin();
  const std::size_t at = gap.bytes.size();
  gap.add({.kind = LMAINTE_RECORD_OPEN, .first = 1});
  const std::size_t end = gap.bytes.size();
  gap.add({.kind = LMAINTE_RECORD_OPEN, .first = 2});
  gap.bytes.erase(at, end - at);
  const auto flaw_of = [](const MadeRecording &made) { return runs_of(recording::read(made.bytes, "it")).at(0).flaw; };
  EXPECT_EQ(flaw_of(left_out), "The recording was made without contents: it can be shown, and nothing else.");
  EXPECT_EQ(flaw_of(too_long), "A content that was too long for it is left out.");
  EXPECT_EQ(flaw_of(written), "");
  EXPECT_EQ(flaw_of(without_model), "The recording does not say of which model the server is.");
  EXPECT_EQ(flaw_of(gap), "Records of this run are missing.");
  MadeRecording unknown_model, of_nobody, orphan, damaged, newer;
  unknown_model.begin(1, 99);
  of_nobody.begin();
  of_nobody.add({.kind = LMAINTE_RECORD_OPEN, .first = 2, .pid = 101});
  of_nobody.add({.kind = LMAINTE_RECORD_END});
  orphan.begin();
  orphan.add({.kind = LMAINTE_RECORD_END});
  orphan.add({.kind = LMAINTE_RECORD_OPEN, .pid = 101});
  damaged.begin();
  damaged.bytes += "damage, and no record";
  damaged.add({.kind = LMAINTE_RECORD_OPEN});
  newer.begin();
  newer.add({.kind = LMAINTE_RECORD_LAST + 1});
  newer.add({.kind = LMAINTE_RECORD_END});
  const char *const unknown = "It is unknown whether records of other processes belong to this run.";
  EXPECT_EQ(flaw_of(unknown_model), "It is of a model that spbox does not know.");
  EXPECT_EQ(flaw_of(of_nobody), unknown);
  EXPECT_EQ(flaw_of(orphan), unknown);
  EXPECT_EQ(flaw_of(damaged), "The recording is damaged within this run.");
  EXPECT_EQ(flaw_of(newer), "");
}

// A child may come later than its parent's end; one that has ended and is not there is a reason to doubt.
TEST(Runs, HaveAllTheirChildren) {
  MadeRecording made;
  made.begin();
  made.add({.kind = LMAINTE_RECORD_PROGRAM_END, .first = 102});
  made.add({.kind = LMAINTE_RECORD_END});
  made.begin_child(101);
  made.add({.kind = LMAINTE_RECORD_OPEN, .pid = 101});
  const recording::Recording recording = recording::read(made.bytes, "it");
  const auto runs = runs_of(recording);
  ASSERT_EQ(runs.size(), 1u);
  EXPECT_EQ(runs[0].records.size(), 5u);
  EXPECT_EQ(runs[0].flaw, "");
  EXPECT_NE(runs[0].doubt, "");
}

// The words of a record that boxes know, and those of a message, come in the order of this machine; other bytes stay.
TEST(AScore, IsInTheByteOrderOfThisMachine) {
  MadeRecording made;
  made.begin(std::endian::native == std::endian::big ? 2 : 1);
  const bool is_other_big = std::endian::native != std::endian::big;
  made.add({.kind = LMAINTE_RECORD_SEND, .content = MadeRecording::word(0x11223344, is_other_big)});
  made.add({.kind = LMAINTE_RECORD_FILE_READ, .content = "time"});
  const recording::Recording recording = recording::read(made.bytes, "it");
  const std::string score = replay::score_of(runs_of(recording).at(0));
  replay_call calls[2];
  ASSERT_GE(score.size(), sizeof(replay_score) + sizeof calls);
  std::memcpy(calls, score.data() + sizeof(replay_score), sizeof calls);
  std::uint32_t word = 0;
  std::memcpy(&word, score.data() + calls[0].content, sizeof word);
  EXPECT_EQ(word, 0x11223344u);
  EXPECT_EQ(score.substr(calls[1].content, 4), "time");
}

// By a clock that nobody sets; of an older recorder, and of a forged recording, never longer than a day.
TEST(AScore, HasTheTimeOfAProgram) {
  struct Row {
    std::uint32_t from, to, seconds;
  };
  for (const Row &row : {Row{1, 3, 8}, Row{3, 1, 0}, Row{0, 0, 0}, Row{1, 0xFFFFFFFF, 86399}}) {
    MadeRecording made;
    made.begin();
    made.begin_child(101);
    made.add({.kind = LMAINTE_RECORD_PROGRAM, .second = row.from, .text = "/mgb/bin/ctlled", .pid = 101});
    made.add({.kind = LMAINTE_RECORD_PROGRAM_END, .first = 101, .second = row.to});
    const recording::Recording recording = recording::read(made.bytes, "it");
    const std::string score = replay::score_of(runs_of(recording).at(0));
    replay_call call;
    ASSERT_GE(score.size(), sizeof(replay_score) + sizeof call);
    std::memcpy(&call, score.data() + sizeof(replay_score), sizeof call);
    EXPECT_EQ(call.seconds, row.seconds) << row.to;
  }
}

}  // namespace
