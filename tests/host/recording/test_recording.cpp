// Recordings as they come to a desk: of another machine, cut, damaged, foreign.
#include "host/recording/recording.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <fstream>
#include <list>

#include "host/box/box_error.h"
#include "host/recording/as_rings.h"
#include "tests/host/box/scratch.h"
#include "tests/host/recording/made_recording.h"

namespace {

namespace fs = std::filesystem;

using box::CallKind;
using recording::Recording;

// A command that reads a record, asks, and runs a program that fails.
MadeRecording walk(std::uint32_t order = 1) {
  MadeRecording made;
  made.begin(order);
  made.add({.kind = LMAINTE_RECORD_OPEN, .first = 2});
  made.add({.kind = LMAINTE_RECORD_GET, .first = 2, .second = 4, .text = "current_psu_info", .content = "abcd"});
  made.add({.kind = LMAINTE_RECORD_QUESTION, .first = 9, .text = "Which one?"});
  made.add({.kind = LMAINTE_RECORD_ANSWER, .first = 4, .text = "4"});
  made.begin_child(101);
  made.add({.kind = LMAINTE_RECORD_PROGRAM, .first = 100, .text = "/mgb/bin/ctlled -c on", .pid = 101});
  made.add({.kind = LMAINTE_RECORD_PROGRAM_END, .result = 206 << 8, .first = 101});
  made.add({.kind = LMAINTE_RECORD_END, .result = 1});
  return made;
}

std::string refusal_of(const std::string &bytes) {
  try {
    recording::read(bytes, "it");
    return "";
  } catch (const box::BoxError &error) {
    return error.what();
  }
}

TEST(ARecording, ThatIsNoneIsRefusedInASentence) {
  MadeRecording newer, other, of_no_machine;
  newer.begin(1, 6, 2);
  other.begin(7);
  of_no_machine.begin(1, 6, 1, 3);
  MadeRecording without_process;
  without_process.add({.kind = LMAINTE_RECORD_OPEN});
  const std::string whole = walk().bytes;
  struct Row {
    std::string bytes, says;
  };
  for (const Row &row : std::list<Row>{
           {"", "it is empty: nothing was recorded."},
           {"without contents\n", "it holds no record: nothing was recorded."},
           {"#!/bin/sh\necho LMR1\n", "it is no recording."},
           {std::string(100000, '\0'), "it is no recording."},
           {whole.substr(0, 40), "it is damaged: it holds no whole record."},
           {without_process.bytes, "it is damaged: nothing in it says of which machine it is."},
           {newer.bytes + whole,
            "it is of version 2 of recordings, and this spbox reads version 1. A newer spbox reads it."},
           {other.bytes, "it is of a machine that spbox does not know: byte order 7, 4 bytes in a long."},
           {of_no_machine.bytes, "it is of a machine that spbox does not know: byte order 1, 3 bytes in a long."},
       }) {
    EXPECT_EQ(refusal_of(row.bytes), row.says);
  }
}

TEST(ARecording, ThatCannotBeReadIsRefusedInASentence) {
  const Scratch scratch;
  fs::create_directory(scratch / "folder");
  mkfifo((scratch / "pipe").c_str(), 0600);
  std::ofstream(scratch / "large") << "LMR1";
  fs::resize_file(scratch / "large", recording::kMostBytes + 1);
  struct Row {
    const char *name, *says;
  };
  for (const Row &row : {Row{"absent", " cannot be read: No such file or directory."},
                         {"folder", " is a folder, not a recording."},
                         {"pipe", " is no file."},
                         {"large", " is larger than the 64 MB that a recording may have."}}) {
    try {
      recording::read(scratch / row.name);
      ADD_FAILURE() << row.name;
    } catch (const box::BoxError &error) {
      EXPECT_EQ(error.what(), (scratch / row.name).string() + row.says);
    }
  }
}

TEST(ARecording, ThatIsCutAnywhereHasItsWholeRecords) {
  const std::string whole = walk().bytes;
  const Recording all = recording::read(whole, "it");
  ASSERT_EQ(all.records.size(), 9u);
  std::vector<std::size_t> ends;
  for (std::size_t at = 0; at < whole.size(); ends.push_back(at)) at += recording::word_at(whole, at + 4, true);
  for (std::size_t size = ends.front(); size < whole.size(); ++size) {
    const Recording cut = recording::read(whole.substr(0, size), "it");
    const auto fit = static_cast<std::size_t>(std::ranges::upper_bound(ends, size) - ends.begin());
    EXPECT_EQ(cut.records.size(), fit) << size;
    EXPECT_EQ(cut.is_cut, ends[fit - 1] != size) << size;
  }
  EXPECT_EQ(recording::remarks(recording::read(whole.substr(0, whole.size() - 1), "it"), "it"),
            (std::vector<std::string>{"it ends in the middle of a record: it was cut, or is being written."}));
}

TEST(ARecording, ThatIsDamagedAtAnyByteLosesOneRecord) {
  const std::string whole = walk().bytes;
  const std::size_t first = recording::word_at(whole, 4, true);
  for (std::size_t at = first; at < whole.size(); ++at) {
    std::string damaged = whole;
    damaged[at] = static_cast<char>(damaged[at] ^ 0x10);
    const Recording rest = recording::read(damaged, "it");
    EXPECT_EQ(rest.records.size(), 8u) << at;
    EXPECT_EQ(rest.places, 1u) << at;
  }
  std::string damaged = whole;
  damaged[first + 20] ^= 1;
  EXPECT_EQ(recording::remarks(recording::read(damaged, "it"), "it"),
            (std::vector<std::string>{"it is damaged in 1 place: what stands there is not shown.",
                                      "1 record is missing in it: damaged, or not written as on a full disk, or there "
                                      "before the file was emptied."}));
}

TEST(ARecording, SaysWhatIsMissingAtTheBeginningOfAProcessAndKeepsNewerKinds) {
  MadeRecording made;
  made.add({.kind = LMAINTE_RECORD_OPEN});
  made.add({.kind = LMAINTE_RECORD_OPEN});
  made.bytes.clear();
  made.begin();
  made.add({.kind = LMAINTE_RECORD_LAST + 1});
  made.add({.kind = LMAINTE_RECORD_OPEN, .pid = 300});
  const Recording all = recording::read(made.bytes, "it");
  EXPECT_EQ(all.records.size(), 3u);
  EXPECT_EQ(
      recording::remarks(all, "it"),
      (std::vector<std::string>{"2 records are missing in it: damaged, or not written as on a full disk, or there "
                                "before the file was emptied.",
                                "1 record in it cannot be understood: the beginning of the process is missing."}));
}

// Each of its marks promises a long record.
TEST(ARecording, ThatIsForgedTakesNoLongerThanAnother) {
  MadeRecording made;
  made.begin();
  std::string forged = made.bytes;
  const std::string mark = MadeRecording::word(LMAINTE_RECORD_MARK) + MadeRecording::word(0x10000);
  while (forged.size() < (4U << 20U)) forged += mark;
  const auto began = std::chrono::steady_clock::now();
  const Recording read = recording::read(forged, "it");
  EXPECT_EQ(read.records.size(), 1u);
  EXPECT_LT(std::chrono::steady_clock::now() - began,
            std::chrono::seconds(20));  // hashed as often as it asks for, it takes minutes
}

TEST(ARecording, OfEitherByteOrderIsTheSameInTheRings) {
  MadeRecording big = walk(1), little = walk(2);
  for (MadeRecording *made : {&big, &little}) {
    std::string message;
    for (const std::uint32_t value : {16, 1, 3, 9}) message += MadeRecording::word(value, made == &big);
    made->add({.kind = LMAINTE_RECORD_SEND, .content = message});
  }
  for (const MadeRecording &made : {big, little}) {
    const recording::AsRings rings = recording::as_rings(recording::read(made.bytes, "it"));
    std::vector<CallKind> kinds;
    for (const box::CallEntry &call : rings.calls) kinds.push_back(call.kind);
    EXPECT_EQ(kinds,
              (std::vector{CallKind::kBegin, CallKind::kOpen, CallKind::kRead, CallKind::kQuestion, CallKind::kAnswer,
                           CallKind::kProgram, CallKind::kProgramEnd, CallKind::kEnd, CallKind::kSend}));
    EXPECT_EQ(rings.calls[6].result, 206);
    EXPECT_EQ(rings.calls[6].pid, 101);
    EXPECT_EQ(rings.calls.back().first, 1u);
    EXPECT_EQ(rings.calls.back().second, 3u);
  }
}

// From the 32-bit big-endian machine, by the commands that docs/host-platform.md has.
TEST(ARecording, OfTheServiceProcessorIsRead) {
  const Recording recording = recording::read(fs::path(OF_TARGET));
  ASSERT_FALSE(recording.records.empty());
  EXPECT_TRUE(recording.records.front().is_big_endian);
  EXPECT_EQ(recording::word_at(recording.records.front().content, 8, true), 4u);
  EXPECT_EQ(recording.records.front().text, "list_units psus");
  EXPECT_EQ(recording.records.back().kind, LMAINTE_RECORD_END);
  EXPECT_EQ(recording.places + recording.missing, 0u);
}

}  // namespace
