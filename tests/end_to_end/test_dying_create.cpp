// A maker of a box that dies before each of its calls that change a file, and makers that work at the same time.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include "tests/host/box/scratch.h"
#include "tests/run.h"

namespace {

namespace fs = std::filesystem;
using Words = std::vector<std::string>;

constexpr const char *kCalls =
    "openat,mkdir,mkdirat,rename,renameat,renameat2,unlink,unlinkat,rmdir,symlink,symlinkat,ftruncate,fallocate,write,"
    "writev,pwrite64,pwritev,fdatasync,fsync";

// The leak checker cannot work in a program that is traced. Under sanitizers a program starts slowly, so fewer calls are
// tried.
#ifdef __SANITIZE_ADDRESS__
constexpr int kEach = 8;
#else
constexpr int kEach = 1;
#endif

std::string text_of(const fs::path &file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

class DyingCreate : public testing::Test {
 protected:
  Done run(const Words &before, const Words &words) const {
    Words command{"/usr/bin/env", "-C", scratch_.path()};
    if (!before.empty()) command.emplace_back("ASAN_OPTIONS=detect_leaks=0");
    command.insert(command.end(), before.begin(), before.end());
    command.emplace_back(SPBOX);
    command.insert(command.end(), words.begin(), words.end());
    return run_to_end(command);
  }
  Done spbox(const Words &words) const { return run({}, words); }

  // The calls of this spbox that change a file: the name, and how many of the name came before it.
  struct Call {
    std::string name;
    int number;
  };
  std::vector<Call> changing_calls(const Words &words) const {
    const Done done =
        run({"strace", "-f", "-qq", "-e", "signal=none", "-e", std::string("trace=") + kCalls, "-o", "calls"}, words);
    EXPECT_EQ(done.exit_status, 0) << done.output;
    std::vector<Call> calls;
    std::map<std::string, int> numbers;
    int seen = 0;
    std::ifstream lines(scratch_ / "calls");
    for (std::string line; std::getline(lines, line);) {
      const std::size_t end = line.find('('), begin = line.rfind(' ', end) + 1;
      if (end == std::string::npos) continue;
      const std::string name = line.substr(begin, end - begin);
      const int number = ++numbers[name];
      if (name == "openat" && line.find("O_CREAT") == std::string::npos) continue;
      if (seen++ % kEach == 0) calls.push_back({name, number});
    }
    return calls;
  }
  void die_before(const Call &call, const Words &words) const {
    const std::string number = std::to_string(call.number);
    const Done done = run({"strace", "-f", "-qq", "-o", "/dev/null", "-e", "trace=" + call.name, "-e",
                           "inject=" + call.name + ":signal=KILL:when=" + number},
                          words);
    EXPECT_NE(done.exit_status, 0) << call.name << ' ' << number << ": " << done.output;
  }

  std::string dump(const std::string &box) const {
    fs::remove(scratch_ / "dump");
    const Done done = spbox({"dump", box, "dump"});
    return done.exit_status == 0 ? text_of(scratch_ / "dump") : done.output;
  }
  Words entries(const fs::path &folder) const {
    Words names;
    if (!fs::exists(folder)) return names;
    for (const auto &entry : fs::directory_iterator(folder)) names.push_back(entry.path().filename());
    std::ranges::sort(names);
    return names;
  }

  Scratch scratch_;
};

TEST_F(DyingCreate, LeavesTheOldBoxOrTheNewOneWhole) {
  ASSERT_EQ(spbox({"create", "old", "--model", "qa"}).exit_status, 0);
  ASSERT_EQ(spbox({"fault", "old", "/PSU#0"}).exit_status, 0);
  ASSERT_EQ(spbox({"create", "new", "--model", "qb1"}).exit_status, 0);
  const std::string before = dump("old"), after = dump("new");
  const fs::path box = scratch_ / "box";
  const auto put_old_box = [&] {
    fs::remove_all(box);
    fs::copy(scratch_ / "old", box, fs::copy_options::recursive | fs::copy_options::copy_symlinks);
  };
  const Words words{"create", "box", "--model", "qb1", "--force"};
  put_old_box();
  int old_ones = 0, new_ones = 0;
  for (const Call &call : changing_calls(words)) {
    put_old_box();
    die_before(call, words);
    const std::string found = dump("box");
    old_ones += found == before;
    new_ones += found == after;
    EXPECT_TRUE(found == before || found == after) << call.name << ' ' << call.number << ": " << found.substr(0, 200);
    EXPECT_EQ(entries(box), (Words{"mgb", "tmp"})) << call.name << ' ' << call.number;
  }
  EXPECT_GT(old_ones, 50 / kEach);
  EXPECT_GT(new_ones, 5 / kEach);
}

TEST_F(DyingCreate, LeavesTheFirstBoxWholeOrRoomForIt) {
  const Words words{"create", "box", "--model", "qb1"};
  const std::vector<Call> calls = changing_calls(words);
  const std::string whole = dump("box");
  const fs::path box = scratch_ / "box";
  int made = 0;
  for (const Call &call : calls) {
    fs::remove_all(box);
    die_before(call, words);
    std::string found = dump("box");
    made += found == whole;
    if (found != whole) {
      EXPECT_NE(found.find("box is no box."), std::string::npos) << call.name << ' ' << call.number << ": " << found;
      EXPECT_EQ(entries(box), Words{}) << call.name << ' ' << call.number;
      EXPECT_EQ(spbox(words).exit_status, 0) << call.name << ' ' << call.number;
      found = dump("box");
    }
    EXPECT_EQ(found, whole) << call.name << ' ' << call.number;
    EXPECT_EQ(entries(box), (Words{"mgb", "tmp"})) << call.name << ' ' << call.number;
  }
  EXPECT_GE(made, 3 / kEach);
}

TEST_F(DyingCreate, IsToldByTheNextSpbox) {
  const Words words{"create", "box", "--model", "qb1", "--force"};
  ASSERT_EQ(spbox({"create", "box", "--model", "qa"}).exit_status, 0);
  die_before({"symlink", 1}, words);
  EXPECT_EQ(spbox({"program", "box", "ctlled", "--reset"}).output.substr(0, 75),
            "spbox: box was being made when spbox died. It is the box that it was.\n"
            "Progr");
  die_before({"rename", 4}, words);
  EXPECT_TRUE(spbox({"units", "box"})
                  .output.starts_with("spbox: box was being made when spbox died. It is the new box now.\n"));
  fs::remove_all(scratch_ / "box");
  die_before({"symlink", 1}, words);
  EXPECT_TRUE(spbox({"units", "box"}).output.starts_with("spbox: box was being made when spbox died. It is no box.\n"));
}

TEST_F(DyingCreate, LeavesTheNewBoxAlsoWhereThoseDieWhoFinishIt) {
  ASSERT_EQ(spbox({"create", "box", "--model", "qa"}).exit_status, 0);
  ASSERT_EQ(spbox({"create", "new", "--model", "qb1"}).exit_status, 0);
  die_before({"rename", 4}, {"create", "box", "--model", "qb1", "--force"});
  for (int round = 0; round < 3; ++round) die_before({"rename", 2}, {"units", "box"});
  EXPECT_TRUE(fs::exists(scratch_ / "box/.making"));
  EXPECT_EQ(dump("box"), dump("new"));
  EXPECT_EQ(entries(scratch_ / "box"), (Words{"mgb", "tmp"}));
}

TEST_F(DyingCreate, TwoAtOnceMakeOneBox) {
  const std::string make = std::string(SPBOX) + " create box --model qb1 &";
  for (int round = 0; round < 5; ++round) {
    const Done done = run_to_end(
        {"/usr/bin/env", "-C", scratch_.path(), "sh", "-c", "for each in 1 2 3 4; do " + make + " done; wait"});
    const auto times = [&](const std::string &text) {
      int count = 0;
      for (std::size_t at = done.output.find(text); at != std::string::npos; at = done.output.find(text, at + 1))
        ++count;
      return count;
    };
    EXPECT_EQ(times("Made box: model qb1"), 1) << done.output;
    EXPECT_EQ(times("spbox: box is a box already."), 3) << done.output;
    EXPECT_EQ(entries(scratch_ / "box"), (Words{"mgb", "tmp"}));
    EXPECT_EQ(spbox({"units", "box"}).exit_status, 0);
    fs::remove_all(scratch_ / "box");
  }
}

}  // namespace
