// What a procedure prints, and the commands that it advises to type: they work as they were printed.

#include "procedure/telling.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

#include "include/lmainte_procedure.h"
#include "procedure/results.h"
#include "tests/unit/doubles/library_test.h"

namespace {

using doubles::printed_by;
using lmainte::procedure::procedure_command;
using lmainte::procedure::program_command;

class Telling : public testing::Test {
 protected:
  void SetUp() override {
    unsetenv(LMAINTE_PROCEDURE_WAY);
    lmainte::procedure::remember_folder("replace_unit");
  }
  void TearDown() override { unsetenv(LMAINTE_PROCEDURE_WAY); }

  static std::string advised(const char *command) {
    return printed_by([=] { lmainte_advise(command, "Start %s:", "it"); });
  }
};

TEST_F(Telling, IsInLinesAndEndsItsLine) {
  EXPECT_EQ(printed_by([] { lmainte_tell("%s is good.", "/PSU#0"); }), "/PSU#0 is good.\n");
  const std::string longest(79, 'a');
  EXPECT_EQ(printed_by([&] { lmainte_tell("%s b", longest.c_str()); }), longest + "\nb\n");
  EXPECT_EQ(printed_by([] { lmainte_tell("%s", "\x1b[2J"); }), "\\x1b[2J\n");
}

TEST_F(Telling, OfAFailureHasTheReasonAndTheWayOut) {
  EXPECT_EQ(
      printed_by([] {
        EXPECT_EQ(lmainte_tell_failure(LMAINTE_NOT_RUN, "%s was not checked", "/FAN_A#0"), LMAINTE_OUTCOME_FAILED);
      }),
      "/FAN_A#0 was not checked: a control program is missing, crashed or took too long\n(result 127).\nThe trace "
      "says which "
      "one. Then start again.\n");
}

TEST_F(Telling, AdvisesACommandAsItStandsOnAServiceProcessor) {
  EXPECT_EQ(advised("add_unit psu"), "Start it:\n  add_unit psu\n");
  setenv(LMAINTE_PROCEDURE_WAY, "", 1);
  EXPECT_EQ(advised("add_unit psu"), "Start it:\n  add_unit psu\n");
}

TEST_F(Telling, AdvisesACommandThroughTheToolThatReachesTheBox) {
  setenv(LMAINTE_PROCEDURE_WAY, "./dev spbox run build/demo-box", 1);
  EXPECT_EQ(advised("add_unit cmu"), "Start it:\n  ./dev spbox run build/demo-box add_unit cmu\n");
}

TEST_F(Telling, BreaksACommandThatIsTooLongBehindABackslash) {
  const std::string tool = "/home/somebody/lmainte/build/release/host/spbox/spbox run";
  setenv(LMAINTE_PROCEDURE_WAY, (tool + " /home/somebody/boxes/qe3").c_str(), 1);
  EXPECT_EQ(advised("add_unit cmu"),
            "Start it:\n  " + tool + " \\\n    /home/somebody/boxes/qe3 \\\n    add_unit cmu\n");
  setenv(LMAINTE_PROCEDURE_WAY, "spbox run box", 1);
  EXPECT_EQ(advised("/mgb/cli/usr/bin/deleteboard -q y -c unassign 15-0 15-1 15-2 15-3"),
            "Start it:\n  spbox run box \\\n    /mgb/cli/usr/bin/deleteboard -q y -c unassign 15-0 15-1 15-2 15-3\n");
}

TEST_F(Telling, ShowsWhatATerminalWouldObeyInACommand) {
  setenv(LMAINTE_PROCEDURE_WAY, "spbox run 'b\x1b[2Jx'", 1);
  EXPECT_EQ(advised("add_unit cmu"), "Start it:\n  spbox run 'b\\x1b[2Jx' add_unit cmu\n");
  unsetenv(LMAINTE_PROCEDURE_WAY);
  EXPECT_EQ(advised("add_unit cm\xffu"), "Start it:\n  add_unit cm\\xffu\n");
}

TEST_F(Telling, NamesTheOtherProceduresWhereTheyAre) {
  EXPECT_EQ(procedure_command("add_unit", "psu").view(), "add_unit psu") << "on the PATH";
  const std::filesystem::path folder = std::filesystem::path(testing::TempDir()) / "it's $HOME" / "bin";
  std::filesystem::create_directories(folder);
  std::ofstream(folder / "add_unit") << "#!/bin/sh\n";
  std::filesystem::permissions(folder / "add_unit", std::filesystem::perms::owner_all);
  lmainte::procedure::remember_folder((folder / "replace_unit").c_str());
  const std::string quoted = testing::TempDir() + "it'\\''s $HOME/bin/add_unit";
  EXPECT_EQ(procedure_command("add_unit", "psu").view(), "'" + quoted + "' psu");
  EXPECT_EQ(procedure_command("remove_unit", "psu").view(), "remove_unit psu") << "it is not there";
  EXPECT_EQ(advised("add_unit --all"), "Start it:\n  '" + quoted + "' --all\n") << "an author's own";
  EXPECT_EQ(advised("/mgb/bin/add_unit"), "Start it:\n  /mgb/bin/add_unit\n");
  EXPECT_EQ(advised(""), "Start it:\n  \n");
  lmainte::procedure::remember_folder(nullptr);
  EXPECT_EQ(procedure_command("add_unit", "psu").view(), "add_unit psu");
  std::filesystem::remove_all(folder.parent_path());
}

TEST_F(Telling, BreaksNoQuotedWordOfACommand) {
  setenv(LMAINTE_PROCEDURE_WAY, ("spbox run '" + std::string(70, 'a') + " b' c").c_str(), 1);
  EXPECT_EQ(advised("add_unit psu"),
            "Start it:\n  spbox run \\\n    '" + std::string(70, 'a') + " b' c \\\n    add_unit psu\n");
}

TEST_F(Telling, QuotesAUnitThatAShellWouldTakeForAComment) {
  EXPECT_EQ(program_command("ctlled", "/PSU#0", "off").view(), "/mgb/bin/ctlled -u /PSU#0 -c off");
  EXPECT_EQ(program_command("ctlled", "#0", "off").view(), "/mgb/bin/ctlled -u '#0' -c off");
  EXPECT_EQ(program_command("ctlled", "", "off").view(), "/mgb/bin/ctlled -u '' -c off");
}

TEST_F(Telling, SaysForEachResultWhetherTheUnitIsAtFault) {
  std::set<int32_t> faults;
  for (int32_t result = 0; result < 256; ++result) {
    if (lmainte::procedure::meaning_of(result).is_fault_of_unit) faults.insert(result);
  }
  EXPECT_EQ(faults, (std::set<int32_t>{208, 225, 226})) << "a failed test, fans that are too slow, a link that is dead";
  EXPECT_EQ(lmainte::procedure::reason_of(LMAINTE_TEST_FAILED).view(), "it failed its test (result 208)");
  EXPECT_EQ(lmainte::procedure::reason_of(LMAINTE_BUSY).view(), "another procedure is at work (result 128)");
  EXPECT_EQ(lmainte::procedure::reason_of(4242).view(),
            "a control program is missing, crashed or took too long (result 4242)");
}

// Whoever prints beside these prints lines that may be too long, and names that a terminal obeys.
TEST_F(Telling, IsTheOnlyWayInWhichAProcedurePrints) {
  std::set<std::string> printing;
  for (const auto &file : std::filesystem::directory_iterator(PROCEDURE_FOLDER)) {
    std::ifstream in(file.path());
    std::ostringstream text;
    text << in.rdbuf();
    for (const char *call : {" printf(", " puts(", "putchar(", "fprintf(", "fputs("}) {
      if (text.str().find(call) != std::string::npos) printing.insert(file.path().filename());
    }
  }
  EXPECT_EQ(printing, (std::set<std::string>{"beside.cpp", "lmainte_procedure_run.cpp", "session.cpp", "telling.cpp"}));
}

}  // namespace
