// The box as a command of a good play found it.
#include "host/sweep/checkpoint.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <fstream>
#include <iterator>
#include <string>

#include "tests/host/box/scratch.h"

namespace sweep {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

class Checkpoint : public testing::Test {
 protected:
  Checkpoint() : place_(scratch_ / "box"), other_(scratch_ / "other"), checkpoints_(scratch_.path()) {
    fs::create_directories(place_.clock().parent_path());
    fs::create_directories(place_.tmp());
    std::ofstream(place_.clock()) << "page";
    std::ofstream(place_.tmp() / "file") << "text";
    fs::permissions(place_.tmp(), fs::perms::owner_all | fs::perms::sticky_bit);
    fs::permissions(place_.tmp() / "file", fs::perms::owner_read);
    fs::create_symlink("nowhere", place_.tmp() / "link");
  }

  Scratch scratch_;
  box::Place place_, other_;
  Checkpoints checkpoints_;
};

TEST_F(Checkpoint, HasTheBoxWithoutItsSocketsAndHowFarItsTimeIsAhead) {
  ASSERT_EQ(mknod((place_.tmp() / "socket").c_str(), S_IFSOCK | 0600, 0), 0);
  EXPECT_FALSE(checkpoints_.has(3));
  checkpoints_.keep(3, {place_, 7s});
  ASSERT_TRUE(checkpoints_.has(3));
  EXPECT_FALSE(checkpoints_.has(2));
  std::ofstream(place_.tmp() / "file", std::ios::app) << "more";
  EXPECT_EQ(checkpoints_.restore(3, other_), 7s);
  std::ifstream file(other_.tmp() / "file");
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), "text");
  EXPECT_EQ(fs::status(other_.tmp() / "file").permissions(), fs::perms::owner_read);
  EXPECT_EQ(fs::status(other_.tmp()).permissions(), fs::perms::owner_all | fs::perms::sticky_bit);
  EXPECT_EQ(fs::read_symlink(other_.tmp() / "link"), "nowhere");
  EXPECT_TRUE(fs::is_directory(other_.clock().parent_path()));
  EXPECT_FALSE(fs::exists(other_.clock()));
  EXPECT_FALSE(fs::exists(other_.tmp() / "socket"));
}

TEST_F(Checkpoint, IsNotThereWhereItCannotBeKept) {
  fs::create_directories(scratch_ / "command 3.part/box/tmp");
  std::ofstream(scratch_ / "command 3.part/box/tmp/file") << "in the way";
  checkpoints_.keep(3, {place_, 7s});
  EXPECT_FALSE(checkpoints_.has(3));
  EXPECT_FALSE(fs::exists(scratch_ / "command 3.part"));
  const Checkpoints nowhere(scratch_ / "no such folder");
  nowhere.keep(1, {place_, 7s});
  EXPECT_FALSE(nowhere.has(1));
  EXPECT_THROW(nowhere.restore(1, other_), fs::filesystem_error);
}

}  // namespace
}  // namespace sweep
