// Commands of another machine: what is said where they cannot be run as such.
#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "host/base/read_all.h"
#include "host/box/inhabitants.h"
#include "tests/host/box/child.h"
#include "tests/host/spbox/spbox_test.h"

namespace {

namespace fs = std::filesystem;

// The head of a program, as far as it tells the machine.
std::string head(char word_size, char byte_order, const std::string &machine) {
  std::string text = "\177ELF";
  text += {word_size, byte_order};
  text.resize(16);
  return text + (byte_order == 2 ? std::string("\0\2", 2) : std::string("\2\0", 2)) + machine + std::string(32, '\0');
}

const std::string kOfTarget = head(1, 2, std::string("\0\x14", 2));

// With a table of one segment behind the head: of so many bytes, from its end.
std::string with_segment(char size) {
  std::string text = kOfTarget;
  text[31] = 52;
  text[45] = 1;
  std::string segment(32, '\0');
  segment[3] = 1;
  segment[7] = 84;
  segment[19] = size;
  return text + segment;
}

class OtherMachine : public SpboxTest {
 protected:
  void SetUp() override { make_box("qa"); }

  void write_program(const std::string &name, const std::string &text) {
    write(name, text);
    fs::permissions(scratch_ / name.c_str(), fs::perms::owner_all);
  }

  // Instead of the real one, which does not tell how it was called. Returns a PATH that has it first.
  std::string path_with_emulator(const std::string &script) {
    std::ofstream(emulator_ / "qemu-ppc") << "#!/bin/sh\n" << script;
    fs::permissions(emulator_ / "qemu-ppc", fs::perms::owner_all);
    return emulator_.path().string() + ":/usr/bin:/bin";
  }
  std::string kept_for_runs() {
    std::string names;
    for (const auto &entry : fs::directory_iterator(scratch_ / "box/mgb/lib")) {
      const std::string name = entry.path().filename();
      if (name.find("run.") != std::string::npos) names += name + " ";
    }
    return names;
  }

  Done run(const std::vector<std::string> &words, const std::string &path = "/usr/bin:/bin") {
    std::vector<std::string> all{"/usr/bin/env", "-C", scratch_.path(), "PATH=" + path, SPBOX, "run"};
    all.insert(all.end(), words.begin(), words.end());
    return run_to_end(all);
  }

  Scratch emulator_;
};

TEST_F(OtherMachine, AProgramThatIsOfAnotherOneIsRefused) {
  write_program("of_target", kOfTarget);
  write_program("of_arm", head(1, 1, std::string("\x28\0", 2)));
  write_program("cut", kOfTarget.substr(0, 51));
  write_program("cut_table", with_segment(0).substr(0, 83));
  write_program("cut_segment", with_segment(100) + std::string(99, 's'));
  write_program("script", "#! ./of_target -x\nexit 0\n");
  write_program("script_of_script", "#!./script\n");
  write_program("script_of_arm", "#!./of_arm");
  fs::copy("/bin/true", scratch_ / "own");
  struct Row {
    std::vector<std::string> words;
    std::string said;
  };
  const std::vector<Row> rows{
      {{"box", "./of_target"}, "./of_target: it is a program of a powerpc. Give --machine powerpc to run it."},
      {{"box", "./of_arm"}, "./of_arm: it is a program of another machine, which cannot be run here."},
      {{"box", "./cut"}, "./cut: it is cut: its head alone is longer."},
      {{"--machine", "powerpc", "box", "./cut_table"}, "./cut_table: it is cut: it has 83 bytes, and needs 84."},
      {{"--machine", "powerpc", "box", "./cut_segment"}, "./cut_segment: it is cut: it has 183 bytes, and needs 184."},
      {{"--machine", "powerpc", "box", "./script"},
       "./script: it is a script for ./of_target, a program of a powerpc, which the system does not start by itself. "
       "Run that, with the script behind it."},
      {{"box", "./script_of_script"},
       "./script_of_script: it is a script for ./of_target, a program of a powerpc, which the system does not start by "
       "itself. Run that, with the script behind it."},
      {{"box", "./script_of_arm"}, "./script_of_arm: it is a script for ./of_arm, which cannot be run here."},
      {{"--machine", "powerpc", "box", "./of_arm"},
       "./of_arm: it is a program of another machine, which cannot be run here."},
      {{"--machine", "powerpc", "box", "./own"},
       "./own: it is a program of this workstation, and not of a powerpc. Build it for that, or leave out --machine."},
  };
  for (const Row &row : rows) {
    const Done result = run(row.words);
    EXPECT_EQ(result.exit_status, 126) << row.said;
    EXPECT_EQ(result.output, "spbox: " + row.said + "\n");
  }
}

TEST_F(OtherMachine, TheWorkstationsProgramsAndTheBoxsRunAsEver) {
  EXPECT_EQ(run({"--machine", "powerpc", "box", "sh", "-c", "/mgb/bin/ctlmainte -c unlock; exit 3"}).exit_status, 3);
}

TEST_F(OtherMachine, NoPlayBeginsWhereItsProgramsCannotBeRun) {
  write("one.play", "box qa\nstart true\nexit 0\n");
  const Done result = run_to_end({"/usr/bin/env", "-C", scratch_.path(), "PATH=" + emulator_.path().string(), SPBOX,
                                  "test", "--machine", "powerpc", "--transcripts", "kept"});
  EXPECT_EQ(result.exit_status, 2);
  EXPECT_EQ(
      result.output,
      "spbox: qemu-ppc is missing: it runs the programs of a powerpc. Install it (apt install qemu-user). Nothing was "
      "played. `spbox help test` says more.\n");
  EXPECT_FALSE(fs::exists(scratch_ / "kept"));
  const Done one = run_to_end({"/usr/bin/env", "-C", scratch_.path(), "PATH=" + emulator_.path().string(), SPBOX,
                               "play", "one.play", "--machine", "powerpc", "--box", "made"});
  EXPECT_EQ(one.exit_status, 2);
  EXPECT_NE(one.output.find("qemu-ppc is missing"), std::string::npos) << one.output;
  EXPECT_FALSE(fs::exists(scratch_ / "made"));
  const Done recorded = run_to_end({"/usr/bin/env", "-C", scratch_.path(), "PATH=" + emulator_.path().string(), SPBOX,
                                    "record", "--machine", "powerpc", "box", "-o", "made.play", "--", "/usr/bin/true"});
  EXPECT_EQ(recorded.exit_status, 1);
  EXPECT_NE(recorded.output.find("qemu-ppc is missing"), std::string::npos) << recorded.output;
}

// Neither the platform's server nor the daemon has its own files where these are expected.
TEST_F(OtherMachine, ACommandMayHaveNoInputAndNoOutput) {
  const std::string line = "exec " SPBOX " run --machine powerpc box sh -c 'exit 3' <&- >&-";
  const Done result = run_to_end(
      {"/usr/bin/env", "-C", scratch_.path(), "/usr/bin/timeout", "--kill-after=1", "20", "/bin/sh", "-c", line});
  EXPECT_EQ(result.exit_status, 3);
  EXPECT_EQ(result.output, "");
}

TEST_F(OtherMachine, WhatItsProgramsNeedIsNamedWhereItIsMissing) {
  fs::create_directory(scratch_ / "bin");
  fs::create_symlink("/usr/bin/bwrap", scratch_ / "bin/bwrap");
  fs::create_directory(scratch_ / "bin/qemu-ppc");
  const Done without_emulator = run({"--machine", "powerpc", "box", "true"}, scratch_ / "bin");
  EXPECT_EQ(without_emulator.exit_status, 1);
  EXPECT_EQ(without_emulator.output,
            "spbox: qemu-ppc is missing: it runs the programs of a powerpc. Install it (apt install qemu-user).\n");
  const Done without_libraries =
      run_to_end({"/usr/bin/bwrap", "--dev-bind", "/", "/", "--tmpfs", "/usr/powerpc-linux-gnu", SPBOX, "run",
                  "--machine", "powerpc", (scratch_ / "box").string(), "true"});
  EXPECT_EQ(without_libraries.exit_status, 1);
  EXPECT_EQ(
      without_libraries.output,
      "spbox: /usr/powerpc-linux-gnu/lib/ld.so.1 is missing: it is of the C library of a powerpc. Install it (apt "
      "install libc6-powerpc-cross).\n");
}

TEST_F(OtherMachine, AnEmulatorThatABoxDoesNotShowIsNamed) {
  write_program("of_target", kOfTarget);
  std::string folder = "/dev/shm/emulator-XXXXXX";
  ASSERT_NE(mkdtemp(folder.data()), nullptr);
  fs::copy(path_with_emulator("exit 5\n").substr(0, emulator_.path().string().size()) + "/qemu-ppc", folder);
  const Done result = run({"--machine", "powerpc", "box", "./of_target"}, folder + ":/usr/bin:/bin");
  fs::remove_all(folder);
  EXPECT_EQ(result.exit_status, 126);
  EXPECT_EQ(result.output, "spbox: ./of_target: the emulator " + folder +
                               "/qemu-ppc cannot be run in the box: No such file or directory.\n");
}

// The emulator says nothing of it.
TEST_F(OtherMachine, AProgramThatMayNotBeRunIsNamed) {
  const std::string path = path_with_emulator("exit 5\n") + ":" + scratch_.path().string();
  write_program("of_target", kOfTarget);
  EXPECT_EQ(run({"--machine", "powerpc", "box", "./of_target"}, path).exit_status, 5);
  fs::permissions(scratch_ / "of_target", fs::perms::owner_read);
  const Done kept = run({"--machine", "powerpc", "box", "./of_target"}, path);
  EXPECT_EQ(kept.exit_status, 126);
  EXPECT_EQ(kept.output, "spbox: ./of_target: it is no program that may be run (see its permissions).\n");
}

TEST_F(OtherMachine, ItsProgramIsFoundBehindTheWorkstationsWhereverItIs) {
  const Scratch elsewhere;
  std::ofstream(elsewhere / "true") << kOfTarget;
  fs::permissions(elsewhere / "true", fs::perms::owner_all);
  const std::string path = path_with_emulator("shift 4; echo $* $0; test -x $1\n") + ":" + elsewhere.path().string();
  const Done result = run({"--machine", "powerpc", "box", "true", "word"}, path);
  EXPECT_EQ(result.exit_status, 0);
  EXPECT_EQ(result.output, (elsewhere / "true").string() + " word /mgb/lib/emulator\n");
}

// The emulator here tells its name for the program, the program, its first word and what the environment has for an emulator.
TEST_F(OtherMachine, AProgramOfTheWorkstationStartsOneOfTheMachineByItsPath) {
  const std::string path = path_with_emulator("shift 3; echo $* $QEMU_STRACE\n");
  write_program("of_target", kOfTarget);
  write_program("kept", kOfTarget);
  fs::permissions(scratch_ / "kept", fs::perms::owner_read);
  write_program("script", "#!/bin/sh\n./of_target \"$@\"\n");
  const std::string whole = (scratch_ / "of_target").string();
  const struct {
    std::string words, output;
  } rows[] = {
      {"./of_target word", "./of_target ./of_target word"},
      {whole, whole + " " + whole},
      {"PATH=. of_target", "of_target ./of_target"},
      {"PATH=" + scratch_.path().string() + " of_target", "of_target " + whole},
      {"env -i ./of_target word", "./of_target ./of_target word"},
      {"env PATH=/bin:.: of_target", "of_target ./of_target"},
      {"env PATH=/bin: of_target", "of_target of_target"},
      {"env QEMU_STRACE=1 ./of_target", "./of_target ./of_target"},
      {"env LD_BIND_NOW=1 ./of_target word", "LD_BIND_NOW=1 -0 ./of_target ./of_target word"},
      {"env LD_DEBUG=files,libs ./of_target", "./of_target ./of_target"},
      {"./script word", "./of_target ./of_target word"},
      {"cp of_target /tmp/-x; cd /tmp; env PATH=: -x", "-x ./-x"},
      {"./kept 2>/dev/null || echo $?", "126"},
      {"mkfifo -m 700 /tmp/fifo; /tmp/fifo 2>/dev/null || echo $?", "126"},
      {"env PATH=/bin of_target 2>/dev/null || echo $?", "127"},
  };
  std::string script, expected;
  for (const auto &[words, output] : rows) {
    script += "( " + words + " ) 2>&1\n";
    expected += output + "\n";
  }
  const Done result = run({"--machine", "powerpc", "box", "sh", "-c", script}, path);
  EXPECT_EQ(result.output, expected);
}

// bwrap takes 9000 words.
TEST_F(OtherMachine, ThousandsOfItsProgramsMayBeOnThePath) {
  const std::string path = path_with_emulator("exit 5\n") + ":" + (scratch_ / "many").string();
  write_program("of_target", kOfTarget);
  fs::create_directory(scratch_ / "many");
  for (int i = 0; i < 1600; ++i) fs::create_symlink("../of_target", scratch_ / "many" / std::to_string(i).c_str());
  const Done result = run({"--machine", "powerpc", "box", "sh", "-c", "0 || 1599"}, path);
  EXPECT_EQ(result.exit_status, 5);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(kept_for_runs(), "");
}

TEST_F(OtherMachine, WhatAKilledSpboxKeptForItsRunIsRemovedByTheNext) {
  const std::string killed = SPBOX
      " run --machine powerpc box sh -c ': >/tmp/ready; exec sleep 100' & "
      "until test -e box/tmp/ready; do sleep 0.02; done; kill -KILL $!; wait";
  run_to_end({"/usr/bin/env", "-C", scratch_.path(), "/bin/sh", "-c", killed});
  EXPECT_NE(kept_for_runs().find("for_run."), std::string::npos) << kept_for_runs();
  EXPECT_EQ(run({"box", "true"}).exit_status, 0);
  EXPECT_EQ(kept_for_runs(), "");
}

TEST_F(OtherMachine, WhatTheEnvironmentSaysToTheEmulatorIsForAnother) {
  const std::string path = path_with_emulator("env | grep -c ^QEMU_\n");
  write_program("of_target", kOfTarget);
  const Done result = run_to_end({"/usr/bin/env", "-C", scratch_.path(), "PATH=" + path, "QEMU_GDB=1234",
                                  "QEMU_STRACE=", SPBOX, "run", "--machine", "powerpc", "box", "./of_target"});
  EXPECT_EQ(result.output, "0\n");
}

TEST_F(OtherMachine, APlatformThatDiesUnderTheCommandIsTold) {
  const Child killer([&](const auto & /*say_ready*/) {
    const std::string box = (scratch_ / "box").string();
    for (int server = 0; server == 0; usleep(10000)) {
      for (const pid_t process : box::all_processes()) {
        const std::string words = base::text_if_readable(("/proc/" + std::to_string(process) + "/cmdline").c_str());
        if (words.starts_with("/mgb/lib/platform_server") && words.find(box) != std::string::npos) server = process;
      }
      if (server == 0 || !fs::exists(scratch_ / "box/tmp/began")) {
        server = 0;
        continue;
      }
      kill(server, SIGKILL);
      std::ofstream(scratch_ / "box/tmp/go").close();
    }
    return 0;
  });
  const Done result = run({"--machine", "powerpc", "box", "sh", "-c",
                           ": >/tmp/began; while ! test -e /tmp/go; do sleep 0.05; done; exit 4"});
  EXPECT_EQ(result.exit_status, 4);
  EXPECT_EQ(result.output,
            "spbox: the platform of the machine's programs ended before the command: signal 9. From then on, calls of "
            "processes that had not called before failed.\n");
  for (const auto &entry : fs::directory_iterator(scratch_ / "box/mgb/run")) {
    EXPECT_FALSE(entry.path().filename().string().starts_with("platform.")) << entry.path();
  }
}

}  // namespace
