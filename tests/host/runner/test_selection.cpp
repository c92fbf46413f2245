#include <gtest/gtest.h>

#include <sys/stat.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <numeric>
#include <set>

#include "host/runner/selection.h"
#include "host/script/script.h"
#include "tests/host/box/scratch.h"

namespace {

namespace fs = std::filesystem;
using Words = std::vector<std::string>;

class SearchTest : public testing::Test {
 protected:
  void write(const char *name) const {
    fs::create_directories((scratch_ / name).parent_path());
    std::ofstream(scratch_ / name) << "";
  }
  // The names of what is found, without the folder of the test.
  Words found(const Words &paths) const {
    Words names, all;
    for (const auto &path : paths) all.push_back((scratch_ / path.c_str()).string());
    for (const auto &script : runner::find_scripts(all)) {
      names.push_back(fs::path(script.name).lexically_relative(scratch_.path()));
    }
    return names;
  }

  Scratch scratch_;
};

TEST_F(SearchTest, FindsAllPlaysBelowAFolderByName) {
  for (const char *name : {"b.play", "a/z.play", "a/deep/y.play", "a/notes.txt", "a/.x.play", ".git/x.play", "a/play"})
    write(name);
  fs::create_directory(scratch_ / "a/folder.play");
  EXPECT_EQ(found({"."}), (Words{"a/deep/y.play", "a/z.play", "b.play"}));
}

TEST_F(SearchTest, FollowsLinksToFilesAndNoneToFolders) {
  write("a/z.play");
  write("elsewhere/y.play");
  fs::create_directory_symlink(scratch_ / "a", scratch_ / "a/loop");
  fs::create_symlink(scratch_ / "elsewhere/y.play", scratch_ / "a/linked.play");
  fs::create_symlink("nowhere", scratch_ / "a/broken.play");
  EXPECT_EQ(found({"a"}), (Words{"a/linked.play", "a/z.play"}));
}

TEST_F(SearchTest, TakesAFileOfAnyNameAndEachOnce) {
  write("a/z.play");
  write("script");
  EXPECT_EQ(found({"script", "a", "a/z.play", "a/../a/z.play", "script"}), (Words{"a/z.play", "script"}));
}

TEST_F(SearchTest, RefusesWhatIsNotThere) {
  EXPECT_THROW(found({"nowhere"}), script::Error);
  EXPECT_THROW(runner::find_scripts({""}), script::Error);
}

TEST_F(SearchTest, NamesTheScriptsWithoutADot) {
  write("here.play");
  const auto before = fs::current_path();
  fs::current_path(scratch_.path());
  EXPECT_EQ(runner::find_scripts({"."}).at(0).name, "here.play");
  EXPECT_EQ(runner::find_scripts({"./here.play"}).at(0).name, "here.play");
  fs::current_path(before);
}

// Scripts and what a reader says of them.
std::vector<std::string> plays_of(const std::vector<runner::Script> &scripts,
                                  const std::map<std::string, runner::Reading> &readings) {
  std::vector<std::string> names;
  for (const auto &play : runner::plays_among(scripts, [&](const fs::path &file) { return readings.at(file); }))
    names.push_back(play.name);
  return names;
}

TEST(Selection, LeavesOutPartsThatCannotBePlayedAlone) {
  const std::map<std::string, runner::Reading> readings{{"a.play", {3, {"parts/../walk.play", "whole.play"}, ""}},
                                                        {"walk.play", {0, {}, "nobody gave $x a value"}},
                                                        {"whole.play", {3, {}, ""}},
                                                        {"alone.play", {0, {}, "makes no box"}}};
  const std::vector<runner::Script> scripts{
      {"a.play", "a.play"}, {"alone.play", "alone.play"}, {"walk.play", "walk.play"}, {"whole.play", "whole.play"}};
  EXPECT_EQ(plays_of(scripts, readings), (Words{"a.play", "alone.play", "whole.play"}));
  auto named = scripts;
  named[2].was_named = true;
  EXPECT_EQ(plays_of(named, readings).size(), 4U);
}

std::vector<runner::Play> many_plays() {
  std::vector<runner::Play> plays;
  for (std::size_t i = 0; i < 67; ++i) {
    std::string name = (i % 3 == 0 ? "wrong/" : "models/") + std::to_string(i) + ".play";
    plays.push_back({name, name, 3 + i * i % 40, ""});
  }
  return plays;
}

TEST(Selection, FitsNamesByAPattern) {
  EXPECT_EQ(runner::fitting(many_plays(), "wrong/*").size(), 23U);
  EXPECT_EQ(runner::fitting(many_plays(), "*/1?.play").size(), 10U);
  EXPECT_EQ(runner::fitting(many_plays(), "*3*").size(), 16U);
  EXPECT_TRUE(runner::fitting(many_plays(), "wrong").empty());
}

TEST(Selection, DividesAllPlaysIntoSharesOfAboutTheSameSize) {
  for (const std::size_t shares : {std::size_t{1}, std::size_t{2}, std::size_t{8}, std::size_t{100}}) {
    std::multiset<std::string> names;
    std::vector<std::size_t> sizes;
    for (std::size_t number = 1; number <= shares; ++number) {
      std::size_t size = 0;
      for (const auto &play : runner::share_of(many_plays(), {number, shares})) {
        names.insert(play.name);
        size += play.steps + 1;
      }
      sizes.push_back(size);
    }
    EXPECT_EQ(names.size(), 67U) << shares;
    EXPECT_EQ(std::set<std::string>(names.begin(), names.end()).size(), 67U) << shares;
    const auto [least, most] = std::minmax_element(sizes.begin(), sizes.end());
    EXPECT_LE(*most - *least, 43U) << shares;
  }
}

TEST(Selection, ReadsWhichShare) {
  EXPECT_EQ(runner::shard_in("2/8").number, 2U);
  EXPECT_EQ(runner::shard_in("2/8").shares, 8U);
  for (const char *wrong : {"", "/", "2", "0/8", "9/8", "2/", "/8", "-1/8", "2/8/1", "2/10001", "a/b", "2 /8"}) {
    EXPECT_THROW(runner::shard_in(wrong), std::invalid_argument) << wrong;
  }
}

}  // namespace
