#include <gtest/gtest.h>
#include <unistd.h>

#include "host/clock/guest.h"
#include "host/clock/hours.h"
#include "host/clock/keeper.h"

namespace {

namespace fs = std::filesystem;
using box_time::nanoseconds;

class Clock : public testing::Test {
 protected:
  void TearDown() override { fs::remove(page_); }

  fs::path page_ = fs::temp_directory_path() / ("lmainte_clock." + std::to_string(getpid()));
};

TEST_F(Clock, IsKeptByOneAtATime) {
  box_time::Keeper keeper({});
  keeper.keep(page_);
  keeper.keep(page_);  // again for the same box
  EXPECT_TRUE(box_time::is_kept(page_));
  box_time::Keeper other({});
  try {
    other.keep(page_);
    FAIL() << "two keep the same time";
  } catch (const std::runtime_error &error) {
    EXPECT_NE(std::string(error.what()).find("kept already, by process " + std::to_string(getpid())), std::string::npos)
        << error.what();
  }
}

// A run that has seen a keeper mounts the page, although the keeper may have ended meanwhile.
TEST_F(Clock, KeepsThePageForThoseWhoAreAboutToMountIt) {
  { box_time::Keeper({}).keep(page_); }
  EXPECT_TRUE(fs::exists(page_));
  EXPECT_FALSE(box_time::is_kept(page_));
}

// Commands of an ended keeper may still be at work in the box.
TEST_F(Clock, BeginsOnANewPageWhereAnotherOneHasEnded) {
  { box_time::Keeper({}).keep(page_); }
  const auto old = box_time::Table::open(page_);
  box_time::Keeper keeper({});
  keeper.keep(page_);
  EXPECT_TRUE(box_time::is_kept(page_));
  EXPECT_EQ(old.value().read().keeper, 0U);
  EXPECT_EQ(box_time::Table::open(page_).value().read().keeper, static_cast<std::uint32_t>(getpid()));
  EXPECT_FALSE(fs::exists(page_.string() + ".next"));
}

TEST_F(Clock, IsNoLink) {
  fs::create_symlink("/etc/passwd", page_);
  box_time::Keeper keeper({});
  EXPECT_THROW(keeper.keep(page_), std::system_error);
}

TEST_F(Clock, JumpsToTheMomentForWhichItsKeeperWaits) {
  const box_time::Keeper keeper({});
  const nanoseconds before = box_time::wall();
  EXPECT_EQ(box_time::poll({}, box_time::now() + std::chrono::hours(1)), 0);
  EXPECT_EQ(box_time::now(), nanoseconds(std::chrono::hours(1)));
  EXPECT_LT(box_time::wall() - before, std::chrono::minutes(1));
}

TEST_F(Clock, PassesAsOnTheWallForAGuestWhoseKeeperHasLeft) {
  auto keeper = std::make_unique<box_time::Keeper>(box_time::Speed{});
  keeper->keep(page_);
  const box_time::Guest guest(page_);
  ASSERT_TRUE(guest.has_box_time());
  const nanoseconds kept = guest.now();
  EXPECT_EQ(guest.now(), kept) << "time stands: nobody waits";
  keeper.reset();
  guest.sleep(std::chrono::milliseconds(1));
  EXPECT_GE(guest.now(), kept + std::chrono::milliseconds(1));
}

TEST_F(Clock, SurvivesAPageThatIsCutShort) {
  box_time::Keeper keeper({});
  keeper.keep(page_);
  fs::resize_file(page_, 3);
  EXPECT_EQ(box_time::poll({}, box_time::now() + std::chrono::seconds(1)), 0);
}

TEST(Guest, HasTheWallsTimeWhereNobodyKeepsTheBoxs) {
  const box_time::Guest guest("/does/not/exist");
  EXPECT_FALSE(guest.has_box_time());
  const nanoseconds before = guest.now();
  EXPECT_LE(before, box_time::wall());
}

}  // namespace
