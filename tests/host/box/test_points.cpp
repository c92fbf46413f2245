#include "host/box/points.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <fstream>

#include "host/box/box_error.h"
#include "host/box/full_file.h"
#include "host/box/mapping_guard.h"
#include "tests/host/box/child.h"
#include "tests/host/box/scratch.h"

namespace {

using box::PointKind;
using box::Way;

class PointsTest : public testing::Test {
 protected:
  PointsTest() { std::filesystem::create_directories(place_.points().parent_path()); }

  void deviate(PointKind kind, const char *name, std::uint32_t number, box::Turn turn) const {
    box::deviate(place_, {kind, name, number, turn, 0});
  }
  // How often a point was reached, by whoever.
  std::uint32_t count(PointKind kind, const std::string &name) const {
    const box::Points points = box::points_of(place_).value();
    for (const box::PointCount &at : points.counts) {
      if (at.kind == kind && at.name == name) return at.count;
    }
    return 0;
  }

  Scratch scratch_;
  box::Place place_{scratch_.path()};
};

TEST_F(PointsTest, AreNotCountedUntilSomebodyAsksForIt) {
  EXPECT_FALSE(box::points_of(place_));
  box::PointCounter none;
  EXPECT_FALSE(none.map(place_.points().c_str()));
  EXPECT_EQ(none.reach(PointKind::kRead, "a").way, Way::kUsual);
  EXPECT_FALSE(box::forget_points(place_));
}

TEST_F(PointsTest, AreCountedByKindAndNameInAllProcesses) {
  box::count_points(place_);
  const auto reach = [&] {
    box::PointCounter points;
    if (!points.map(place_.points().c_str())) return 1;
    for (const char *name : {"b", "a", "b"}) points.reach(PointKind::kRead, name);
    points.reach(PointKind::kTrace, "b");
    return 0;
  };
  EXPECT_EQ(reach() + in_child(reach), 0);
  EXPECT_EQ(count(PointKind::kRead, "b"), 4u);
  EXPECT_EQ(count(PointKind::kRead, "a"), 2u);
  EXPECT_EQ(count(PointKind::kTrace, "b"), 2u);
  EXPECT_EQ(box::points_of(place_)->counts.front().name, "b") << "it was reached first";
  EXPECT_TRUE(box::forget_points(place_));
  EXPECT_FALSE(box::points_of(place_));
}

TEST_F(PointsTest, KeepTheirOrderWhereSomebodyAsksForIt) {
  const auto names = [&] {
    const box::Points points = box::points_of(place_).value();
    std::string text;
    for (const std::uint32_t at : points.order) text += points.counts.at(at).name;
    return text;
  };
  const auto reach = [&](const std::vector<const char *> &wanted) {
    box::PointCounter points;
    points.map(place_.points().c_str());
    for (const char *name : wanted) points.reach(PointKind::kRead, name);
    return 0;
  };
  box::order_points(place_);
  reach({"b", "a"});
  EXPECT_EQ(in_child([&] { return reach({"b", "c"}); }), 0);
  EXPECT_EQ(names(), "babc");
  deviate(PointKind::kRead, "a", 2, {Way::kShort, 0});
  EXPECT_EQ(names(), "babc") << "with deviations, too";
  box::forget_order(place_);
  reach({"c"});
  EXPECT_EQ(names(), "");
  EXPECT_EQ(count(PointKind::kRead, "c"), 2u) << "counted on";
  EXPECT_EQ(box::points_of(place_)->deviations.size(), 1u);
  box::resume_order(place_);
  reach({"c", "a"});
  EXPECT_EQ(names(), "ca") << "from there on";
  EXPECT_EQ(count(PointKind::kRead, "c"), 3u);
  box::order_points(place_);
  reach({"b", "a", "b", "c"});
  EXPECT_EQ(names(), "babc");
  box::count_points(place_);
  reach({"b"});
  EXPECT_EQ(names(), "b") << "counted anew, and still in order";
  EXPECT_EQ(count(PointKind::kRead, "b"), 1u);
}

TEST_F(PointsTest, DeviateOnceAtTheirNumberAndNowhereElse) {
  deviate(PointKind::kRead, "a", 2, {Way::kMissing, 0});
  deviate(PointKind::kProgram, "a", 1, {Way::kExit, 205});
  box::PointCounter points;
  ASSERT_TRUE(points.map(place_.points().c_str()));
  EXPECT_EQ(points.reach(PointKind::kRead, "a").way, Way::kUsual) << "the first one";
  EXPECT_EQ(points.reach(PointKind::kRead, "b").way, Way::kUsual) << "of another name";
  EXPECT_EQ(points.reach(PointKind::kWrite, "a").way, Way::kUsual) << "of another kind";
  EXPECT_EQ(box::points_of(place_)->deviations[0].happened, 0);
  EXPECT_EQ(points.reach(PointKind::kRead, "a").way, Way::kMissing);
  EXPECT_EQ(points.reach(PointKind::kRead, "a").way, Way::kUsual) << "the third one";
  const box::Turn turn = points.reach(PointKind::kProgram, "a");
  EXPECT_EQ(turn.way, Way::kExit);
  EXPECT_EQ(turn.value, 205);
  EXPECT_EQ(box::points_of(place_)->deviations[0].happened, getpid());
  EXPECT_EQ(box::points_of(place_)->deviations[0].turn.way, Way::kMissing);
}

TEST_F(PointsTest, SendASignalToWhoeverComesToThem) {
  deviate(PointKind::kLog, "", 1, {Way::kSignal, SIGKILL});
  EXPECT_EQ(in_child([&] {
              box::PointCounter points;
              points.map(place_.points().c_str());
              points.reach(PointKind::kLog, "");
              return 0;
            }),
            -SIGKILL);
  EXPECT_GT(box::points_of(place_)->deviations[0].happened, 0) << "it is told all the same";
}

TEST_F(PointsTest, OfLongNamesAreToldApart) {
  const std::string one = std::string(60, 'n') + "1", other = std::string(60, 'n') + "2";
  deviate(PointKind::kRead, other.c_str(), 1, {Way::kShort, 0});
  box::PointCounter points;
  points.map(place_.points().c_str());
  EXPECT_EQ(points.reach(PointKind::kRead, one).way, Way::kUsual);
  EXPECT_EQ(points.reach(PointKind::kRead, other).way, Way::kShort);
  EXPECT_EQ(box::points_of(place_)->counts.size(), 2u);
  EXPECT_EQ(box::points_of(place_)->counts[0].name.size(), box::kLongestPointName);
}

TEST_F(PointsTest, AreNotCountedWhereThereIsNoRoomAndThatIsTold) {
  box::count_points(place_);
  box::PointCounter points;
  points.map(place_.points().c_str());
  for (int i = 0; i < 4100; ++i) points.reach(PointKind::kRead, std::to_string(i));
  EXPECT_EQ(box::points_of(place_)->lost, 4u);
  for (std::uint32_t i = 1; i <= box::kMostDeviations; ++i) deviate(PointKind::kRead, "a", i, {Way::kShort, 0});
  EXPECT_THROW(deviate(PointKind::kRead, "b", 1, {Way::kShort, 0}), box::BoxError);
}

TEST_F(PointsTest, TakeOneDeviationThatHasNotHappenedYet) {
  deviate(PointKind::kRead, "a", 2, {Way::kShort, 0});
  EXPECT_THROW(deviate(PointKind::kRead, "a", 2, {Way::kSignal, SIGTERM}), box::BoxError);
  deviate(PointKind::kRead, "a", 1, {Way::kSignal, SIGTERM});
  deviate(PointKind::kWrite, "a", 2, {Way::kRefused, 0});
  EXPECT_EQ(box::points_of(place_)->deviations.size(), 3u) << "others have points of their own";
}

TEST_F(PointsTest, StayWhereAFileMayNotBeSoLarge) {
  deviate(PointKind::kRead, "a", 1, {Way::kShort, 0});
  EXPECT_EQ(in_child([&] {
              box::survive_full_files();
              const rlimit small{4096, 4096};
              setrlimit(RLIMIT_FSIZE, &small);
              try {
                box::count_points(place_);
              } catch (const box::BoxError &error) {
                return std::string_view(error.what()).ends_with(": File too large") ? 0 : 1;
              }
              return 2;
            }),
            0);
  EXPECT_EQ(box::points_of(place_).value().deviations.size(), 1u);
}

TEST_F(PointsTest, AreCountedNoLongerInAFileThatIsEmptiedMeanwhile) {
  box::survive_lost_mappings();
  deviate(PointKind::kRead, "a", 1, {Way::kShort, 0});
  box::PointCounter points;
  ASSERT_TRUE(points.map(place_.points().c_str()));
  std::filesystem::resize_file(place_.points(), 0);
  EXPECT_EQ(points.reach(PointKind::kRead, "a").way, Way::kUsual);
  EXPECT_FALSE(box::points_of(place_));
}

TEST_F(PointsTest, AreAllAsUsualWhenTheyAreForgottenAlsoForWhoRunsAlready) {
  deviate(PointKind::kRead, "a", 1, {Way::kShort, 0});
  box::PointCounter points;
  ASSERT_TRUE(points.map(place_.points().c_str()));
  EXPECT_TRUE(box::forget_points(place_));
  EXPECT_FALSE(box::points_of(place_));
  EXPECT_EQ(points.reach(PointKind::kRead, "a").way, Way::kUsual);
}

TEST_F(PointsTest, InAFileOfAnythingElseAreAnErrorAndHarmNobody) {
  box::count_points(place_);
  const auto size = std::filesystem::file_size(place_.points());
  const std::string rubbish(size, '\xff');
  for (const std::string &text : {std::string("short"), rubbish, "SBXPINT1" + rubbish.substr(8)}) {
    std::ofstream(place_.points(), std::ios::trunc) << text;
    box::PointCounter points;
    points.map(place_.points().c_str());
    points.reach(PointKind::kRead, "a");
    if (text.starts_with("SBX")) continue;  // its head is right: nothing in it can be believed, and nothing is
    EXPECT_THROW(box::points_of(place_), box::BoxError) << text.size();
    EXPECT_THROW(deviate(PointKind::kRead, "a", 1, {Way::kShort, 0}), box::BoxError) << text.size();
  }
  EXPECT_TRUE(box::points_of(place_)->deviations.empty());
  EXPECT_TRUE(box::points_of(place_)->counts.empty());
}

TEST_F(PointsTest, LeadNowhereElseByALink) {
  const auto outside = scratch_ / "outside";
  std::ofstream(outside).close();
  std::filesystem::create_symlink(outside, place_.points());
  EXPECT_THROW(box::count_points(place_), box::BoxError);
  EXPECT_EQ(std::filesystem::file_size(outside), 0u);
  EXPECT_FALSE(box::PointCounter().map(place_.points().c_str()));
}

}  // namespace
