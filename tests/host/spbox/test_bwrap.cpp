// A bubblewrap that fails: spbox ends, says so, and leaves nothing of it.
#include <cerrno>
#include <csignal>
#include <fstream>

#include "tests/host/spbox/spbox_test.h"

namespace {

namespace fs = std::filesystem;

constexpr const char *kNoDaemon =
    "spbox: the box's daemon does not run. Requests to it will fail. The command runs without it.\n";
constexpr const char *kNotIn =
    "spbox: the command was not run: bwrap died of signal 9 before the command was in the box.\n";

class Bubblewrap : public SpboxTest {
 protected:
  void SetUp() override {
    make_box("qa");
    fs::create_directory(scratch_ / "bin");
  }

  // What a shell does instead of bubblewrap, for the daemon and for the command.
  Done run_with(const std::string &for_daemon, const std::string &for_command) {
    write("bin/bwrap", "#!/bin/sh\ncase \"$*\" in *enter-box*) " + for_command + ";; *) " + for_daemon + ";; esac\n");
    fs::permissions(scratch_ / "bin/bwrap", fs::perms::owner_all);
    return run_to_end({"/usr/bin/env", "-C", scratch_.path(), "PATH=" + (scratch_ / "bin").string() + ":/usr/bin:/bin",
                       "timeout", "30", SPBOX, "run", "box", "echo", "done"});
  }
};

// Something that it has started may hold all its descriptors still.
TEST_F(Bubblewrap, ThatDiesBeforeTheCommandIsInEndsTheRun) {
  const Done result =
      run_with("sleep 100 >/dev/null 2>&1 & kill -KILL $$", "sleep 100 >/dev/null 2>&1 & kill -KILL $$");
  EXPECT_EQ(result.exit_status, 1);
  EXPECT_EQ(result.output, std::string(kNoDaemon) + kNotIn);
}

// It waits for its own child for ever where it could not tell it to go on.
TEST_F(Bubblewrap, ThatHangsBeforeTheCommandIsInEndsTheRun) {
  const Done result = run_with("exit 1", "exec sleep 100");
  EXPECT_EQ(result.exit_status, 1);
  EXPECT_EQ(result.output, std::string(kNoDaemon) + kNotIn);
}

TEST_F(Bubblewrap, ThatBringsNoDaemonLeavesNoProcess) {
  const Done result =
      run_with("sleep 100 >/dev/null 2>&1 & echo $! >left; echo no room >&2; exit 1", "exec /usr/bin/bwrap \"$@\"");
  EXPECT_EQ(result.exit_status, 0);
  EXPECT_NE(result.output.find("spbox: the box's daemon does not run: no room. "), std::string::npos) << result.output;
  EXPECT_NE(result.output.find("done\n"), std::string::npos) << result.output;
  pid_t left = 0;
  std::ifstream(scratch_ / "left") >> left;
  ASSERT_GT(left, 0);
  EXPECT_EQ(kill(left, 0), -1);
  EXPECT_EQ(errno, ESRCH);
}

}  // namespace
