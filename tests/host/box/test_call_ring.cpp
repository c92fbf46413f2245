#include "host/box/call_ring.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <fstream>
#include <set>

#include "tests/host/box/child.h"
#include "tests/host/box/scratch.h"

namespace {

using box::Call;
using box::CallEntry;
using box::CallKind;
using box::CallRing;

class CallRingTest : public testing::Test {
 protected:
  CallRingTest() {
    CallRing::create(file);
    EXPECT_TRUE(ring.map(file.c_str()));
  }
  bool append(const std::string &text, std::uint32_t first = 0) {
    Call call;
    call.kind = CallKind::kRead;
    call.first = first;
    call.text = text;
    return ring.append(call);
  }
  std::string refusal() const {
    try {
      CallRing::read(file);
    } catch (const std::exception &error) {
      return error.what();
    }
    return "";
  }

  Scratch scratch;
  std::filesystem::path file = scratch / "calls";
  CallRing ring;
};

TEST_F(CallRingTest, GivesBackWhatWasKept) {
  Call call;
  call.kind = CallKind::kProgramEnd;
  call.pid = 4711;
  call.time_ns = 1'234'567'890'123;
  call.duration_ns = 5'000'000'000;
  call.position = 8427;
  call.result = -4;
  call.first = 0xFFFFFFFF;
  call.second = 7;
  call.deviated = true;
  call.text = "ctlled\x1b[2J";
  ASSERT_TRUE(ring.append(call));
  const auto entries = CallRing::read(file);
  ASSERT_EQ(entries.size(), 1u);
  const CallEntry &entry = entries[0];
  EXPECT_EQ(entry.number, 0u);
  EXPECT_EQ(entry.kind, CallKind::kProgramEnd);
  EXPECT_EQ(entry.pid, 4711);
  EXPECT_EQ(entry.time_ns, call.time_ns);
  EXPECT_EQ(entry.duration_ns, call.duration_ns);
  EXPECT_EQ(entry.position, 8427u);
  EXPECT_EQ(entry.result, -4);
  EXPECT_EQ(entry.first, 0xFFFFFFFF);
  EXPECT_EQ(entry.second, 7u);
  EXPECT_TRUE(entry.deviated);
  EXPECT_EQ(entry.whole_text, "ctlled\x1b[2J");
  EXPECT_FALSE(entry.is_cut());
}

TEST_F(CallRingTest, KeepsTextsOfEverySizeAndCutsWhatIsTooLong) {
  std::vector<std::string> texts;
  for (std::size_t size = 0; size <= CallRing::kLongestText + 3; ++size) {
    std::string text(size, 'x');
    for (std::size_t i = 0; i < size; ++i) text[i] = static_cast<char>('a' + (i + size) % 26);
    texts.push_back(text);
    ASSERT_TRUE(append(text));
  }
  const auto entries = CallRing::read(file);
  ASSERT_EQ(entries.size(), texts.size());
  for (std::size_t size = 0; size < texts.size(); ++size) {
    EXPECT_EQ(entries[size].whole_text, texts[size].substr(0, CallRing::kLongestText));
    EXPECT_EQ(entries[size].is_cut(), size > CallRing::kLongestText);
  }
}

TEST_F(CallRingTest, GoesRoundAndKeepsTheLast) {
  for (std::uint32_t i = 0; i < 2 * CallRing::kSlots; ++i) ASSERT_TRUE(append("", i));
  auto entries = CallRing::read(file);
  ASSERT_EQ(entries.size(), CallRing::kSlots);
  EXPECT_EQ(entries.front().first, CallRing::kSlots);
  EXPECT_EQ(entries.back().first, 2 * CallRing::kSlots - 1);
  entries = CallRing::read_last(file, 3);
  ASSERT_EQ(entries.size(), 3u);
  EXPECT_EQ(entries.front().number, 2 * CallRing::kSlots - 3);
}

TEST_F(CallRingTest, CountsCommandsOfAllProcesses) {
  EXPECT_EQ(ring.number_of_next_command(), 1u);
  EXPECT_EQ(in_child([&] { return static_cast<int>(ring.number_of_next_command()); }), 2);
  EXPECT_EQ(ring.number_of_next_command(), 3u);
}

TEST_F(CallRingTest, LeavesOutWhatIsDamagedAndRefusesWhatIsNoRing) {
  for (const char *const text : {"first", "second", "third"}) ASSERT_TRUE(append(text));
  const auto change = [&](std::streamoff at, char byte) {
    std::fstream stream(file, std::ios::binary | std::ios::in | std::ios::out);
    stream.seekp(at);
    stream.put(byte);
  };
  change(64 + 128 + 64, 'X');  // in the second record's text
  const auto entries = CallRing::read(file);
  ASSERT_EQ(entries.size(), 2u);
  EXPECT_EQ(entries[1].whole_text, "third");
  const std::string name = "calls " + file.string() + ": cannot read it: ";
  change(0, 'x');
  EXPECT_EQ(refusal(), name + "the file holds no calls ring");
  std::filesystem::resize_file(file, 1000);
  EXPECT_EQ(refusal(), name + "it is damaged: it was cut short or emptied. Make the box anew, or load a dump of it.");
  std::filesystem::remove(file);
  EXPECT_EQ(refusal(), name + "No such file or directory") << "what the system refuses is no damage";
  std::filesystem::create_directory(file);
  EXPECT_EQ(refusal(), name + "it is no file. Make the box anew, or load a dump of it.");
}

}  // namespace
