// spbox sweep as an author runs it: on the shipped procedure, and on commands that forget something.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <set>

#include "tests/host/box/scratch.h"
#include "tests/run.h"

namespace {

namespace fs = std::filesystem;
using Words = std::vector<std::string>;

// Marks a unit, asks, and takes the mark back. Whether that was done it does not look.
constexpr const char *kForgets =
    "/mgb/bin/ctlled -u /PSU#0 -c blink\n"
    "echo \"Type 1 when you have seen it, q to give up:\"\n"
    "read answer\n"
    "/mgb/bin/ctlled -u /PSU#0 -c off\n"
    "exit 0\n";

class SweepVerb : public testing::Test {
 protected:
  SweepVerb() { fs::create_directory(scratch_ / "tmp"); }

  void write(const char *name, const std::string &text) const { std::ofstream(scratch_ / name) << text; }
  std::string text_of(const fs::path &file) const {
    std::ifstream in(scratch_.path() / file);
    return {std::istreambuf_iterator<char>(in), {}};
  }
  // With this before it: what it runs in.
  Done spbox(const Words &words, Words command = {}) const {
    for (const std::string &word : Words{"/usr/bin/env", "-C", scratch_.path(), "TMPDIR=" + (scratch_ / "tmp").string(),
                                         std::string("PATH=") + EXAMPLES + ":/usr/bin:/bin", SPBOX})
      command.push_back(word);
    command.insert(command.end(), words.begin(), words.end());
    return run_to_end(command);
  }
  bool is_clear() const { return fs::is_empty(scratch_ / "tmp"); }

  Scratch scratch_;
};

bool says(const Done &done, const std::string &text) {
  return done.output.find(text) != std::string::npos;
}

TEST_F(SweepVerb, FindsACommandThatDoesNotLookAndWritesAPlayThatShowsIt) {
  write("command", kForgets);
  write("forgets.play", "box qa\nstart sh $HERE/command\nwait \"give up:\"\ntype \"1\\n\"\nexit 0\nin_order\n");
  const Done done = spbox({"sweep", "forgets.play", "--only", "program ctlled 2: exit 206", "--json", "report.json",
                           "--junit", "report.xml", "--report", "pages"});
  EXPECT_EQ(done.exit_status, 1) << done.output;
  EXPECT_TRUE(
      says(done, "failed  program ctlled 2: exit 206\n    the LED of /PSU#0 blinks, and the screen does not say so\n"))
      << done.output;
  EXPECT_TRUE(says(done, "forgets.findings/program_ctlled_2_exit_206.play  (1 replay)\n")) << done.output;
  EXPECT_FALSE(says(done, "did not fail")) << done.output;
  EXPECT_TRUE(says(done, " 1 replays in ") && says(done, ": 0 passed, 1 failed, 0 unplayed.\n")) << done.output;
  EXPECT_TRUE(says(done, "    pages/program_ctlled_2_exit_206.html shows it step by step.\n")) << done.output;
  EXPECT_NE(text_of("pages/program_ctlled_2_exit_206.html").find("the LED of /PSU#0 blinks"), std::string::npos);
  const Done again = spbox({"play", "--speed", "full", "forgets.findings/program_ctlled_2_exit_206.play"});
  EXPECT_EQ(again.exit_status, 1) << again.output;
  EXPECT_TRUE(says(again, "not all is in order:\n    the LED of /PSU#0 blinks\n")) << again.output;
  EXPECT_NE(text_of("report.xml").find("<failure message=\"the LED of /PSU#0 blinks"), std::string::npos);
  EXPECT_NE(text_of("report.json").find("\"fails_alone\": true"), std::string::npos) << text_of("report.json");

  const Done lost = spbox({"sweep", "forgets.play", "--only", "program ctlled 2: exit 206", "--findings", "/mnt/found"},
                          {"bwrap", "--dev-bind", "/", "/", "--size", "4096", "--tmpfs", "/mnt", "--", "sh", "-c",
                           "echo full >/mnt/rest; exec \"$@\"", "sh"});
  EXPECT_EQ(lost.exit_status, 1) << lost.output;
  EXPECT_TRUE(says(lost, "    This play could not be written: No space left on device. It stands here:\n"))
      << lost.output;
  EXPECT_TRUE(says(lost, ": 0 passed, 1 failed, 0 unplayed.\n")) << lost.output;

  std::string mended = kForgets;
  mended.replace(mended.find("-c off\n"), 7,
                 "-c off || { echo \"The LED of /PSU#0 may still blink, so switch it off.\"; exit 1; }\n");
  write("command", mended);
  write("forgets.play", "patience 100\n" + text_of("forgets.play"));
  const Done good = spbox({"sweep", "forgets.play", "--speed", "20", "--only", "program ctlled 2: exit 206"});
  EXPECT_EQ(good.exit_status, 0) << good.output;
  EXPECT_TRUE(is_clear());
}

TEST_F(SweepVerb, PassesTheShippedProcedureWhereItsFirstProgramFails) {
  write("good.play",
        "box qa\nstart replace_unit psu\nwait \"give up:\"\ntype \"1\\n\"\npatience 30\nwait \"Pull out\"\nspbox pull "
        "/PSU#0\n"
        "type \"1\\n\"\nwait \"Put in\"\nspbox insert /PSU#0\ntype \"1\\n\"\nexit 0\nin_order\n");
  const Done done = spbox({"sweep", "good.play", "--only", "program ctlled"});
  EXPECT_EQ(done.exit_status, 0) << done.output;
  EXPECT_TRUE(says(done, "program         exit            8        8\n")) << done.output;
  const Done killed = spbox({"sweep", "good.play", "--every", "--only", "trace lmainte_detach_fru ended"});
  EXPECT_EQ(killed.exit_status, 0) << killed.output;
  EXPECT_TRUE(says(killed, "trace           KILL            1        1\n")) << killed.output;
  EXPECT_TRUE(is_clear());
}

// Where the first program fails, it is started once more. Nobody looks whether it fails again.
TEST_F(SweepVerb, DrawsPairsFromWhatComesBehindTheFirstDeviation) {
  write("command",
        "/mgb/bin/ctlled -u /PSU#0 -c blink\n"
        "/mgb/bin/ctlled -u /PSU#0 -c off && exit 0\n"
        "/mgb/bin/ctlled -u /PSU#0 -c off\n"
        "echo \"It had to be done a second time, which is an error.\"\nexit 1\n");
  write("forgets.play", "box qa\nstart sh $HERE/command\nexit 0\nin_order\n");
  const auto pairs = [&](const Words &more) {
    Words words{"sweep", "forgets.play", "--only", ": exit 206", "--depth", "2", "--pairs", "60", "--seed", "7"};
    words.insert(words.end(), more.begin(), more.end());
    return spbox(words);
  };
  const Done done = pairs({"--json", "report.json"});
  EXPECT_EQ(done.exit_status, 1) << done.output;
  const std::string found = "program ctlled 2: exit 206 and program ctlled 3: exit 206\n";
  EXPECT_TRUE(says(done, "failed  " + found + "    the LED of /PSU#0 blinks, and the screen does not say so\n"))
      << "the good play never comes to the third one: " << done.output;
  EXPECT_TRUE(says(done, "\n    program ctlled exit and program ctlled exit: the LED of /PSU#0 blinks")) << done.output;
  EXPECT_FALSE(says(done, "did not fail")) << done.output;
  EXPECT_TRUE(says(done, "Only 2 pairs of 60 were drawn: there are no more.\n") &&
              says(done, " 4 replays, 2 of pairs, in ") && says(done, ": 3 passed, 1 failed, 0 unplayed.\n"))
      << done.output;
  const std::string json = text_of("report.json");
  for (const char *told : {R"("depth": 2)", R"("seed": 7)", R"("shard": "1/1")", R"("pairs": 2)"}) {
    EXPECT_NE(json.find(told), std::string::npos) << told;
  }
  const std::string first = "program ctlled 1: exit 206 and program ctlled 2: exit 206\n";
  const std::string shares = pairs({"--list", "--shard", "1/2"}).output + pairs({"--list", "--shard", "2/2"}).output;
  EXPECT_TRUE(shares == first + found || shares == found + first) << shares;
  EXPECT_TRUE(is_clear());
}

// The command that begins behind a killed one may be killed, too. The third one forgets what the first one left.
TEST_F(SweepVerb, FindsWhatIsLeftBehindTwoThatWereKilled) {
  write("command",
        "n=$(ls /tmp/n.* 2>/dev/null | wc -l)\necho text >/tmp/n.$n\nreplace_unit fan\nstatus=$?\n"
        "[ $status = 137 ] && exit 137\n"
        "if [ $n = 2 ]; then rm /tmp/n.1 /tmp/n.2; else rm -f /tmp/n.*; fi\nexit $status\n");
  write("gives_up.play", "box qa\nstart sh $HERE/command\nwait \"give up:\"\ntype \"q\\n\"\nexit 2\nin_order\n");
  const Done done = spbox({"sweep", "gives_up.play", "--only", "question", "--depth", "2", "--pairs", "60"});
  EXPECT_TRUE(says(done, "question 1: signal SIGKILL and question 2: signal SIGKILL\n    the file /tmp/n.0 is left"))
      << done.output;
  EXPECT_TRUE(says(done, "failed, 0 unplayed.\n") && !says(done, "did not fail")) << done.output;
  EXPECT_TRUE(is_clear());
}

// The first that begins behind a killed one has nothing to do with what stands there where its own first program fails.
TEST_F(SweepVerb, LetsOneMoreBeginWhereTheFirstBehindAKilledOneMeetsTheSecondDeviation) {
  write("command",
        "switch_off() { /mgb/bin/ctlled -u /PSU#0 -c off; }\n"
        "fail() { echo \"$1, which is an error.\"; exit 1; }\n"
        "switch_off || fail \"The LED cannot be switched\"\n"
        "/mgb/bin/ctlled -u /PSU#0 -c blink\n"
        "trap 'switch_off || fail \"The LED of /PSU#0 still blinks\"; fail \"A signal came\"' INT TERM HUP\n"
        "echo \"Type 1 when you have seen it, q to give up:\"\n"
        "read answer\n"
        "switch_off || fail \"The LED of /PSU#0 still blinks\"\n");
  write("exit 206.play", "box qa\nstart sh $HERE/command\nwait \"give up:\"\ntype \"1\\n\"\nexit 0\nin_order\n");
  const Words pairs{"sweep", "exit 206.play", "--only", "exit 206", "--depth", "2", "--pairs", "60"};
  Words list = pairs;
  list.emplace_back("--list");
  EXPECT_TRUE(says(spbox(list), "answer 1 at exit 206.play:4: KILL and program ctlled 3: exit 206\n"));
  const Done done = spbox(pairs);
  EXPECT_TRUE(says(done, "answer          KILL            1        1\n") && !says(done, ": KILL and ")) << done.output;
  EXPECT_TRUE(is_clear());
}

// It is spared where it says why it cannot begin, and nowhere else: this one lies.
TEST_F(SweepVerb, JudgesTheCommandBehindAKilledOneThatMeetsTheSecondDeviation) {
  write("command",
        "if rm /tmp/mark 2>/dev/null; then /mgb/bin/ctlled -u /PSU#0 -c off\n"
        "echo \"All is well, and nothing is left.\"; exit 0\nfi\n"
        "/mgb/bin/ctlled -u /PSU#0 -c blink\n"
        "echo text >/tmp/mark\n"
        "echo \"Type 1 when you have seen it, q to give up:\"\n"
        "read answer\n"
        "rm /tmp/mark\n"
        "/mgb/bin/ctlled -u /PSU#0 -c off\n");
  write("exit 206.play", "box qa\nstart sh $HERE/command\nwait \"give up:\"\ntype \"1\\n\"\nexit 0\nin_order\n");
  const Done done = spbox({"sweep", "exit 206.play", "--only", "exit 206", "--depth", "2", "--pairs", "60"});
  EXPECT_TRUE(says(done, ".play:4: KILL and program ctlled 2: exit 206\n    the LED of /PSU#0 blinks")) << done.output;
  EXPECT_TRUE(is_clear());
}

// What the second one brings about alone, too, is shown with it alone; and what a limit leaves out is told.
TEST_F(SweepVerb, ShowsAPairByOneOfThemAndTellsWhatALimitLeftOut) {
  write("command", kForgets);
  write("forgets.play", "box qa\nstart sh $HERE/command\nwait \"give up:\"\ntype \"1\\n\"\nexit 0\nin_order\n");
  const Done done = spbox({"sweep", "forgets.play", "--depth", "2", "--pairs", "300", "--seed", "7", "--limit", "4",
                           "--junit", "report.xml"});
  EXPECT_TRUE(says(done, " pairs of 300 were drawn: the limit was over.\n") || says(done, " of pairs, in "))
      << done.output;
  EXPECT_FALSE(says(done, "_and_")) << "one of two was enough: " << done.output;
  EXPECT_NE(text_of("report.xml").find("<skipped message=\"the limit was over before it began"), std::string::npos);
  EXPECT_TRUE(is_clear());
}

// What goes before a command is not played again for each replay, where the box tells all of it.
TEST_F(SweepVerb, BeginsAtTheCommandThatGoesAnotherWay) {
  write("forgets", kForgets);
  write("ask", "echo $(cat /tmp/before) $(stty size)\necho \"Go on?\"\nread answer\n");
  write("sleep_long", "date +%s >/tmp/begin\nsleep 7200\n");
  write("look_at_clock",
        "test $(date +%s) -ge $(($(cat /tmp/begin) + 7200)) || exit 3\necho \"Go on?\"\nread answer\n");
  write("say_word", "echo word | tee /tmp/before\n");
  const std::string ask = "start sh $HERE/ask\nwait \"Go on?\"\n", end = "type \"1\\n\"\nexit 0\n";
  struct Row {
    const char *says;
    std::string play;
  };
  const Row rows[] = {
      {"the box is as the command before left it, and the terminal as large",
       "box qa\nspbox fault /PSU#1\nterminal 30 90\nstart sh $HERE/say_word\nexit 0\n" + ask + "wait \"word 30 90\"\n" +
           end + "spbox units /PSU#1\nsays \"Faulted\"\n"},
      {"what goes before is not played again",
       "box qa\nstart touch /tmp/before\nexit 0\nspbox dump once.dump\n" + ask + end},
      {"the box's time goes on",
       "box qa\npatience 8000\nstart sh $HERE/sleep_long\nexit 0\nstart sh $HERE/look_at_clock\n"
       "wait \"Go on?\"\n" +
           end},
      {"a window that was given another size is as large",
       "box qa\nstart touch /tmp/before\nresize 30 90\nexit 0\n" + ask + "wait \"30 90\"\n" + end},
      {"what was taken from the screen before goes with it",
       "box qa\nstart sh $HERE/say_word\ntake WORD \"wor.\"\nexit 0\nstart sh $HERE/ask\nwait \"$WORD\"\n" + end},
      {"what a verb has said goes with it",
       "box qa\nstart touch /tmp/before\nexit 0\nspbox units /PSU#0\n" + ask + "says \"PSU#0\"\n" + end},
      {"a technician is still at work", "box qa\nhands \"after 300; fault /PSU#0\"\nstart touch /tmp/before\nexit 0\n" +
                                            ask + "patience 400\nhandsdone\nspbox units /PSU#0\nsays \"Faulted\"\n" +
                                            end},
  };
  for (const Row &row : rows) {
    write("two.play", row.play);
    fs::remove(scratch_ / "once.dump");
    const Done done = spbox({"sweep", "two.play", "--only", ": nonsense"});
    EXPECT_EQ(done.exit_status, 0) << row.says << ": " << done.output;
    EXPECT_TRUE(says(done, ": 1 passed, 0 failed, 0 unplayed.\n")) << row.says << ": " << done.output;
  }
  write("two.play",
        "box qa\nstart true\nexit 0\nstart sh $HERE/forgets\nwait \"give up:\"\ntype \"1\\n\"\nexit 0\nin_order\n");
  const Done found = spbox({"sweep", "two.play", "--only", "program ctlled 2: exit 206"});
  EXPECT_TRUE(says(found, "failed  program ctlled 2: exit 206\n    the LED of /PSU#0 blinks")) << found.output;
  EXPECT_TRUE(says(found, "program_ctlled_2_exit_206.play") && !says(found, "did not fail")) << found.output;
  EXPECT_TRUE(is_clear());
}

// What the operator reads is the question, and neither its own words nor the answer say what is left.
TEST_F(SweepVerb, FindsWhatOnlyAQuestionNames) {
  write("command",
        "/mgb/bin/ctlled -u /PSU#0 -c blink\n"
        "printf 'Does the LED of /PSU#0 blink? 1 yes, q no: '\nread answer\n[ \"$answer\" = 1 ] || exit 2\n"
        "/mgb/bin/ctlled -u /PSU#0 -c off\n");
  write("asks.play", "box qa\nstart sh $HERE/command\nwait \"q no:\"\ntype \"1\\n\"\nexit 0\nin_order\n");
  EXPECT_TRUE(says(spbox({"sweep", "asks.play", "--only", ": q"}),
                   "    the LED of /PSU#0 blinks, and the screen does not say so\n"));
  const Done without_reason = spbox({"sweep", "asks.play", "--only", ": nonsense"});
  EXPECT_TRUE(says(without_reason, "exit status 2, and the screen does not say why")) << without_reason.output;
}

// It says that its LED blinks, and that all is well.
TEST_F(SweepVerb, FindsAnExitStatusThatIsNotTrue) {
  write("command",
        "/mgb/bin/ctlled -u /PSU#0 -c blink\n"
        "/mgb/bin/ctlled -u /PSU#0 -c off || echo \"The LED of /PSU#0 still blinks.\"\nexit 0\n");
  for (const std::string steps : {"", "patience 5\npause 1\n"}) {
    write("untrue.play", "box qa\nstart sh $HERE/command\nexit 0\n" + steps + "in_order\n");
    const Done done = spbox({"sweep", "untrue.play", "--only", "program ctlled 2: exit 206"});
    EXPECT_TRUE(says(done, "exit status 0, but the server is not as the play wants it")) << steps << done.output;
    EXPECT_FALSE(says(done, "did not fail")) << done.output;
  }
}

TEST_F(SweepVerb, RefusesWhatItCannotSweep) {
  write("bad.play", "box qa\nstart sh -c \"exit 3\"\nexit 0\n");
  write("own.play", "box qa\nspbox points --count\nstart true\nexit 0\n");
  write("good.play", "box qa\nstart true\nexit 0\n");
  write("asks.play", "box qa\nstart sh -c \"read answer\"\ntype \"1\\n\"\nexit 0\n");
  write("two.play", "box qa\noperator anna\nstart true\nexit 0\n");
  write("endless.play", "box qa\nstart true\nstart true\nexit 0\n");
  write("nothing.play", "box qa\n");
  struct Row {
    Words words;
    int status;
    const char *told;
  };
  const Row rows[] = {
      {{"sweep", "bad.play"}, 2, "spbox: bad.play:3: `exit 0`: the command ended with exit status 3"},
      {{"sweep", "own.play"},
       2,
       "spbox: own.play:2: `spbox points --count`: the points of a play that is swept are the sweep's"},
      {{"sweep", "two.play"}, 2, "spbox: two.play:2: `operator anna`: a sweep follows one operator"},
      {{"sweep", "good.play", "--speed", "0"}, 2, "spbox: --speed 0: give a number from 1 to 1000, or full."},
      {{"sweep", "endless.play"},
       2,
       "spbox: endless.play:2: `start true`: a sweep has to know how this command ends: write `exit` or `dies` behind "
       "it"},
      {{"sweep", "nothing.play"}, 2, "spbox: nothing.play comes to no point at which anything could be otherwise."},
      {{"sweep", "none.play"}, 2, "spbox: none.play: there is no such file"},
      {{"sweep", "bad.play", "--shard", "3/2"}, 2, "spbox: "},
      {{"sweep", "-"}, 2, "spbox: a sweep reads its play for each replay: it has to be a file."},
      {{"sweep", "good.play", "--findings", "bad.play"},
       2,
       "spbox: --findings: nothing can be written into bad.play: Not a directory. Nothing was played."},
      {{"sweep", "good.play", "--findings", "/proc/new"},
       2,
       "spbox: --findings: nothing can be written into /proc/new: No such file or directory. Nothing was played."},
      {{"sweep", "good.play", "--report", "bad.play"},
       2,
       "spbox: --report: nothing can be written into bad.play: Not a directory. Nothing was played."},
      {{"sweep", "good.play", "--only", "no\nsuch"},
       2,
       R"(spbox: no deviation of good.play has "no\x0asuch" in its name. --list prints the names.)"},
      {{"sweep", "asks.play", "--only", ": q", "--depth", "2"}, 2, "\nPoint           Deviation       Tried"},
      {{"sweep", "good.play", "--pairs", "5"}, 2, "spbox: --pairs goes with --depth 2."},
      {{"sweep", "bad.play", "--good", "x"}, 2, "spbox: --good and --number belong together."},
  };
  for (const Row &row : rows) {
    const Done done = spbox(row.words);
    EXPECT_EQ(done.exit_status, row.status) << done.output;
    EXPECT_TRUE(done.output.starts_with(row.told)) << done.output;
  }
  EXPECT_TRUE(is_clear());
}

}  // namespace
