#include <algorithm>
#include <string>

#include "tests/host/spbox/spbox_test.h"

namespace {

// spbox on a disk that is as small as the test wants it: a file system in memory that goes with the command.
class SmallDisk : public SpboxTest {
 protected:
  Done on_disk_of(std::size_t bytes, const std::string &script) const {
    const std::string spbox = SPBOX;
    return run_to_end({"bwrap", "--dev-bind", "/", "/", "--size", std::to_string(bytes), "--tmpfs", "/mnt", "--chdir",
                       "/mnt", "--setenv", "PATH", spbox.substr(0, spbox.rfind('/')) + ":/usr/bin:/bin", "--", "sh",
                       "-c", script});
  }
};

TEST_F(SmallDisk, TakesAWholeBoxOrNone) {
  bool was_full = false, had_room = false;
  for (std::size_t bytes = 64 << 10; bytes <= 16 << 20; bytes += bytes / 6 / 4096 * 4096 + 4096) {
    const Done made =
        on_disk_of(bytes, "spbox create box --model qa && spbox units box >/dev/null && spbox dump box >/dev/null");
    if (made.exit_status == 0) {
      had_room = true;
      EXPECT_TRUE(made.output.starts_with("Made box: ")) << bytes << ": " << made.output;
      continue;
    }
    was_full = true;
    EXPECT_EQ(made.exit_status, 1) << bytes << ": " << made.output;
    EXPECT_EQ(std::ranges::count(made.output, '\n'), 1) << bytes << ": " << made.output;
    EXPECT_NE(made.output.find("No space left on device"), std::string::npos) << bytes << ": " << made.output;
  }
  EXPECT_TRUE(was_full);
  EXPECT_TRUE(had_room);
}

TEST_F(SmallDisk, ThatIsFullLetsABoxBeReadAndRefusesAChangeWhole) {
  EXPECT_EQ(on_disk_of(24 << 20,
                       "spbox create box --model qe1 >/dev/null && spbox dump box before.dump || exit 9\n"
                       "cat /dev/zero >rest 2>/dev/null\n"
                       "spbox units box >/dev/null && echo read\n"
                       "spbox pull box /CMU#0 /CMU#1 /CMU#2 /CMU#3 /IOU#0 /IOU#1 /IOU#2 /IOU#3; echo $?\n"
                       "spbox dump box | cmp - before.dump && echo unchanged\n"
                       "rm rest\n"
                       "spbox pull box /CMU#0")
                .output,
            "read\n"
            "spbox: nothing was changed: databases in box/mgb/db: cannot save the changes: No space left on device\n"
            "1\n"
            "unchanged\n"
            "/CMU#0  Not installed\n");
}

TEST_F(SmallDisk, ThatIsFullLeavesTheOldDumpAsItIs) {
  EXPECT_EQ(on_disk_of(24 << 20,
                       "spbox create box --model qe1 >/dev/null && spbox dump box kept.dump || exit 9\n"
                       "cp kept.dump /mnt/same.dump; cat /dev/zero >rest 2>/dev/null\n"
                       "spbox dump box kept.dump; echo $?\n"
                       "cmp kept.dump same.dump && echo kept; ls")
                .output,
            "spbox: kept.dump could not be written: No space left on device.\n"
            "1\n"
            "kept\n"
            "box\nkept.dump\nrest\nsame.dump\n");
}

TEST_F(SmallDisk, ThatIsFullHasNoRoomForACopyWithHoles) {
  EXPECT_EQ(on_disk_of(24 << 20,
                       "spbox create box --model qe1 >/dev/null && cp -r --sparse=always box copy || exit 9\n"
                       "cat /dev/zero >rest 2>/dev/null\n"
                       "spbox units copy\n"
                       "rm rest\n"
                       "spbox units copy >/dev/null && echo read")
                .output,
            "spbox: databases in copy/mgb/db: cannot open: data.mdb is a copy with holes, and the disk has no room for "
            "them: No space left on device\n"
            "read\n");
}

class Limited : public SpboxTest {
 protected:
  // spbox where no file may be larger than so many kilobytes.
  Done limited_to(int kilobytes, const std::string &words) const {
    return run_to_end({"bash", "-c",
                       "cd " + scratch_.path().string() + " && ulimit -f " + std::to_string(kilobytes) +
                           " && exec " SPBOX " " + words});
  }
};

TEST_F(Limited, ToSmallFilesIsAnErrorLikeAnyOther) {
  const Done made = limited_to(100, "create box --model qa");
  EXPECT_EQ(made.exit_status, 1) << made.output;
  EXPECT_NE(made.output.find("File too large"), std::string::npos) << made.output;
  EXPECT_FALSE(std::filesystem::exists(scratch_ / "box"));
  make_box("qa");
  const Done run = limited_to(100, "run box -- bash -c 'cat /dev/zero >/tmp/large'");
  EXPECT_EQ(run.exit_status, 128 + 25) << "a command in the box has the signal as it was: " << run.output;
}

TEST_F(Limited, ToSmallFilesLeavesNoFolderThatWasMadeForTheBox) {
  std::filesystem::create_directory(scratch_ / "there");
  const Done made = limited_to(100, "create there/a/b/c/ --model qa");
  EXPECT_EQ(made.exit_status, 1) << made.output;
  EXPECT_NE(made.output.find(" there/a/b/c/mgb/"), std::string::npos) << "the box by its name: " << made.output;
  EXPECT_TRUE(std::filesystem::is_empty(scratch_ / "there"));
  done({"create", "there/a/b/c/", "--model", "qa"});
}

}  // namespace
