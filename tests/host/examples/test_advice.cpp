// The commands that a procedure advises to type work as they were printed.

#include "examples/procedure/advice.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

using procedure::as_typed;
using procedure::procedure_command;
using procedure::program_command;

class Advice : public testing::Test {
 protected:
  void SetUp() override {
    unsetenv("SPBOX_RUN");
    procedure::remember_folder("replace_unit");
  }
  void TearDown() override { unsetenv("SPBOX_RUN"); }
};

TEST_F(Advice, IsTypedAsItStandsOnAServiceProcessor) {
  EXPECT_EQ(as_typed("add_unit psu"), "  add_unit psu");
  setenv("SPBOX_RUN", "", 1);
  EXPECT_EQ(as_typed("add_unit psu"), "  add_unit psu");
}

TEST_F(Advice, GoesThroughTheToolThatReachesTheBox) {
  setenv("SPBOX_RUN", "./dev spbox run build/demo-box", 1);
  EXPECT_EQ(as_typed("add_unit cmu"), "  ./dev spbox run build/demo-box add_unit cmu");
}

TEST_F(Advice, ThatIsTooLongForALineGoesOnBehindABackslash) {
  const std::string tool = "/home/somebody/lmainte/build/release/host/spbox/spbox run";
  setenv("SPBOX_RUN", (tool + " /home/somebody/boxes/qe3").c_str(), 1);
  EXPECT_EQ(as_typed("add_unit cmu"), "  " + tool + " \\\n    /home/somebody/boxes/qe3 \\\n    add_unit cmu");
  setenv("SPBOX_RUN", "spbox run box", 1);
  EXPECT_EQ(as_typed("/mgb/cli/usr/bin/deleteboard -q y -c unassign 15-0 15-1 15-2 15-3"),
            "  spbox run box \\\n    /mgb/cli/usr/bin/deleteboard -q y -c unassign 15-0 15-1 15-2 15-3");
}

TEST_F(Advice, ShowsWhatATerminalWouldObey) {
  setenv("SPBOX_RUN", "spbox run 'b\x1b[2Jx'", 1);
  EXPECT_EQ(as_typed("add_unit cmu"), "  spbox run 'b\\x1b[2Jx' add_unit cmu");
  unsetenv("SPBOX_RUN");
  EXPECT_EQ(as_typed("add_unit cm\xffu"), "  add_unit cm\\xffu");
}

TEST_F(Advice, NamesTheOtherProceduresWhereThisOneIs) {
  EXPECT_EQ(procedure_command("add_unit", "psu"), "add_unit psu");
  procedure::remember_folder("./replace_unit");
  EXPECT_EQ(procedure_command("add_unit", "psu"), "./add_unit psu");
  procedure::remember_folder("/opt/my tools/replace_unit");
  EXPECT_EQ(procedure_command("add_unit", "psu"), "'/opt/my tools/add_unit' psu");
}

TEST_F(Advice, QuotesWhatAShellWouldTakeApart) {
  EXPECT_EQ(procedure::shell_word("/CMU#2"), "/CMU#2");
  EXPECT_EQ(procedure::shell_word("#2"), "'#2'");
  EXPECT_EQ(procedure::shell_word("it's"), "'it'\\''s'");
  EXPECT_EQ(procedure::shell_word("$HOME"), "'$HOME'");
  EXPECT_EQ(procedure::shell_word(""), "''");
  EXPECT_EQ(program_command("ctlled", "/PSU#0", "off"), "/mgb/bin/ctlled -u /PSU#0 -c off");
}

}  // namespace
