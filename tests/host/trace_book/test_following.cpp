// What comes into the two rings of a box, also where one of them is made anew.
#include "host/trace_book/following.h"

#include <gtest/gtest.h>

#include "host/box/contents.h"
#include "include/lmainte.h"
#include "tests/host/box/scratch.h"

namespace {

using Lines = std::vector<std::string>;

class FollowingTest : public testing::Test {
 protected:
  FollowingTest() { box::create_box(place, LMAINTE_MODEL_QA); }

  void record() const {
    const std::uint32_t words[] = {100, 1};
    box::TraceRing ring;
    ASSERT_TRUE(ring.map(place.trace().c_str()));
    ring.append(1, 256, 3, 0x110C0020, words, 2);
  }
  void call() const {
    box::Call call;
    call.kind = box::CallKind::kLog;
    call.pid = 100;
    box::CallRing ring;
    ASSERT_TRUE(ring.map(place.calls().c_str()));
    ASSERT_TRUE(ring.append(call));
  }
  // What a look gives, until there is nothing new: "anew" where a ring was made anew, then functions.
  Lines news() {
    Lines lines;
    for (int quiet = 0; quiet < 2;) {
      const auto news = following.look();
      if (!news) {
        ++quiet;
        continue;
      }
      if (news->trace_is_anew) lines.emplace_back("a new trace");
      if (news->calls_are_anew) lines.emplace_back("new calls");
      for (const trace_book::Moment *moment : news->moments) lines.push_back(moment->function);
    }
    return lines;
  }

  Scratch scratch;
  box::Place place{scratch / "box"};
  trace_book::Following following{place};
};

TEST_F(FollowingTest, GivesWhatComesOnce) {
  record();
  EXPECT_EQ(news(), (Lines{"lmainte_exec"}));
  EXPECT_EQ(news(), Lines{});
  call();
  record();
  record();
  EXPECT_EQ(std::ranges::count(news(), "lmainte_exec"), 2);
  call();
  EXPECT_EQ(news(), Lines{"mgblog_save"});
}

TEST_F(FollowingTest, GoesOnWithOneRingWhereTheOtherIsMadeAnew) {
  record();
  call();
  news();
  box::TraceRing::create(place.trace());
  EXPECT_EQ(news(), Lines{"a new trace"}) << "the calls before are told no second time";
  record();
  EXPECT_EQ(news(), Lines{"lmainte_exec"});
  box::CallRing::create(place.calls());
  EXPECT_EQ(news(), Lines{"new calls"});
  call();
  EXPECT_EQ(news(), Lines{"mgblog_save"}) << "it has the number of one that was told of the ring before";
}

TEST_F(FollowingTest, BearsABoxWithoutCallsAndOneThatIsBeingMade) {
  std::filesystem::remove(place.calls());
  record();
  EXPECT_EQ(news(), Lines{"lmainte_exec"});
  std::filesystem::remove(place.trace());
  EXPECT_EQ(news(), Lines{});
  box::TraceRing::create(place.trace());
  record();
  EXPECT_EQ(news(), (Lines{"a new trace", "lmainte_exec"}));
}

TEST_F(FollowingTest, SaysWhyThereAreNoCalls) {
  record();
  std::filesystem::resize_file(place.calls(), 100);
  const auto news = following.look();
  ASSERT_TRUE(news);
  EXPECT_EQ(news->moments.size(), 1u);
  EXPECT_NE(news->trouble.find("The library's records are shown without the platform's."), std::string::npos);
  EXPECT_EQ(trace_book::newest_rings_of(place, 5).records.size(), 1u);
}

}  // namespace
