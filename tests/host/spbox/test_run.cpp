#include <signal.h>
#include <unistd.h>

#include <fstream>
#include <thread>

#include "host/terminal/terminal.h"
#include "tests/host/spbox/spbox_test.h"

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

class Run : public SpboxTest {
 protected:
  void SetUp() override { make_box("qe1"); }

  // The words that start spbox as an ordinary user, who may write in the test's folder. The tools lie there, too: root may
  // have built them in a folder that is closed to others.
  Words as_ordinary_user() {
    if (geteuid() != 0) return {"/usr/bin/env", "-C", scratch_.path(), SPBOX};
    const fs::path tools = scratch_.path() / "tools";
    fs::create_directory(tools);
    for (const fs::path tool : {SPBOX, CONTROL_PROGRAM, MONITOR_DAEMON}) fs::copy(tool, tools / tool.filename());
    fs::permissions(scratch_.path(), fs::perms::all);
    return {"/usr/bin/setpriv", "--reuid=nobody", "--regid=nogroup", "--clear-groups", "/usr/bin/env", "-C",
            scratch_.path(),    tools / "spbox"};
  }
};

Words operator+(Words words, const Words &more) {
  words.insert(words.end(), more.begin(), more.end());
  return words;
}

TEST_F(Run, PassesTheExitStatusOn) {
  EXPECT_EQ(shell("exit 0").exit_status, 0);
  EXPECT_EQ(shell("exit 7").exit_status, 7);
  EXPECT_EQ(shell("kill -9 $$").exit_status, 137);
}

TEST_F(Run, ShowsTheBoxWhereTheLibraryLooks) {
  const Scratch elsewhere;
  const std::string tmp = "\n" + shell("ls -A /tmp").output;
  EXPECT_NE(tmp.find("\n.qe1\n"), std::string::npos) << tmp;
  EXPECT_NE(tmp.find("\n" + scratch_.path().filename().string() + "\n"), std::string::npos) << "the working folder";
  EXPECT_EQ(tmp.find("\n" + elsewhere.path().filename().string() + "\n"), std::string::npos) << tmp;
  EXPECT_EQ(shell("ls /mgb").output, "bin\ncli\ndb\nlib\nlog\nrun\n");
  EXPECT_EQ(shell("test -x /mgb/bin/ctlled && test -x /mgb/cli/usr/bin/ioadm && echo yes").output, "yes\n");
  EXPECT_EQ(shell("echo $SPBOX_ROOT.").output, ".\n");
}

TEST_F(Run, LetsNothingBeWrittenButTheBox) {
  EXPECT_EQ(shell("touch /tmp/written /mgb/written && echo yes").output, "yes\n");
  EXPECT_TRUE(fs::exists(place().tmp() / "written"));
  EXPECT_TRUE(fs::exists(place().root() / "mgb/written"));
  for (const std::string &folder : {std::string("/"), std::string("/usr"), std::string("/etc"), std::string("/var/tmp"),
                                    scratch_.path().string(), std::string("/mgb/lib"), std::string("/proc")}) {
    EXPECT_NE(shell("touch " + folder + "/written").exit_status, 0) << folder;
  }
  EXPECT_NE(shell("echo x >/mgb/lib/control_program").exit_status, 0);
}

TEST_F(Run, KeepsTheFolderAndTheDescriptors) {
  EXPECT_EQ(shell("pwd").output, scratch_.path().string() + "\n");
  const Done result =
      run_to_end({"/bin/sh", "-c", "cd " + scratch_.path().string() + " && echo word | " SPBOX " run box -- cat"});
  EXPECT_EQ(result.output, "word\n");
}

TEST_F(Run, PutsTemporaryFilesIntoTheBox) {
  const Done result = run_to_end({"/usr/bin/env", "-C", scratch_.path(), "TMPDIR=" + scratch_.path().string(),
                                  "TEMP=/not/there", SPBOX, "run", "box", "sh", "-c", "mktemp; echo ${TEMP-none}"});
  EXPECT_EQ(result.exit_status, 0) << result.output;
  EXPECT_TRUE(result.output.starts_with("/tmp/tmp.")) << result.output;
  EXPECT_TRUE(result.output.ends_with("\nnone\n")) << result.output;
}

TEST_F(Run, LeavesNoMountPointBehind) {
  shell("true");
  std::vector<std::string> left;
  for (const auto &entry : fs::directory_iterator(place().tmp())) left.push_back(entry.path().filename());
  EXPECT_EQ(left, std::vector<std::string>{".qe1"});
}

TEST_F(Run, RunsAProgramThatLiesInTmp) {
  fs::copy_file("/usr/bin/id", scratch_ / "program");
  EXPECT_EQ(in_box({"./program", "-u"}).output, std::to_string(geteuid()) + "\n");
}

TEST_F(Run, LetsControlProgramsAct) {
  const std::string alone =
      "exec env -i LC_ALL=C LD_LIBRARY_PATH= PRIV= /mgb/bin/ctlled -u /PSU#41 -c blink <&- >&- 2>&-";
  EXPECT_EQ(shell(alone).exit_status, 0);
  EXPECT_EQ(box::Hardware(place()).led("/PSU#41"), "blink");
  EXPECT_EQ(in_box({"/mgb/bin/ctlled", "-u", "/PSU#9", "-c", "blink"}).exit_status, 206);
  EXPECT_EQ(in_box({"/mgb/cli/usr/bin/ioadm", "poweroff", "/IOX@0A21"}).exit_status, 0);
}

TEST_F(Run, NamesACommandThatIsNotThere) {
  const Done result = in_box({"no_such_command"});
  EXPECT_EQ(result.exit_status, 127);
  EXPECT_EQ(result.output,
            "spbox: no_such_command: there is no such program on the PATH in the box. The box has the workstation's "
            "programs, but of /tmp only the program's own folder, the working folder and spbox's.\n");
  EXPECT_EQ(in_box({"./no_such_file"}).output,
            "spbox: ./no_such_file: there is no such file in the box. It has the workstation's folders, but a /tmp, a "
            "/dev and a /mgb of its own.\n");
  EXPECT_EQ(in_box({"/etc/passwd"}).exit_status, 126);
  EXPECT_EQ(in_box({"/etc/passwd"}).output,
            "spbox: /etc/passwd: it is no program that may be run (see its permissions).\n");
  std::ofstream(scratch_ / "script") << "#!/no/such/shell\n";
  fs::permissions(scratch_ / "script", fs::perms::owner_all);
  EXPECT_EQ(in_box({"./script"}).output, "spbox: ./script: the interpreter or loader that it names is not there.\n");
}

TEST_F(Run, TakesTheCommandAsItStands) {
  EXPECT_EQ(spbox({"run", "box", "echo", "-n", "--help", "--"}).output, "--help --");
  EXPECT_EQ(spbox({"run", "--no-pager", "box", "echo", "one"}).output, "one\n");
  EXPECT_EQ(spbox({"run", "box", "--no-pager", "--", "echo", "two"}).output, "two\n");
}

// The words are `spbox run`'s own: a descriptor, a letter for each of four signals, and a command.
TEST_F(Run, RefusesToEnterTheBoxInAnotherWay) {
  for (const Words &line : {Words{"enter-box"}, Words{"enter-box", "1"}, Words{"enter-box", "1", "dddd"},
                            Words{"enter-box", "x", "dddd", "true"}, Words{"enter-box", "1", "", "true"},
                            Words{"enter-box", "1", "d", "true"}, Words{"enter-box", "1", "dddx", "true"},
                            Words{"enter-box", "1", "ddddd", "true"}}) {
    const Done result = spbox(line);
    EXPECT_EQ(result.exit_status, 2) << line.back();
    EXPECT_EQ(result.output, "spbox: `spbox run` alone enters a box. `spbox help run` says more.\n");
  }
}

TEST_F(Run, KeepsTheBoxFromBeingMadeAnew) {
  const Done result = run_to_end(
      {"/bin/sh", "-c",
       "cd " + scratch_.path().string() +
           "; " SPBOX
           " run box sh -c 'touch /tmp/ready; while [ ! -e /tmp/go ]; do sleep 0.05; done; ls -A /tmp/.qe1' & "
           "while [ ! -e box/tmp/ready ]; do sleep 0.05; done; " SPBOX
           " create box --model qa --force; touch box/tmp/go; wait $!; echo status $?"});
  EXPECT_EQ(result.output,
            "spbox: a command runs in box. Wait until it has ended, or end it, and try again.\n/tmp/.qe1\nstatus 0\n");
}

TEST_F(Run, SaysThatBubblewrapIsMissing) {
  const Done result =
      run_to_end({"/usr/bin/env", "-C", scratch_.path(), "PATH=/nowhere", SPBOX, "run", "box", "--", "/usr/bin/id"});
  EXPECT_EQ(result.exit_status, 1);
  EXPECT_EQ(result.output,
            "spbox: bwrap is missing: it gives a command a root of its own. Install it (apt install bubblewrap).\n");
}

TEST_F(Run, SaysThatNamespacesAreForbidden) {
  const Done result = run_to_end({"/usr/bin/unshare", "-Ur", "/bin/sh", "-c",
                                  "echo 0 >/proc/sys/user/max_user_namespaces; cd " + scratch_.path().string() +
                                      "; exec setpriv --bounding-set=-all " SPBOX " run box -- id"});
  EXPECT_EQ(result.exit_status, 1);
  EXPECT_NE(
      result.output.find("spbox: the command was not run: no root of its own could be made for it (see above). This "
                         "system allows no user namespaces: raise the sysctl user.max_user_namespaces"),
      std::string::npos)
      << result.output;
}

TEST_F(Run, SaysThatProcessesAreFew) {
  fs::remove_all(place().root());
  const Words user = as_ordinary_user();
  ASSERT_EQ(run_to_end(user + Words{"create", "box", "--model", "qa"}).exit_status, 0);
  int failed = 0;
  for (int limit = 1; limit < 32; ++limit) {
    const Words shell{"bash", "-c", "ulimit -u " + std::to_string(limit) + "; exec \"$@\"", "sh"};
    Words words = user;
    words.insert(words.end() - 1, shell.begin(), shell.end());
    const Done result = run_to_end(words + Words{"run", "box", "--", "/bin/true"});
    if (result.exit_status == 0) break;
    ++failed;
    EXPECT_NE(result.output.find("(ulimit -u)"), std::string::npos) << limit << ": " << result.output;
    EXPECT_EQ(result.output.find("docker"), std::string::npos) << limit << ": " << result.output;
  }
  EXPECT_GT(failed, 1);
}

TEST_F(Run, CanTakeThePagerAway) {
  EXPECT_EQ(shell("test -x /bin/busybox && echo yes").output, "yes\n");
  EXPECT_NE(spbox({"run", "--no-pager", "box", "--", "/bin/busybox", "true"}).exit_status, 0);
}

TEST_F(Run, IsForOrdinaryUsersToo) {
  fs::remove_all(place().root());
  const Words user = as_ordinary_user();
  EXPECT_EQ(run_to_end(user + Words{"create", "box", "--model", "qa"}).exit_status, 0);
  const Done result = run_to_end(
      user + Words{"run", "box", "--", "sh", "-c", "id -u; /mgb/bin/ctlled -u /PSU#0 -c on; echo $?; touch /x /usr/x"});
  EXPECT_FALSE(result.output.starts_with("0\n")) << "somebody, not root";
  EXPECT_NE(result.output.find("\n0\n"), std::string::npos) << result.output;
  EXPECT_NE(result.exit_status, 0);
  EXPECT_EQ(box::Hardware(place()).led("/PSU#0"), "on");
  EXPECT_EQ(run_to_end(user + Words{"pull", "box", "/PSU#0"}).exit_status, 0);
}

TEST_F(Run, SaysThatTheBoxIsSomebodyElses) {
  fs::permissions(place().root() / "mgb/lib", fs::perms::owner_read | fs::perms::owner_exec);
  const Done result = run_to_end(as_ordinary_user() + Words{"run", "box", "--", "id"});
  EXPECT_EQ(result.exit_status, 1);
  EXPECT_NE(result.output.find("a box is for the user who made it"), std::string::npos) << result.output;
}

// spbox and the command as processes of their own, on a pipe.
TEST_F(Run, PassesASignalOnAndWaitsForTheCommand) {
  const std::string script =
      "cd " + scratch_.path().string() +
      "; " SPBOX
      " run box -- sh -c 'trap \"echo cleaned up; exit 5\" TERM; touch /tmp/ready; while :; do sleep 0.1; done' & "
      "while [ ! -e box/tmp/ready ]; do sleep 0.05; done; kill -TERM $!; wait $!; echo status $?";
  EXPECT_EQ(run_to_end({"/bin/sh", "-c", script}).output, "cleaned up\nstatus 5\n");
}

class RunOnTerminal : public Run {
 protected:
  void start(const std::string &line) {
    terminal_.start({"/usr/bin/env", "-C", scratch_.path(), SPBOX, "run", "box", "--", "sh", "-c", line});
  }
  terminal::Terminal terminal_;
};

TEST_F(RunOnTerminal, TheCommandHasTheTerminal) {
  start("tty; ls -l /dev/tty >/dev/null && echo to-tty >/dev/tty; read word; echo got $word; test -t 0 && exit 3");
  ASSERT_TRUE(terminal_.wait_for("to-tty", 10s));
  terminal_.type("hello\n");
  ASSERT_TRUE(terminal_.wait_for("got hello", 10s));
  const auto ending = terminal_.wait_for_exit(10s);
  ASSERT_TRUE(ending);
  EXPECT_EQ(ending->number, 3);
  EXPECT_TRUE(terminal_.wait_for("/dev/pts/", 1s));
}

TEST_F(RunOnTerminal, AnInterruptIsTheCommandsToHandle) {
  start("trap 'echo int; sleep 0.3; echo cleaned; exit 4' INT; echo ready; while :; do sleep 0.1; done");
  ASSERT_TRUE(terminal_.wait_for("ready", 10s));
  terminal_.type("\x03");
  ASSERT_TRUE(terminal_.wait_for("cleaned", 10s));
  const auto ending = terminal_.wait_for_exit(10s);
  ASSERT_TRUE(ending);
  EXPECT_EQ(ending->number, 4);
}

// bwrap and spbox let the interrupt pass; the command, which is not there yet, must not miss it.
TEST_F(RunOnTerminal, AnInterruptBeforeTheCommandIsInsideWaitsForIt) {
  fs::create_directory(scratch_ / "bin");
  write("bin/bwrap",
        "#!/bin/sh\ncase \"$*\" in *enter-box*) echo on the way; until test -e there; do sleep 0.01; done ;; esac\n"
        "exec /usr/bin/bwrap \"$@\"\n");
  fs::permissions(scratch_ / "bin/bwrap", fs::perms::owner_all);
  terminal_.start({"/usr/bin/env", "-C", scratch_.path(), "PATH=" + (scratch_ / "bin").string() + ":/usr/bin:/bin",
                   SPBOX, "run", "box", "--", "sh", "-c", "echo inside; sleep 60"});
  ASSERT_TRUE(terminal_.wait_for("on the way", 10s));
  terminal_.type("\x03");
  ASSERT_TRUE(terminal_.wait_for("^C", 10s));
  write("there", "");
  EXPECT_EQ(terminal_.wait_for_exit(10s), (terminal::Ending{false, 128 + SIGINT}));
  EXPECT_FALSE(terminal_.shows("inside"));
}

}  // namespace
