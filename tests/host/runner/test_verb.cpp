// spbox test as a person and a CI server run it, on plays with boxes of their own.
#include <gtest/gtest.h>

#include <algorithm>

#include <csignal>
#include <fstream>
#include <iterator>
#include <set>

#include "host/terminal/terminal.h"
#include "tests/eventually.h"
#include "tests/host/box/scratch.h"
#include "tests/run.h"

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using Words = std::vector<std::string>;

constexpr const char *kGood = "box qa\nstart echo hello\nwait \"hello\"\nexit 0\nin_order\n";
constexpr const char *kBad =
    "box qa\nstart sh -c \"echo hello; read x\"\nwait \"hello\"\npatience 0.2\nwait \"goodbye\"\n";
constexpr const char *kHangs = "box qa\nstart sleep 60\npause 60\n";

class TestVerb : public testing::Test {
 protected:
  TestVerb() { fs::create_directory(scratch_ / "tmp"); }

  void write(const std::string &name, const std::string &text) const {
    fs::create_directories((scratch_ / name.c_str()).parent_path());
    std::ofstream(scratch_ / name.c_str()) << text;
  }
  std::string text_of(const fs::path &name) const {
    std::ifstream file(scratch_.path() / name);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  Words command(const Words &words) const {
    Words command{"/usr/bin/env", "-C", scratch_.path(), "TMPDIR=" + (scratch_ / "tmp").string(), SPBOX, "test"};
    command.insert(command.end(), words.begin(), words.end());
    return command;
  }
  Done test(const Words &words = {}) const { return run_to_end(command(words)); }

  // Nothing is left of plays and of the runner but transcripts.
  std::string left_in_tmp() const {
    std::string names;
    for (const auto &entry : fs::recursive_directory_iterator(scratch_ / "tmp")) {
      if (entry.path().extension() != ".txt" && !entry.path().filename().string().starts_with("spbox-test."))
        names += entry.path().string() + "\n";
    }
    return names;
  }

  // Not below it: what lies there comes and goes with the play.
  std::set<std::string> names_in_tmp() const {
    std::set<std::string> names;
    for (const auto &entry : fs::directory_iterator(scratch_ / "tmp")) names.insert(entry.path().filename());
    return names;
  }
  bool has_folder_of_play() const {
    return std::ranges::any_of(names_in_tmp(), [](const std::string &name) { return name.starts_with("spbox-play."); });
  }

  Scratch scratch_;
};

bool says(const Done &done, const std::string &text) {
  return done.output.find(text) != std::string::npos;
}

TEST_F(TestVerb, PlaysAllAndTellsWhatWentWrong) {
  write("good.play", kGood);
  write("deep/bad.play", kBad);
  write("wrong.play", "jump\n");
  write("parts/part.play", "say \"$what\"\n");
  write("whole.play", "box qa\nplay parts/part.play what=this\n");
  const Done done = test({"-j", "4", "--junit", "report.xml", "--json", "report.json", "--report", "pages"});
  EXPECT_EQ(done.exit_status, 1) << done.output;
  EXPECT_TRUE(says(done, "  good.play\n")) << done.output;
  EXPECT_TRUE(says(done,
                   "s  deep/bad.play\ndeep/bad.play:5: `wait \"goodbye\"`: \"goodbye\" did not come up in 0.2 s.\n"
                   "+-- the screen "))
      << done.output;
  EXPECT_TRUE(says(done, "| hello\n")) << done.output;
  EXPECT_TRUE(says(done, "The report: pages/deep/bad.play.html\n")) << done.output;
  EXPECT_NE(text_of("pages/deep/bad.play.html").find("&quot;goodbye&quot; did not come up in 0.2 s."),
            std::string::npos);
  EXPECT_FALSE(fs::exists(scratch_ / "pages/good.play.html")) << "nobody needs one of what passed";
  EXPECT_TRUE(says(done, "wrong.play:1: `jump`: there is no step")) << done.output;
  EXPECT_TRUE(says(done, ": 2 passed, 1 failed, 1 unreadable.\n")) << done.output;
  EXPECT_EQ(done.output.find('\r'), std::string::npos);
  EXPECT_EQ(done.output.find('\033'), std::string::npos);

  const std::string behind = "The transcript: ";
  const auto at = done.output.find(behind) + behind.size();
  const fs::path transcript = done.output.substr(at, done.output.find('\n', at) - at);
  EXPECT_NE(text_of(transcript).find("==== The trace"), std::string::npos) << transcript;
  EXPECT_EQ(std::distance(fs::directory_iterator(transcript.parent_path()), {}), 1);
  EXPECT_EQ(left_in_tmp(), transcript.parent_path().string() + "\n");

  const Done lint = run_to_end({XMLLINT, "--noout", "--nonet", "--schema", JUNIT, (scratch_ / "report.xml").string()});
  EXPECT_EQ(lint.exit_status, 0) << lint.output;
  const auto json = text_of("report.json");
  EXPECT_NE(json.find("\"place\": \"deep/bad.play:5\""), std::string::npos) << json;
  EXPECT_NE(json.find("\"wrong\": 2"), std::string::npos) << json;
}

TEST_F(TestVerb, LeavesNothingWhereAllPass) {
  write("good.play", kGood);
  const Done done = test({"--repeat", "2"});
  EXPECT_EQ(done.exit_status, 0) << done.output;
  EXPECT_TRUE(says(done, "  good.play (1)\n") && says(done, "  good.play (2)\n")) << done.output;
  EXPECT_TRUE(fs::is_empty(scratch_ / "tmp"));
  EXPECT_EQ(test({"--transcripts", "kept"}).exit_status, 0);
  EXPECT_NE(text_of("kept/good.play.txt").find("The operator starts: echo hello\n"), std::string::npos);
}

TEST_F(TestVerb, RemovesTheTranscriptsOfOneThatWasKilled) {
  write("plays/good.play", kGood);
  write("bad.play", kBad);
  write("hangs.play", kHangs);
  EXPECT_EQ(test({"bad.play"}).exit_status, 1);
  const auto kept = names_in_tmp();
  EXPECT_EQ(kept.size(), 1U);
  {
    terminal::BackgroundProgram killed(command({"-j", "2", "bad.play", "hangs.play"}));
    ASSERT_TRUE(eventually([&] { return killed.output().find("failed ") != std::string::npos; })) << killed.output();
    killed.kill();
  }
  EXPECT_GT(names_in_tmp().size(), 1U);
  // Its plays die a moment later.
  EXPECT_TRUE(eventually([&] {
    EXPECT_EQ(test({"plays"}).exit_status, 0);
    return names_in_tmp() == kept;
  }));
  EXPECT_FALSE(fs::is_empty(scratch_ / "tmp" / *kept.begin())) << "what was kept stays";
}

TEST_F(TestVerb, EndsAPlayThatHangsAndGoesOn) {
  write("a_hangs.play", kHangs);
  write("good.play", kGood);
  const Done done = test({"-j", "1", "--limit", "4"});
  EXPECT_EQ(done.exit_status, 1);
  EXPECT_TRUE(says(done, "a_hangs.play:3: `pause 60`: the play was not done in 4 s, and was ended.\n")) << done.output;
  EXPECT_TRUE(says(done, ": 1 passed, 1 hung.\n")) << done.output;
  EXPECT_EQ(left_in_tmp().find("spbox-play."), std::string::npos) << left_in_tmp();
}

TEST_F(TestVerb, ReportsWhatRanWhenItIsInterrupted) {
  write("a_good.play", kGood);
  write("b_hangs.play", kHangs);
  write("c_good.play", kGood);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    terminal::BackgroundProgram runner(command({"-j", "1", "--junit", "report.xml"}));
    ASSERT_TRUE(eventually([&] {
      const bool has_begun = runner.output().find("a_good.play\n") != std::string::npos;
      return has_begun && has_folder_of_play();
    })) << runner.output();
    kill(runner.pid(), signal);
    EXPECT_EQ(runner.wait(20s), 128 + signal) << runner.output();
    EXPECT_NE(runner.output().find(": 1 passed, 2 unplayed.\n"), std::string::npos) << runner.output();
    EXPECT_NE(text_of("report.xml").find("<skipped message="), std::string::npos);
    EXPECT_TRUE(fs::is_empty(scratch_ / "tmp")) << left_in_tmp();
  }
}

TEST_F(TestVerb, PlaysOnlyWhatIsWanted) {
  for (const char *name : {"a.play", "b.play", "c/d.play"}) write(name, kGood);
  write("e.play", "jump\n");
  EXPECT_EQ(test({"--list"}).output, "a.play\nb.play\nc/d.play\ne.play\n");
  EXPECT_EQ(test({"--list", "--filter", "c/*"}).output, "c/d.play\n");
  EXPECT_EQ(test({"--list", "--shard", "2/4"}).output, "b.play\n");
  EXPECT_EQ(test({"--list", "--shard", "7/8"}).output, "");
  const Done shard = test({"--shard", "7/8"});
  EXPECT_EQ(shard.exit_status, 0);
  EXPECT_EQ(shard.output, "0 plays in 0.0 s: 0 passed.\n");
  const Done check = test({"--check"});
  EXPECT_EQ(check.exit_status, 2);
  EXPECT_TRUE(says(check, "e.play:1: `jump`: ") && says(check, "4 plays: 3 can be played, 1 cannot.\n"))
      << check.output;
  EXPECT_EQ(test({"--check", "a.play"}).output, "1 play: 1 can be played, 0 cannot.\n");
  EXPECT_TRUE(fs::is_empty(scratch_ / "tmp"));
}

struct Refusal {
  const char *says;
  Words words;
  const char *told;
};

TEST_F(TestVerb, RefusesWhatMakesNoSenseBeforeTheFirstPlay) {
  write("a.play", kGood);
  write("kept.xml", "old");
  fs::create_directory(scratch_ / "empty");
  const Refusal rows[] = {
      {"a play that is not there", {"nowhere.play"}, "spbox: nowhere.play: there is no such file\n"},
      {"a folder without plays",
       {"empty"},
       "spbox: there is no play in empty. The name of a play ends with .play. `spbox help test` says more.\n"},
      {"a pattern that fits nothing",
       {"--filter", "b*"},
       "spbox: no name of a play in . fits `b*`. `spbox test --list` shows the names. `spbox help test` says more.\n"},
      {"a share that there is not",
       {"--shard", "3/2"},
       "spbox: `3/2` is no share: write 2/8 for the second one of eight. `spbox help test` says more.\n"},
      {"a report that is a folder",
       {"--junit", "empty"},
       "spbox: --junit: empty cannot be written: Is a directory. Nothing was played. `spbox help test` says more.\n"},
      {"a report in no folder",
       {"--json", "nowhere/report.json"},
       "spbox: --json: nowhere/report.json cannot be written: No such file or directory. Nothing was played. `spbox "
       "help test` says more.\n"},
      {"a report in a folder in which nobody makes a file",
       {"--junit", "/proc/report.xml"},
       "spbox: --junit: /proc/report.xml cannot be written: No such file or directory. Nothing was played. `spbox help "
       "test` says more.\n"},
      {"a folder for transcripts that is a file",
       {"--transcripts", "kept.xml"},
       "spbox: --transcripts: nothing can be written into kept.xml: Not a directory. Nothing was played. `spbox help "
       "test` says more.\n"},
      {"one file for two reports",
       {"--junit", "report", "--json", "empty/../report"},
       "spbox: --junit and --json: empty/../report cannot hold both reports. Give each a file of its own. Nothing was "
       "played. "
       "`spbox help test` says more.\n"},
      {"no play at a time",
       {"-j", "0"},
       "spbox: -j takes a number from 1 to 1000, not `0`. `spbox help test` says more.\n"},
  };
  for (const Refusal &row : rows) {
    const Done done = test(row.words);
    EXPECT_EQ(done.exit_status, 2) << row.says;
    EXPECT_EQ(done.output, row.told) << row.says;
  }
  EXPECT_EQ(text_of("kept.xml"), "old");
}

// The disk has room for the box of a play, and gets full before the report.
TEST_F(TestVerb, TellsWhatBecameOfPlaysAlsoWhereTheReportHasNoRoom) {
  write("full.play", "box qa\nstart true\nexit 0\n");
  const std::string script = "echo old >/mnt/report.xml; cat /dev/zero >/mnt/rest 2>/dev/null; " SPBOX " test " +
                             (scratch_ / "full.play").string() +
                             " --junit /mnt/report.xml; echo status $?; ls /mnt; "
                             "cat /mnt/report.xml";
  const Done done = run_to_end({"bwrap", "--dev-bind", "/", "/", "--size", "65536", "--tmpfs", "/mnt", "--", "env",
                                "TMPDIR=" + (scratch_ / "tmp").string(), "sh", "-c", script});
  EXPECT_TRUE(says(done, ": 1 passed.\n")) << done.output;
  EXPECT_TRUE(says(done,
                   "spbox: the report /mnt/report.xml cannot be written: No space left on device.\nstatus 1\n"
                   "report.xml\nrest\nold\n"))
      << done.output;
}

TEST_F(TestVerb, CountsOnATerminal) {
  write("good.play", kGood);
  write("hangs.play", kHangs);
  terminal::Terminal terminal({24, 60});
  Words words = command({"-j", "2", "--limit", "3"});
  words.insert(words.begin() + 3, "TERM=xterm");
  terminal.start(words);
  EXPECT_TRUE(terminal.wait_for("1 of 2 plays in ", 20s)) << terminal.screen().at(0);
  EXPECT_TRUE(terminal.wait_for("; now hangs.play", 20s));
  EXPECT_EQ(terminal.wait_for_exit(20s), (terminal::Ending{false, 1}));
  for (const auto &row : terminal.screen()) EXPECT_EQ(row.find("; now"), std::string::npos) << row;
}

}  // namespace
