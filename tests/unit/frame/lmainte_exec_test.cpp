#include <csignal>
#include <cstdlib>
#include <cwchar>

#include <gtest/gtest.h>

#include "tests/unit/doubles/library_test.h"

namespace {

using doubles::Lines;
using doubles::machine;

// Programs are played on the double's clock, or are real children up to execve.
class LmainteExec : public doubles::LibraryTest {
 protected:
  void SetUp() override {
    LibraryTest::SetUp();
    unsetenv("PRIV");
    setenv("LD_LIBRARY_PATH", "/mgb/lib", 1);
  }
  void TearDown() override {
    unsetenv("LD_LIBRARY_PATH");
    LibraryTest::TearDown();
  }

  int32_t run(const doubles::Program &program, int32_t time_limit = 10) {
    machine().programs = {program};
    return lmainte_exec(0, time_limit, "-c lock");
  }

  // The argument vector of a program that gets as far as execve, one argument a line.
  std::string arguments_of(const char *line, int32_t command_id = 0) {
    machine().children_are_real = true;
    EXPECT_EQ(lmainte_exec(command_id, 10, "%s", line), 0);
    EXPECT_TRUE(machine().executed().happened);
    return machine().executed().arguments;
  }

  Lines process_calls() { return machine().calls_of({"fork", "waitpid", "kill", "sleep"}); }
};

// ---- what a program gets

struct ProgramRow {
  int32_t id;
  const char *path;
};

TEST_F(LmainteExec, RunsTheProgramOfEachNumber) {
  constexpr ProgramRow kRows[] = {
      {0, "/mgb/bin/ctlmainte"},        {1, "/mgb/bin/ctlfan"},
      {2, "/mgb/bin/judgectlfru"},      {3, "/mgb/bin/testfru"},
      {4, "/mgb/bin/detachfru"},        {5, "/mgb/bin/ctlled"},
      {6, "/mgb/bin/waitmgbready"},     {7, "/mgb/bin/setmainteflag"},
      {8, "/mgb/cli/usr/bin/setupfru"}, {9, "/mgb/cli/usr/bin/ioadm"},
      {10, "/mgb/bin/clearpci"},        {11, "/mgb/bin/vantamainte"},
      {12, "/mgb/cli/usr/bin/testsb"},  {13, "/mgb/cli/usr/bin/deleteboard"},
      {14, "/mgb/bin/chkfanspeed"},     {15, "/mgb/bin/linkboard"},
  };
  for (const auto &row : kRows) {
    EXPECT_EQ(arguments_of("", row.id), std::string(row.path) + "\n");
    EXPECT_STREQ(machine().executed().path, row.path);
  }
}

struct WordsRow {
  const char *says;
  const char *line;
  const char *arguments;
  uint32_t count;
};

TEST_F(LmainteExec, SplitsTheLineIntoArguments) {
  constexpr WordsRow kRows[] = {
      {"words follow the program's path", "-u /PSU#0 -c on", "/mgb/bin/ctlmainte\n-u\n/PSU#0\n-c\non\n", 5},
      {"an empty line gives the path alone", "", "/mgb/bin/ctlmainte\n", 1},
      {"a line of white space gives the path alone", " \t \n\v\f\r ", "/mgb/bin/ctlmainte\n", 1},
      {"several spaces make no empty argument", "-c   lock", "/mgb/bin/ctlmainte\n-c\nlock\n", 3},
      {"every white space separates", "a\tb\nc\vd\fe\rf", "/mgb/bin/ctlmainte\na\nb\nc\nd\ne\nf\n", 7},
      {"white space at both ends is dropped", "  -s  ", "/mgb/bin/ctlmainte\n-s\n", 2},
      {"one letter is a word", "x", "/mgb/bin/ctlmainte\nx\n", 2},
      {"nothing is quoted", R"('a b' "c" d\ e)", "/mgb/bin/ctlmainte\n'a\nb'\n\"c\"\nd\\\ne\n", 6},
      {"a letter above 127 is no white space", "\xA0\x85 \xE4", "/mgb/bin/ctlmainte\n\xA0\x85\n\xE4\n", 3},
  };
  for (const auto &row : kRows) {
    EXPECT_EQ(arguments_of(row.line), row.arguments) << row.says;
    EXPECT_EQ(machine().executed().arguments_end, row.count) << row.says;
  }
}

TEST_F(LmainteExec, FormatsTheLineWithItsValues) {
  machine().children_are_real = true;
  EXPECT_EQ(lmainte_exec(12, 10, "-q -y %ld %s", 7L, "%d"), 0);
  EXPECT_STREQ(machine().executed().arguments, "/mgb/cli/usr/bin/testsb\n-q\n-y\n7\n%d\n");
}

TEST_F(LmainteExec, FormatsAReadyMadeLineOnce) {
  machine().children_are_real = true;
  EXPECT_EQ(lmainte_exec(15, 10, "-u 100%% -c up"), 0);
  EXPECT_STREQ(machine().executed().arguments, "/mgb/bin/linkboard\n-u\n100%\n-c\nup\n");
}

// In the locale C, no byte stands for this character.
TEST_F(LmainteExec, LineThatCannotBeFormattedGivesThePathAlone) {
  machine().children_are_real = true;
  EXPECT_EQ(lmainte_exec(0, 10, "-c lock %lc", static_cast<wint_t>(0x1F600)), 0);
  EXPECT_STREQ(machine().executed().arguments, "/mgb/bin/ctlmainte\n");
}

TEST_F(LmainteExec, CutsTheLineAt1023Characters) {
  const std::string long_word(1100, 'x');
  EXPECT_EQ(arguments_of(("-c " + long_word).c_str()), "/mgb/bin/ctlmainte\n-c\n" + std::string(1020, 'x') + "\n");
}

TEST_F(LmainteExec, KeepsALineOf1023Characters) {
  EXPECT_EQ(arguments_of(std::string(1023, 'y').c_str()), "/mgb/bin/ctlmainte\n" + std::string(1023, 'y') + "\n");
}

TEST_F(LmainteExec, TakesAsManyWordsAsTheLineHolds) {
  std::string line;
  for (int i = 0; i < 512; ++i) line += "a ";
  arguments_of(line.c_str());
  EXPECT_EQ(machine().executed().arguments_end, 513u);
}

TEST_F(LmainteExec, GivesThreeVariablesInOrder) {
  setenv("PRIV", "fieldeng", 1);
  setenv("HOME", "/root", 1);
  arguments_of("-s");
  unsetenv("PRIV");
  EXPECT_STREQ(machine().executed().environment, "LC_ALL=C\nLD_LIBRARY_PATH=/mgb/lib\nPRIV=fieldeng\n");
}

TEST_F(LmainteExec, GivesAnUnsetVariableEmpty) {
  unsetenv("LD_LIBRARY_PATH");
  arguments_of("-s");
  EXPECT_STREQ(machine().executed().environment, "LC_ALL=C\nLD_LIBRARY_PATH=\nPRIV=\n");
}

TEST_F(LmainteExec, LooksAtTheEnvironmentInEachCall) {
  arguments_of("-s");
  setenv("PRIV", "later", 1);
  arguments_of("-s");
  unsetenv("PRIV");
  EXPECT_STREQ(machine().executed().environment, "LC_ALL=C\nLD_LIBRARY_PATH=/mgb/lib\nPRIV=later\n");
}

TEST_F(LmainteExec, CutsAVariableAt1023Characters) {
  setenv("PRIV", std::string(2000, 'p').c_str(), 1);
  arguments_of("-s");
  unsetenv("PRIV");
  EXPECT_EQ(machine().executed().environment,
            "LC_ALL=C\nLD_LIBRARY_PATH=/mgb/lib\nPRIV=" + std::string(1018, 'p') + "\n");
}

// ---- the child

TEST_F(LmainteExec, ChildClosesItsStreamsAndRunsTheProgram) {
  arguments_of("-c lock");
  EXPECT_EQ(machine().child_calls(), (Lines{"close 0", "close 1", "close 2", "execve /mgb/bin/ctlmainte"}));
}

TEST_F(LmainteExec, ChildRecordsTheProgramWithItsOwnProcessId) {
  arguments_of("-c lock");
  EXPECT_EQ(doubles::child_trace(), (Lines{"8001 110C0023 0 2"}));
  EXPECT_EQ(machine().trace_records(true).at(0).words[0], 4712u);
}

TEST_F(LmainteExec, ProgramThatIsMissingGives127) {
  machine().children_are_real = true;
  machine().fail("execve", 1, ENOENT);
  EXPECT_EQ(lmainte_exec(0, 10, "-c lock"), 127);
  EXPECT_EQ(doubles::child_trace(), (Lines{"8001 110C0023 0 2", "800A 110C1024 2"}));
  EXPECT_EQ(doubles::trace().at(3), "8001 110C0027 127");
}

TEST_F(LmainteExec, ChildThatCannotRunFreesItsVectorAndRunsNoExitHandlers) {
  machine().children_are_real = true;
  machine().fail("execve");
  lmainte_exec(0, 10, "-c lock");
  EXPECT_TRUE(machine().child_left_by_exit());
  EXPECT_EQ(machine().blocks_left_in_child(), 0u);
}

TEST_F(LmainteExec, ProgramThatRunsInEarnestGivesItsStatus) {
  machine().children_are_real = true;
  machine().child_exits_with = 200;
  EXPECT_EQ(lmainte_exec(0, 10, "-c lock"), 200);
}

// ---- arguments

struct ArgumentRow {
  const char *says;
  int32_t id;
  int32_t time_limit;
  const char *format;
};

TEST_F(LmainteExec, RefusesWhatItCannotRun) {
  constexpr ArgumentRow kRows[] = {
      {"no format", 0, 10, nullptr},
      {"a time limit of 0", 0, 0, "-c lock"},
      {"a negative time limit", 0, -1, "-c lock"},
      {"the smallest time limit", 0, INT32_MIN, "-c lock"},
      {"the number after the last", 16, 10, "-c lock"},
      {"the number that ends the table", -1, 10, "-c lock"},
      {"a negative number", -2, 10, "-c lock"},
      {"all arguments wrong", -1, 0, nullptr},
  };
  for (const auto &row : kRows) {
    machine().start();
    EXPECT_EQ(lmainte_exec(row.id, row.time_limit, row.format), 127) << row.says;
    EXPECT_EQ(doubles::trace(), (Lines{"100 110C0020", "805 110C1021", "100 110C0021"})) << row.says;
    EXPECT_EQ(machine().calls, Lines{}) << row.says;
  }
}

TEST_F(LmainteExec, TellsRefusalsApartByTheirLines) {
  lmainte_exec(0, 10, nullptr);
  lmainte_exec(0, 0, "");
  lmainte_exec(16, 10, "");
  const auto lines = doubles::source_lines_of(0x110C1021);
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_NE(lines[0], lines[1]);
  EXPECT_NE(lines[1], lines[2]);
  EXPECT_NE(lines[0], lines[2]);
}

TEST_F(LmainteExec, NoMemoryGives127) {
  machine().fail("calloc", 1, ENOMEM);
  EXPECT_EQ(lmainte_exec(0, 10, "-c lock"), 127);
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C0020", "800A 110C1022 12", "100 110C0021"}));
  EXPECT_EQ(process_calls(), Lines{});
}

TEST_F(LmainteExec, FailedForkGives127) {
  machine().fail("fork", 1, EAGAIN);
  EXPECT_EQ(lmainte_exec(0, 10, "-c lock"), 127);
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C0020", "805 110C0022 0 2", "800A 110C1023 11", "100 110C0021"}));
}

// ---- waiting

TEST_F(LmainteExec, ReturnsEveryExitStatus) {
  for (int code = 0; code < 256; ++code) {
    machine().start();
    EXPECT_EQ(run(doubles::exits(code)), code);
    EXPECT_EQ(doubles::trace(), (Lines{"100 110C0020", "805 110C0022 0 2", "8001 110C0024 10 500",
                                       "8001 110C0027 " + std::to_string(code), "100 110C0021"}));
  }
}

TEST_F(LmainteExec, ProgramThatEndsAtOnceIsNotWaitedFor) {
  run(doubles::exits(0));
  EXPECT_EQ(process_calls(), (Lines{"fork", "waitpid 500 nohang"}));
}

TEST_F(LmainteExec, PollsOnceASecond) {
  EXPECT_EQ(run(doubles::exits(3, 2)), 3);
  EXPECT_EQ(process_calls(),
            (Lines{"fork", "waitpid 500 nohang", "sleep 1", "waitpid 500 nohang", "sleep 1", "waitpid 500 nohang"}));
}

TEST_F(LmainteExec, ProgramMayTakeItsWholeLimit) {
  EXPECT_EQ(run(doubles::exits(5, 10)), 5);
  EXPECT_EQ(machine().clock, 10);
  EXPECT_EQ(machine().calls_of({"kill"}), Lines{});
}

TEST_F(LmainteExec, ProgramIsStoppedOnceItsLimitIsSpent) {
  EXPECT_EQ(run(doubles::exits(5, 11)), 127);
  EXPECT_EQ(machine().calls_of({"kill"}), Lines{"kill 500 15"});
  EXPECT_EQ(machine().clock, 10);
}

TEST_F(LmainteExec, LimitOfOneSecondPollsTwice) {
  EXPECT_EQ(run(doubles::hangs(), 1), 127);
  EXPECT_EQ(process_calls(), (Lines{"fork", "waitpid 500 nohang", "sleep 1", "waitpid 500 nohang", "kill 500 15",
                                    "waitpid 500 nohang"}));
}

TEST_F(LmainteExec, HungProgramLeavesItsWholeStoryInTheTrace) {
  run(doubles::hangs(), 1);
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C0020", "805 110C0022 0 2", "8001 110C0024 1 500", "8001 110C0025 1",
                                     "100 110C0690", "100 110C0692 500", "8001 110C0693 1", "100 110C0691",
                                     "8001 110C0026 0 15", "805 110C1027 15", "100 110C0021"}));
}

TEST_F(LmainteExec, ProgramThatExitsWhenAskedToGivesItsOwnStatus) {
  EXPECT_EQ(run(doubles::hangs_until_sigterm_and_exits(42), 3), 42);
  EXPECT_EQ(machine().calls_of({"kill"}), Lines{"kill 500 15"});
  const auto trace = doubles::trace_of(0x110C0020);
  EXPECT_EQ(Lines(trace.end() - 3, trace.end()), (Lines{"8001 110C0026 0 10752", "8001 110C0027 42", "100 110C0021"}));
}

TEST_F(LmainteExec, SlowProgramIsAskedAgainAfterFiveSeconds) {
  EXPECT_EQ(run(doubles::hangs_until_sigterm_and_exits(1, 7), 1), 1);
  EXPECT_EQ(machine().calls_of({"kill", "sleep"}),
            (Lines{"sleep 1", "kill 500 15", "sleep 5", "kill 500 15", "sleep 5", "kill 500 15"}));
}

TEST_F(LmainteExec, ProgramThatIgnoresEveryRequestIsKilled) {
  EXPECT_EQ(run(doubles::ignores_sigterm(), 1), 127);
  EXPECT_EQ(process_calls(), (Lines{"fork", "waitpid 500 nohang", "sleep 1", "waitpid 500 nohang", "kill 500 15",
                                    "waitpid 500 nohang", "sleep 5", "kill 500 15", "waitpid 500 nohang", "sleep 5",
                                    "kill 500 15", "waitpid 500 nohang", "sleep 5", "kill 500 9", "waitpid 500"}));
  EXPECT_EQ(machine().clock, 16);
}

TEST_F(LmainteExec, EveryAttemptToStopAProgramIsRecorded) {
  run(doubles::ignores_sigterm(), 1);
  EXPECT_EQ(doubles::trace_of(0x110C0690),
            (Lines{"100 110C0690", "100 110C0692 500", "8001 110C0693 1", "8001 110C0693 2", "8001 110C0693 3",
                   "8001 110C0693 4", "100 110C0691"}));
  const auto trace = doubles::trace_of(0x110C0020);
  EXPECT_EQ(Lines(trace.end() - 4, trace.end()),
            (Lines{"8001 110C0025 1", "8001 110C0026 0 9", "805 110C1027 9", "100 110C0021"}));
}

TEST_F(LmainteExec, ProgramKilledBySignalGives127) {
  EXPECT_EQ(run(doubles::dies_of(SIGSEGV)), 127);
  EXPECT_EQ(doubles::trace().at(3), "805 110C1027 11");
}

TEST_F(LmainteExec, ProgramThatDumpedCoreGives127) {
  EXPECT_EQ(run({0, SIGSEGV | 0x80, 0, 0}), 127);
  EXPECT_EQ(doubles::trace().at(3), "805 110C1027 139");
}

// ---- failing waits

TEST_F(LmainteExec, FailedWaitGives127AndLeavesTheProgramAlone) {
  machine().fail("waitpid", 2, ECHILD);
  EXPECT_EQ(run(doubles::hangs()), 127);
  EXPECT_EQ(process_calls(), (Lines{"fork", "waitpid 500 nohang", "sleep 1", "waitpid 500 nohang"}));
  EXPECT_EQ(doubles::trace(),
            (Lines{"100 110C0020", "805 110C0022 0 2", "8001 110C0024 10 500", "800A 110C1025 -1 10", "100 110C0021"}));
  machine().forget_children();
}

TEST_F(LmainteExec, WaitThatAnswersWithAnotherProcessGives127) {
  machine().fail("waitpid", 1, EIO, 499);
  EXPECT_EQ(run(doubles::hangs()), 127);
  EXPECT_EQ(doubles::trace().at(3), "800A 110C1025 499 5");
  machine().forget_children();
}

TEST_F(LmainteExec, FailedWaitWhileStoppingGives127) {
  machine().fail("waitpid", 4, EINTR);
  EXPECT_EQ(run(doubles::ignores_sigterm(), 1), 127);
  EXPECT_EQ(doubles::trace(),
            (Lines{"100 110C0020", "805 110C0022 0 2", "8001 110C0024 1 500", "8001 110C0025 1", "100 110C0690",
                   "100 110C0692 500", "8001 110C0693 1", "8001 110C0693 2", "800A 110C1691 -1 4", "100 110C0691",
                   "8001 110C0026 127 0", "805 110C1026 127", "100 110C0021"}));
  machine().forget_children();
}

TEST_F(LmainteExec, FailedWaitForAKilledProgramGives127) {
  machine().fail("waitpid", 6, EINTR);
  EXPECT_EQ(run(doubles::ignores_sigterm(), 1), 127);
  const auto trace = doubles::trace();
  EXPECT_EQ(Lines(trace.end() - 6, trace.end()), (Lines{"8001 110C0693 4", "800A 110C1692 -1 4", "100 110C0691",
                                                        "8001 110C0026 127 0", "805 110C1026 127", "100 110C0021"}));
  machine().forget_children();
}

TEST_F(LmainteExec, InterruptedSleepCountsInFull) {
  machine().fail("sleep", 0);
  EXPECT_EQ(run(doubles::hangs(), 3), 127);
  EXPECT_EQ(machine().calls_of({"sleep"}), (Lines{"sleep 1", "sleep 1", "sleep 1"}));
}

TEST_F(LmainteExec, SignalThatCannotBeSentDoesNotMatter) {
  machine().fail("kill", 1, EPERM);
  EXPECT_EQ(run(doubles::hangs_until_sigterm_and_exits(9), 1), 9);
  EXPECT_EQ(machine().calls_of({"kill"}), (Lines{"kill 500 15", "kill 500 15"}));
}

TEST_F(LmainteExec, RunsOneProgramAfterTheOther) {
  EXPECT_EQ(run(doubles::exits(1)), 1);
  EXPECT_EQ(run(doubles::exits(0)), 0);
}

TEST_F(LmainteExec, TraceThatFailsChangesNothing) {
  machine().trace_result = -1;
  EXPECT_EQ(run(doubles::exits(77)), 77);
}

}  // namespace
