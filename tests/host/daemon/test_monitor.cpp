// The daemon's answers, without its connections.
#include <gtest/gtest.h>

#include <cstring>

#include "host/box/breakage.h"
#include "host/box/event_log.h"
#include "host/box/hardware.h"
#include "host/box/inventory.h"
#include "host/daemon/monitor.h"
#include "host/include/lmainte_host.h"
#include "include/lmainte.h"
#include "tests/host/box/scratch.h"

namespace {

class MonitorTest : public testing::Test {
 protected:
  MonitorTest() { box::create_box(place_, LMAINTE_MODEL_QE1); }

  static box::Bytes request(std::uint32_t command, const std::vector<std::uint32_t> &words = {}) {
    std::vector<std::uint32_t> message{static_cast<std::uint32_t>(16 + 4 * words.size()), 1, command, 77};
    message.insert(message.end(), words.begin(), words.end());
    box::Bytes bytes(4 * message.size());
    std::memcpy(bytes.data(), message.data(), bytes.size());
    return bytes;
  }

  lmainte_host_reply ask(std::uint32_t command, const std::vector<std::uint32_t> &words = {}) {
    return reply_to(request(command, words));
  }

  lmainte_host_reply reply_to(const box::Bytes &bytes) {
    const monitor::Answer answer = monitor_.answer(bytes);
    lmainte_host_reply reply{};
    EXPECT_EQ(answer.reply.size(), 32U);
    std::memcpy(&reply, answer.reply.data(), std::min(sizeof reply, answer.reply.size()));
    return reply;
  }

  std::vector<std::uint32_t> id_of(const char *unit) const {
    const box::UnitId id = *box::unit_id(LMAINTE_MODEL_QE1, unit);
    return {id[0], id[1]};
  }

  void bend(box::DaemonWay way, std::uint32_t seconds = 0) {
    box::TextDatabase kept(place_);
    box::set_daemon_bend(kept, {way, seconds});
  }

  Scratch scratch_;
  box::Place place_{scratch_ / "box"};
  monitor::Monitor monitor_{place_};
};

TEST_F(MonitorTest, AReplyHasItsRequestsHead) {
  const auto reply = ask(1);
  EXPECT_EQ(reply.head.size, 32U);
  EXPECT_EQ(reply.head.daemon, 1U);
  EXPECT_EQ(reply.head.command, 1U);
  EXPECT_EQ(reply.head.sequence, 77U);
  EXPECT_EQ(reply.result, 0);
}

TEST_F(MonitorTest, AnswersInTheByteOrderOfTheOneWhoAsks) {
  const auto swapped = [](box::Bytes bytes) {
    for (std::size_t at = 0; at + 4 <= bytes.size(); at += 4) std::reverse(bytes.data() + at, bytes.data() + at + 4);
    return bytes;
  };
  const box::Bytes asked = request(2, id_of("/PSU#3"));
  EXPECT_EQ(swapped(monitor_.answer(swapped(asked)).reply), monitor_.answer(asked).reply);
  box::Bytes event = swapped(request(4));  // its bytes are the same on each machine
  event[3] = 64;
  for (std::uint8_t byte = 0; byte < LMAINTE_HOST_EVENT_SIZE; ++byte) event.push_back(byte);
  EXPECT_EQ(monitor_.answer(event).reply.at(19), LMAINTE_HOST_ANSWERED);
  EXPECT_EQ(box::EventLog::read(place_.events()).back().event.at(7), 7);
}

TEST_F(MonitorTest, TellsHowItIs) {
  ask(1);
  const auto reply = ask(1);
  EXPECT_LT(reply.word[0], 60U) << "seconds";
  EXPECT_EQ(reply.word[1], 1U) << "requests before";
  EXPECT_EQ(reply.word[2], 3U) << "model";
}

TEST_F(MonitorTest, TellsTheStateOfAUnit) {
  EXPECT_EQ(ask(2, id_of("/PSU#3")).word[0], 0x80000000U);
  const box::Inventory inventory(place_);
  inventory.change(box::Change::kFault, {"/PSU#3"});
  EXPECT_EQ(ask(2, id_of("/PSU#3")).word[0], 0xA0000000U);
  inventory.change(box::Change::kPull, {"/PSU#3"});
  EXPECT_EQ(ask(2, id_of("/PSU#3")).word[0], 0U);
  EXPECT_EQ(ask(2, {1, 2}).result, 3) << "no such unit";
}

TEST_F(MonitorTest, TellsThePowerOfAUnit) {
  EXPECT_EQ(ask(3, id_of("/PSU#3")).word[0], 1U);
  box::TextDatabase(place_).set("detached /PSU#3", "yes");
  EXPECT_EQ(ask(3, id_of("/PSU#3")).word[0], 0U) << "detached";
  box::Inventory(place_).change(box::Change::kPull, {"/PSU#4"});
  EXPECT_EQ(ask(3, id_of("/PSU#4")).word[0], 0U) << "pulled";
  EXPECT_EQ(ask(3, {1, 2}).result, 3) << "no such unit";
}

TEST_F(MonitorTest, PutsAnEventIntoTheLog) {
  std::vector<std::uint32_t> event(12, 0);
  event[2] = 0x04030201;
  EXPECT_EQ(ask(4, event).result, 0);
  const auto entries = box::EventLog::read(place_.events());
  ASSERT_EQ(entries.size(), 1U);
  EXPECT_EQ(entries[0].head, 0x00030000U);
  EXPECT_EQ(std::memcmp(entries[0].event.data(), event.data(), 48), 0);
}

TEST_F(MonitorTest, RefusesWhatItDoesNotUnderstand) {
  EXPECT_EQ(ask(0).result, 1) << "no such command";
  EXPECT_EQ(ask(5).result, 1);
  EXPECT_EQ(ask(1, {1}).result, 2) << "a word too many";
  EXPECT_EQ(ask(2, {1}).result, 2) << "a word too few";
  box::Bytes other = request(1);
  other[4] = 9;
  EXPECT_EQ(reply_to(other).result, 2) << "another daemon";
  box::Bytes liar = request(1);
  liar[0] = 20;
  EXPECT_EQ(reply_to(liar).result, 2) << "longer than it says";
  EXPECT_TRUE(monitor_.answer(box::Bytes(15)).reply.empty()) << "no head to answer";
}

TEST_F(MonitorTest, SaysSoWhenTheBoxFails) {
  std::filesystem::remove_all(place_.root() / "mgb");
  EXPECT_EQ(ask(2, {1, 2}).result, 4);
  EXPECT_EQ(ask(4, std::vector<std::uint32_t>(12)).result, 4);
}

TEST_F(MonitorTest, SaysSoWhenTheRecordOfAUnitCannotBeRead) {
  for (const box::Breakage how : {box::Breakage::kMissing, box::Breakage::kShort, box::Breakage::kLong}) {
    box::break_records(place_, {{2, "current_psu_info"}}, how);
    EXPECT_EQ(ask(2, id_of("/PSU#3")).result, 4);
    EXPECT_EQ(ask(3, id_of("/PSU#3")).result, 4);
    EXPECT_EQ(ask(2, id_of("/CMU#0")).result, 0) << "the record of another unit";
  }
}

TEST_F(MonitorTest, IsBentAsTheBoxTellsIt) {
  bend(box::DaemonWay::kLate, 5);
  EXPECT_EQ(monitor_.answer(request(1)).delay, std::chrono::seconds(5));
  bend(box::DaemonWay::kSilent);
  EXPECT_TRUE(monitor_.answer(request(1)).reply.empty());
  EXPECT_FALSE(monitor_.answer(request(1)).hangs_up);
  bend(box::DaemonWay::kDead);
  EXPECT_TRUE(monitor_.answer(request(1)).hangs_up);
  bend(box::DaemonWay::kGarbled);
  EXPECT_EQ(ask(1).head.size, 40U) << "longer than it is";
  bend(box::DaemonWay::kWell);
  EXPECT_EQ(ask(1).head.size, 32U);
}

}  // namespace
