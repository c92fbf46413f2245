#include <csignal>

#include "host/box/program_list.h"
#include "host/terminal/background_program.h"
#include "tests/eventually.h"
#include "tests/host/spbox/read_json.h"
#include "tests/host/spbox/spbox_test.h"

namespace {

class Program : public SpboxTest {
 protected:
  void SetUp() override { make_box("qa"); }
  box::Bend bend() const { return box::bend_of(box::TextDatabase(place()), "ctlled"); }
};

TEST_F(Program, IsStraightInANewBox) {
  EXPECT_EQ(done({"program", "box", "ctlled"}),
            "Program  Bent      Last run\n"
            "ctlled   straight  never ran\n");
}

TEST_F(Program, IsOneOfSixteen) {
  const ReadJson all = ReadJson(done({"program", "box", "--json"}))["programs"];
  EXPECT_EQ(all.size(), 16u);
  EXPECT_EQ(all[0]["name"], "ctlmainte");
  EXPECT_EQ(all[15]["name"], "linkboard");
}

TEST_F(Program, IsBentAsAsked) {
  EXPECT_EQ(done({"program", "box", "ctlled", "--exit", "206", "--delay", "2"}),
            "Program  Bent                       Last run\n"
            "ctlled   waits 2 s, exits with 206  never ran\n");
  EXPECT_EQ(bend().exit, 206);
  EXPECT_EQ(bend().delay, 2u);
}

TEST_F(Program, IsBentAnewEachTime) {
  done({"program", "box", "ctlled", "--exit", "206"});
  done({"program", "box", "ctlled", "--hang", "--ignore-term"});
  EXPECT_TRUE(bend().hang);
  EXPECT_TRUE(bend().ignore_term);
  EXPECT_FALSE(bend().exit);
  done({"program", "box", "ctlled"});
  EXPECT_TRUE(bend().hang) << "showing changes nothing";
  done({"program", "box", "ctlled", "--reset"});
  EXPECT_TRUE(bend().straight());
}

TEST_F(Program, TakesSignalsByNameOrNumber) {
  for (const char *text : {"KILL", "SIGKILL", "9"}) {
    done({"program", "box", "ctlled", "--die", text});
    EXPECT_EQ(bend().die, 9) << text;
  }
}

TEST_F(Program, RefusesWhatMakesNoSense) {
  const std::vector<Words> lines{{"foo"},
                                 {"ctlled", "--exit", "256"},
                                 {"ctlled", "--exit", "-1"},
                                 {"ctlled", "--delay", "0"},
                                 {"ctlled", "--die", "FOO"},
                                 {"ctlled", "--die", "99"},
                                 {"ctlled", "--die", "9", "--exit", "3"},
                                 {"ctlled", "--die", "9", "--hang"},
                                 {"ctlled", "--reset", "--hang"}};
  for (Words line : lines) {
    line.insert(line.begin(), {"program", "box"});
    const Done result = spbox(line);
    EXPECT_EQ(result.exit_status, 2) << line.back();
    EXPECT_TRUE(result.output.starts_with("spbox: ")) << result.output;
  }
  EXPECT_TRUE(bend().straight());
  for (const char *option : {"--hang", "--reset"}) {
    const Done result = spbox({"program", "box", option});
    EXPECT_EQ(result.exit_status, 2) << option;
    EXPECT_EQ(result.output,
              "spbox: no program is named. `spbox program box` lists them. `spbox help program` says more.\n");
  }
}

TEST_F(Program, ShowsItsLastRun) {
  box::TextDatabase kept(place());
  box::set_last_run(kept, "ctlled", {.time_ns = 0, .pid = 4711, .status = 206, .arguments = "-u /PSU#9 -c on"});
  EXPECT_NE(done({"program", "box", "ctlled"}).find("process 4711, \"-u /PSU#9 -c on\", exit status 206\n"),
            std::string::npos);
  const ReadJson run = ReadJson(done({"program", "box", "ctlled", "--json"}))["programs"][0]["last_run"];
  EXPECT_EQ(run["pid"], 4711);
  EXPECT_EQ(run["arguments"], "-u /PSU#9 -c on");
  EXPECT_EQ(run["exit_status"], 206);
  EXPECT_EQ(run["time"], "1970-01-01T00:00:00.000000Z");
  box::set_last_run(kept, "ctlled", {.time_ns = 0, .pid = 1, .status = {}, .arguments = ""});
  EXPECT_NE(done({"program", "box", "ctlled"}).find("did not end by itself"), std::string::npos);
}

TEST_F(Program, ThatStillRunsIsToldSoWithItsTimeUntilItIsKilled) {
  done({"program", "box", "ctlled", "--hang"});
  const auto told = [&] { return done({"program", "box", "ctlled"}); };
  {
    terminal::BackgroundProgram hanging({SPBOX, "run", "--no-pager", place().root(), "/mgb/bin/ctlled"});
    EXPECT_TRUE(eventually([&] { return told().find(", running for ") != std::string::npos; })) << told();
    EXPECT_EQ(ReadJson(done({"program", "box", "ctlled", "--json"}))["programs"][0]["last_run"]["running"], true);
    ::kill(hanging.pid(), SIGTERM);
    hanging.wait();
  }
  EXPECT_NE(told().find(", did not end by itself\n"), std::string::npos) << told();
  EXPECT_EQ(ReadJson(done({"program", "box", "ctlled", "--json"}))["programs"][0]["last_run"]["running"], false);
}

}  // namespace
