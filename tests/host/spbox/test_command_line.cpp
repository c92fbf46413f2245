#include <sstream>

#include "tests/host/spbox/spbox_test.h"

namespace {

class CommandLine : public SpboxTest {};

TEST_F(CommandLine, ThatMakesNoSenseIsExitStatusTwo) {
  make_box("qa");
  const std::vector<Words> lines{{},
                                 {"frob"},
                                 {"create", "x"},
                                 {"create", "x", "--model", "qz"},
                                 {"units"},
                                 {"units", "box", "--jsn"},
                                 {"show", "box"},
                                 {"show", "box", "/PSU#0", "/PSU#1"},
                                 {"pull", "box"},
                                 {"run", "box"},
                                 {"run", "box", "--"},
                                 {"break", "box", "/PSU#0"},
                                 {"break", "box", "--short"},
                                 {"break", "box", "/PSU#0", "--short", "--long"},
                                 {"load", "x.dump"},
                                 {"dump"},
                                 {"trace", "box", "--last", "0"},
                                 {"trace", "box", "--last", "many"}};
  for (const Words &line : lines) {
    const Done result = spbox(line);
    EXPECT_EQ(result.exit_status, 2) << (line.empty() ? "" : line.front()) << ": " << result.output;
    EXPECT_TRUE(result.output.starts_with("spbox: ")) << result.output;
    EXPECT_NE(result.output.find("spbox --help"), std::string::npos) << result.output;
  }
}

TEST_F(CommandLine, NamesAVerbThatDoesNotExist) {
  EXPECT_NE(spbox({"frob", "box"}).output.find("there is no verb frob"), std::string::npos);
}

TEST_F(CommandLine, HelpsWithExamplesForEveryVerb) {
  EXPECT_NE(done({"--help"}).find("spbox create box --model qe1"), std::string::npos);
  for (const char *verb : {"create", "run", "units", "show", "pull", "insert", "fault", "degrade", "repair", "program",
                           "break", "mend", "trace", "log", "dump", "load"}) {
    EXPECT_NE(done({verb, "--help"}).find("Example"), std::string::npos) << verb;
  }
}

TEST_F(CommandLine, FitsATerminalOf80ColumnsInEveryHelp) {
  for (const char *verb : {"", "create", "run", "units", "show", "pull", "insert", "fault", "degrade", "repair",
                           "program", "break", "mend", "trace", "log", "dump", "load"}) {
    std::istringstream help(*verb == '\0' ? done({"--help"}) : done({verb, "--help"}));
    for (std::string line; std::getline(help, line);) EXPECT_LE(line.size(), 80u) << verb << ": " << line;
  }
}

TEST_F(CommandLine, NeedsABoxForEveryVerbButCreate) {
  for (const Words &line : std::vector<Words>{{"units", "no"},
                                              {"show", "no", "/PSU#0"},
                                              {"pull", "no", "/PSU#0"},
                                              {"program", "no"},
                                              {"trace", "no"},
                                              {"log", "no"},
                                              {"break", "no"},
                                              {"mend", "no"},
                                              {"dump", "no"},
                                              {"run", "no", "--", "true"}}) {
    EXPECT_EQ(refused(line), "spbox: no is no box. `spbox create no --model MODEL` makes one.\n") << line.front();
  }
}

}  // namespace
