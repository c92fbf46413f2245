#include "host/spbox/enclosure.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <stdexcept>
#include <string>

#include "tests/host/box/scratch.h"

namespace {

namespace fs = std::filesystem;

spbox::RootPlan plan(const fs::path &program, const fs::path &folder) {
  return {.box = box::Place("/srv/box"),
          .spbox = "/usr/bin/spbox",
          .control_program = "/usr/bin/control_program",
          .daemon = "/usr/bin/monitor_daemon",
          .program = program,
          .folder = folder};
}

bool has(const std::vector<std::string> &arguments, const std::vector<std::string> &run) {
  return std::search(arguments.begin(), arguments.end(), run.begin(), run.end()) != arguments.end();
}

TEST(Enclosure, ShowsOfTmpWhatTheCommandNeeds) {
  const Scratch program, folder, other;
  fs::create_directories(program / "build/bin");
  const auto guests = spbox::guests_in_tmp(plan(program / "build/bin/replace_unit", folder.path()));
  EXPECT_EQ(guests, (std::set<std::string>{program.path().filename(), folder.path().filename()}));
}

TEST(Enclosure, ShowsNothingOfTmpToACommandFromElsewhere) {
  EXPECT_TRUE(spbox::guests_in_tmp(plan("/usr/bin/id", "/usr")).empty());
  EXPECT_TRUE(spbox::guests_in_tmp(plan("", "/tmp")).empty());
  EXPECT_TRUE(spbox::guests_in_tmp(plan("/tmp/does_not_exist/x", "/")).empty());
}

TEST(Enclosure, FollowsLinksIntoTmp) {
  const Scratch target, elsewhere;
  std::ofstream(target / "program") << "x";
  fs::create_symlink(target / "program", elsewhere / "link");
  const auto guests = spbox::guests_in_tmp(plan(elsewhere / "link", "/"));
  EXPECT_TRUE(guests.contains(target.path().filename()));
  EXPECT_TRUE(guests.contains(elsewhere.path().filename()));
}

// What bwrap finds no mount point for, it makes one for, which nobody removes.
TEST(Enclosure, MountsInTmpWhatThePlanHas) {
  const Scratch folder;
  spbox::RootPlan known = plan("/usr/bin/id", folder.path());
  const std::vector<std::string> mount{"--ro-bind", folder.path(), folder.path()};
  EXPECT_FALSE(has(spbox::bwrap_arguments(known), mount));
  known.guests = spbox::guests_in_tmp(known);
  EXPECT_TRUE(has(spbox::bwrap_arguments(known), mount));
}

TEST(Enclosure, GivesTheBoxItsOwnPlaces) {
  const auto arguments = spbox::bwrap_arguments(plan("/usr/bin/id", "/usr"));
  EXPECT_TRUE(has(arguments, {"--bind", "/srv/box/mgb", "/mgb"}));
  EXPECT_TRUE(has(arguments, {"--bind", "/srv/box/tmp", "/tmp"}));
  EXPECT_TRUE(has(arguments, {"--ro-bind", "/usr/bin/control_program", "/mgb/lib/control_program"}));
  EXPECT_TRUE(has(arguments, {"--ro-bind", "/usr", "/usr"}));
  EXPECT_TRUE(has(arguments, {"--chdir", "/usr"}));
  EXPECT_FALSE(has(arguments, {"--unshare-pid"}));
  EXPECT_EQ(std::count(arguments.begin(), arguments.end(), "--bind"), 2) << "nothing else is writable";
}

TEST(Enclosure, StartsAtTheRootWhereTheFolderIsNotSeen) {
  EXPECT_TRUE(has(spbox::bwrap_arguments(plan("/usr/bin/id", "/dev/shm")), {"--chdir", "/"}));
  EXPECT_TRUE(has(spbox::bwrap_arguments(plan("/usr/bin/id", "/mgb")), {"--chdir", "/"}));
}

class Mounts : public testing::Test {
 protected:
  Mounts() {
    fs::create_directories(place_.root() / "mgb/lib");
    fs::create_directories(place_.tmp());
  }
  bool there(const char *name) const { return fs::exists(place_.tmp() / name); }

  Scratch scratch_;
  box::Place place_{scratch_ / "box"};
};

TEST_F(Mounts, AreGoneAfterTheLastCommand) {
  {
    spbox::MountPoints first(place_);
    first.make("build", true);
    {
      spbox::MountPoints second(place_);
      second.make("build", true);
      second.make("program", false);
    }
    EXPECT_TRUE(there("build")) << "another command still uses it";
    EXPECT_TRUE(fs::is_regular_file(place_.tmp() / "program"));
  }
  EXPECT_FALSE(there("build"));
  EXPECT_FALSE(there("program"));
}

TEST_F(Mounts, StayWhereTheyWereBefore) {
  fs::create_directory(place_.tmp() / "mine");
  { spbox::MountPoints(place_).make("mine", true); }
  EXPECT_TRUE(there("mine"));
}

TEST_F(Mounts, WhatIsAFolderHereAndAFileThereIsNamed) {
  fs::create_directory(place_.tmp() / "folder");
  std::ofstream(place_.tmp() / "file").close();
  spbox::MountPoints points(place_);
  const auto said = [&](const char *name, bool folder) -> std::string {
    try {
      points.make(name, folder);
    } catch (const std::runtime_error &error) {
      return error.what();
    }
    return {};
  };
  EXPECT_EQ(said("folder", false),
            "/tmp/folder is a folder in the box, and a file of the workstation, which the command needs there.");
  EXPECT_EQ(said("file", true),
            "/tmp/file is a file in the box, and a folder of the workstation, which the command needs there.");
  EXPECT_EQ(said("folder", true) + said("file", false), "");
}

TEST_F(Mounts, LeftByAKilledRunGoWithTheNext) {
  fs::create_directory(place_.tmp() / "stale");
  std::ofstream(place_.root() / "mgb/lib/mount_points") << "stale\n";
  const spbox::MountPoints next(place_);
  EXPECT_FALSE(there("stale")) << "before its command begins";
}

TEST_F(Mounts, AreNotMadeBehindALink) {
  spbox::MountPoints points(place_);
  fs::create_symlink(scratch_ / "elsewhere", place_.tmp() / "program");
  points.make("program", false);
  EXPECT_FALSE(fs::exists(scratch_ / "elsewhere"));
}

TEST_F(Mounts, ThatHoldSomethingStay) {
  {
    spbox::MountPoints points(place_);
    points.make("build", true);
    std::ofstream(place_.tmp() / "build/file") << "x";
  }
  EXPECT_TRUE(there("build"));
}

}  // namespace
