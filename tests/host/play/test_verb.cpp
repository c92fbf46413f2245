// spbox play as a person runs it, on boxes that commands enter through a root of their own.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <csignal>
#include <fstream>
#include <iterator>
#include <set>

#include "host/base/number.h"
#include "host/box/place.h"
#include "host/play/step.h"
#include "host/terminal/background_program.h"
#include "tests/eventually.h"
#include "tests/host/box/scratch.h"
#include "tests/run.h"

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using Words = std::vector<std::string>;

class PlayVerb : public testing::Test {
 protected:
  PlayVerb() { fs::create_directory(scratch_ / "boxes"); }

  void write(const std::string &name, const std::string &text) const { std::ofstream(scratch_ / name.c_str()) << text; }
  std::string text_of(const char *name) const {
    std::ifstream file(scratch_ / name);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  Words command(const Words &words) const {
    Words command{"/usr/bin/env", "-C", scratch_.path(), "TMPDIR=" + (scratch_ / "boxes").string(), SPBOX, "play"};
    command.insert(command.end(), words.begin(), words.end());
    return command;
  }
  Done play(const std::string &text, const Words &words = {}) const {
    write("walk.play", text);
    Words all{"walk.play"};
    all.insert(all.end(), words.begin(), words.end());
    return run_to_end(command(all));
  }
  void expect_done(const std::string &text, const Words &words = {}) const {
    const auto done = play(text, words);
    EXPECT_EQ(done.exit_status, 0) << done.output;
    EXPECT_TRUE(fs::is_empty(scratch_ / "boxes"));
  }

  Scratch scratch_;
};

// Whether a process has this argument.
bool runs(const std::string &argument) {
  for (const auto &process : fs::directory_iterator("/proc")) {
    std::ifstream arguments(process.path() / "cmdline");
    for (std::string word; std::getline(arguments, word, '\0');) {
      if (word == argument) return true;
    }
  }
  return false;
}

TEST_F(PlayVerb, PlaysOnABoxThatIsGoneAfterwards) {
  const auto done = play("box qe2\nstart sh -c \"test -e /tmp/.qe2 && echo here\"\nwait \"here\"\nexit 0\nin_order\n");
  EXPECT_EQ(done.exit_status, 0);
  EXPECT_EQ(done.output,
            "A box of model qe2.\n\nThe operator starts: sh -c test -e /tmp/.qe2 && echo here\n\n"
            "The command ends with exit status 0.\n\nAll is in order.\n\n");
  EXPECT_TRUE(fs::is_empty(scratch_ / "boxes"));
}

TEST_F(PlayVerb, GivesUpOnACommandThatDoesNotReadWhatIsTyped) {
  std::string much;
  while (much.size() < 300'000) much += "yes\\n";
  const auto done =
      play("box qa\nstart sh -c \"stty -echo; echo ready; exec sleep 60\"\nwait \"ready\"\npatience 0.2\ntype \"" +
           much + "\"\n");
  EXPECT_EQ(done.exit_status, 1);
  EXPECT_NE(done.output.find("`: the command did not read all of it in 0.2 s.\n"), std::string::npos)
      << done.output.substr(0, 2000);
}

TEST_F(PlayVerb, PlaysWithACommandThatAsksTheTerminalAndDoesNotRead) {
  write("ask.sh", "stty -echo\nprintf '\\033[6n%.0s' $(seq 12000)\necho asked\nexec sleep 60\n");
  expect_done("box qa\nstart sh ask.sh\nwait \"asked\"\nsignal TERM\ndies TERM\n");
}

// Whichever call fails for want of a descriptor.
TEST_F(PlayVerb, SaysThatDescriptorsAreFew) {
  write("walk.play", "box qa\n");
  int failed = 0;
  for (int limit = 5; limit < 32; ++limit) {
    Words words{"sh", "-c", "ulimit -n " + std::to_string(limit) + "; exec \"$@\"", "sh"};
    const Words play = command({"walk.play"});
    words.insert(words.end(), play.begin(), play.end());
    const auto done = run_to_end(words);
    constexpr int kCannotBeLoaded = 127;
    if (done.exit_status == 0 || done.exit_status == kCannotBeLoaded) continue;
    ++failed;
    EXPECT_NE(done.output.find("Too many open files"), std::string::npos) << limit << ": " << done.output;
    EXPECT_TRUE(fs::is_empty(scratch_ / "boxes")) << limit;
  }
  EXPECT_GT(failed, 4);
  EXPECT_LT(failed, 28);
}

TEST_F(PlayVerb, RemovesItsBoxWhenAStepFails) {
  const auto done = play("box qe2\nstart sleep 30\npatience 0.1\nwait \"ready\"\n");
  EXPECT_EQ(done.exit_status, 1);
  EXPECT_NE(done.output.find("walk.play:4: `wait \"ready\"`: \"ready\" did not come up in 0.1 s.\n+-- the screen"),
            std::string::npos)
      << done.output;
  EXPECT_TRUE(fs::is_empty(scratch_ / "boxes"));
}

TEST_F(PlayVerb, RemovesItsBoxAndEndsItsCommandWhenItIsInterrupted) {
  const std::string unlike_any_other = "3" + std::to_string(getpid()) + ".25";
  write("walk.play", "box qe2\nhands \"when led /PSU#3 on\"\nstart sleep " + unlike_any_other + "\nexit 0\n");
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
    terminal::BackgroundProgram player(command({"walk.play"}));
    ASSERT_TRUE(eventually([&] { return runs(unlike_any_other); })) << player.output();
    kill(player.pid(), signal);
    EXPECT_EQ(player.wait(20s), 128 + signal);
    EXPECT_FALSE(runs(unlike_any_other));
    EXPECT_FALSE(runs("when led /PSU#3 on"));
    EXPECT_TRUE(fs::is_empty(scratch_ / "boxes"));
  }
}

TEST_F(PlayVerb, TakesItsTechniciansAndItsCommandAlongWhenItIsKilled) {
  const std::string unlike_any_other = "5" + std::to_string(getpid()) + ".25";
  const std::string hands = "when text /tmp/" + unlike_any_other + " ready; pull /PSU#3";
  write("walk.play", "box qe2\nhands \"" + hands + "\"\nstart sleep " + unlike_any_other + "\nexit 0\n");
  terminal::BackgroundProgram player(command({"walk.play"}));
  ASSERT_TRUE(eventually([&] { return runs(hands) && runs(unlike_any_other); })) << player.output();
  player.kill();
  EXPECT_TRUE(eventually([&] { return !runs(hands); }));
  EXPECT_TRUE(eventually([&] { return !runs(unlike_any_other); }));
}

TEST_F(PlayVerb, RemovesWhatAKilledPlayHasLeftAndNothingElse) {
  const std::string unlike_any_other = "6" + std::to_string(getpid()) + ".25";
  write("walk.play", "box qe2\nstart sh -c \"setsid sleep " + unlike_any_other + " & read x\"\nexit 0\n");
  terminal::BackgroundProgram killed(command({"walk.play"}));
  ASSERT_TRUE(eventually([&] { return runs(unlike_any_other); })) << killed.output();
  killed.kill();
  EXPECT_FALSE(fs::is_empty(scratch_ / "boxes"));
  fs::create_directories(scratch_ / "kept/box");
  fs::create_directory_symlink(scratch_ / "kept", scratch_ / "boxes/spbox-play.link");
  write("boxes/spbox-play.file", "somebody's");

  EXPECT_EQ(play("box qa\n").exit_status, 0);
  EXPECT_FALSE(runs(unlike_any_other));
  std::set<std::string> left;
  for (const auto &entry : fs::directory_iterator(scratch_ / "boxes")) left.insert(entry.path().filename());
  EXPECT_EQ(left, (std::set<std::string>{"spbox-play.file", "spbox-play.link"}));
  EXPECT_TRUE(fs::exists(scratch_ / "kept/box"));
}

// More folders in one another than a play has descriptors.
TEST_F(PlayVerb, RemovesAllThatItsCommandLeft) {
  write("walk.play", "box qa\nstart sh -c \"cd /tmp; for i in $$(seq 60); do mkdir d; cd d; done\"\nexit 0\n");
  Words words{"sh", "-c", "ulimit -n 40; exec \"$@\"", "sh"};
  const Words played = command({"walk.play"});
  words.insert(words.end(), played.begin(), played.end());
  const Done done = run_to_end(words);
  EXPECT_EQ(done.exit_status, 0) << done.output;
  EXPECT_TRUE(fs::is_empty(scratch_ / "boxes"));
}

TEST_F(PlayVerb, SaysWhereTheFolderForTemporaryFilesIsNone) {
  write("walk.play", "box qa\n");
  const std::string script = (scratch_ / "walk.play").string();
  const Done none = run_to_end({"/usr/bin/env", "TMPDIR=/no/such", SPBOX, "play", script});
  EXPECT_EQ(none.exit_status, 1);
  EXPECT_TRUE(none.output.starts_with("spbox: cannot make a folder for the box: /no/such/spbox-play.")) << none.output;
  EXPECT_EQ(run_to_end({"/usr/bin/env", "TMPDIR=", SPBOX, "play", script}).exit_status, 0) << "as good as none";
}

TEST_F(PlayVerb, LeavesTheBoxOfAnotherPlayThatIsAlive) {
  write("other.play",
        "box qe2\nstart sh -c \"touch /tmp/begun; until test -e /tmp/end; do sleep 0.02; done\"\nexit 0\n");
  terminal::BackgroundProgram other(command({"other.play"}));
  fs::path box;
  ASSERT_TRUE(eventually([&] {
    for (const auto &entry : fs::directory_iterator(scratch_ / "boxes")) box = entry.path() / "box";
    return fs::exists(box / "tmp/begun");
  })) << other.output();
  EXPECT_EQ(play("box qa\n").exit_status, 0);
  std::ofstream(box / "tmp/end") << "";
  EXPECT_EQ(other.wait(20s), 0) << other.output();
}

TEST_F(PlayVerb, EndsWhatHasLeftTheCommandsSession) {
  const std::string unlike_any_other = "4" + std::to_string(getpid()) + ".25";
  const auto done = play("box qe2\nstart sh -c \"setsid sleep " + unlike_any_other +
                         " >/dev/null 2>&1 & until grep -qx sleep /proc/$$!/comm; do :; done\"\nexit 0\n"
                         "patience 0\nin_order\n");
  EXPECT_EQ(done.exit_status, 1);
  EXPECT_NE(done.output.find("    sleep still runs\n"), std::string::npos) << done.output;
  EXPECT_FALSE(runs(unlike_any_other));
  EXPECT_TRUE(fs::is_empty(scratch_ / "boxes"));
}

// The box is gone when somebody reads it.
TEST_F(PlayVerb, AdvisesStepsOfAPlayWhereTheBoxIsItsOwn) {
  expect_done(
      "box qe2\nspbox break /PSU#3 --missing\nsays \"`spbox mend current_psu_info` restores it.\"\n"
      "start sh -c \"echo [$$SPBOX_RUN]\"\nwait \"[]\"\nexit 0\n");
  expect_done("box qe2\nstart sh -c \"echo [$$SPBOX_RUN]\"\nwait \"run \"\nexit 0\n", {"--box", "mine"});
  EXPECT_NE(play("box qe2\nspbox pull /PSU#3\nspbox show /BP\n").output.find("`spbox units` lists them."),
            std::string::npos);
}

TEST_F(PlayVerb, KeepsABoxThatItWasAskedFor) {
  expect_done("box qe2\nspbox pull /PSU#3\n", {"--box", "mine"});
  expect_done("spbox show /PSU#3\nsays \"Not installed\"\n", {"--box", "mine"});
  const auto done = play("box qa\n", {"--box", "mine"});
  EXPECT_EQ(done.exit_status, 1);
  EXPECT_NE(done.output.find("is a box of model qe2. Give one of model qa"), std::string::npos) << done.output;
  EXPECT_EQ(play("spbox show /PSU#3\nsays \"Faulted\"\n", {"--box", "mine"}).exit_status, 1);
  EXPECT_TRUE(fs::exists(scratch_ / "mine/mgb"));
}

struct Nonsense {
  const char *says;
  const char *script;
  Words words;
  const char *told;
};

TEST_F(PlayVerb, RefusesWhatMakesNoSenseBeforeTheFirstStep) {
  const Nonsense rows[] = {
      {"an unknown step",
       "box qe2\nsay \"begun\"\njump\n",
       {},
       "spbox: walk.play:3: `jump`: there is no step \"jump\"; there are "},
      {"a verb that does not work on a box",
       "box qe2\nspbox run ls\n",
       {},
       "spbox: walk.play:2: `spbox run ls`: \"run\" is not a verb that works on a box; those are units, "
       "show, watch, status, pull, insert, fault, degrade, repair, technician, program, daemon, break, mend, heal, "
       "edit, "
       "times, model, deviate, points, trace, log, dump\n"},
      {"a verb without its words",
       "box qe2\nspbox pull\n",
       {},
       "spbox: walk.play:2: `spbox pull`: UNIT is missing, as in `spbox pull [OPTIONS] UNIT...`.\n"},
      {"an option that the verb lacks",
       "box qe2\nspbox show /PSU#3 --jsno\n",
       {},
       "spbox: walk.play:2: `spbox show /PSU#3 --jsno`: `spbox show` has no option --jsno. Did you mean `--json`?\n"},
      {"words that do not go together",
       "box qe2\nspbox daemon late\n",
       {},
       "spbox: walk.play:2: `spbox daemon late`: how late? Give seconds, as in `spbox daemon --delay 5`.\n"},
      {"a technician's step",
       "box qe2\nhands \"juggle\"\n",
       {},
       R"(spbox: walk.play:2: `hands "juggle"`: step 1: `juggle`: there is no step "juggle"; there are after,)"},
      {"a script without a box",
       "say \"begun\"\n",
       {},
       "spbox: walk.play makes no box. Write `box qe1`, for example, or play it"},
      {"a folder that is no box",
       "say \"begun\"\n",
       {"--box", "boxes"},
       "spbox: boxes is not a box, and walk.play makes none. Write `box qe1`, for example, or make one with "
       "`spbox create boxes --model MODEL`."},
      {"a picture of a play without screens",
       "box qe2\n",
       {"--picture", "walk.svg"},
       "spbox: walk.play shows no screen to be drawn. Write "},
      {"a value without a name",
       "box qe2\n",
       {"PSU#3"},
       "spbox: \"PSU#3\" gives no value: write NAME=VALUE. `spbox help play` says more.\n"},
      {"a word that a terminal would obey",
       "box qe2\n\033c\n",
       {},
       R"(spbox: walk.play:2: `\x1bc`: there is no step "\x1bc")"},
      {"an unknown option", "box qe2\nsay \"begun\"\n", {"--twice"}, "spbox: `spbox play` has no option --twice."},
  };
  for (const Nonsense &row : rows) {
    const auto done = play(row.script, row.words);
    EXPECT_EQ(done.exit_status, 2) << row.says << ": " << done.output;
    EXPECT_TRUE(done.output.starts_with(row.told)) << row.says << ": " << done.output;
    EXPECT_EQ(done.output.find("begun"), std::string::npos) << row.says << ": " << done.output;
  }
  EXPECT_EQ(run_to_end(command({"nowhere.play"})).output, "spbox: nowhere.play: there is no such file\n");
  EXPECT_EQ(play("play nowhere.play\n").output,
            "spbox: nowhere.play: there is no such file\n  played from walk.play:1\n");
}

TEST_F(PlayVerb, GivesTheScriptValues) {
  expect_done("box qe2\nspbox show $UNIT\nsays \"/PSU#4\"\n", {"UNIT=/PSU#4"});
}

TEST_F(PlayVerb, PlaysAScriptFromStandardInput) {
  write("here.play", "box qa\nstart echo $HERE\nwait \"" + scratch_.path().filename().string() + "\"\nexit 0\njump\n");
  auto words = command({"-"});
  words.insert(words.begin(), {"sh", "-c", "exec \"$@\" <$0", (scratch_ / "here.play").string()});
  EXPECT_TRUE(run_to_end(words).output.starts_with("spbox: standard input:5: `jump`: there is no step \"jump\""));
  words[2] = "head -n 4 $0 | \"$@\"";
  const auto done = run_to_end(words);
  EXPECT_EQ(done.exit_status, 0) << done.output;
}

// A command lies beside the script that starts it, also where that is played by another one, and else where spbox is run.
TEST_F(PlayVerb, StartsCommandsThatLieBesideTheScript) {
  const auto add_command = [&](const char *path, const std::string &says) {
    write(path, "#!/bin/sh\necho " + says + "\n");
    chmod((scratch_ / path).c_str(), 0755);
  };
  fs::create_directories(scratch_ / "plays/parts");
  add_command("plays/greet", "from plays");
  add_command("plays/parts/greet", "from parts");
  add_command("greet", "from here");
  add_command("alone", "alone");
  write("plays/parts/part.play", "start ./greet\nwait \"from parts\"\nexit 0\n");
  write("plays/all.play",
        "box qe2\nstart ./greet\nwait \"from plays\"\nexit 0\nplay parts/part.play\n"
        "start parts/greet\nwait \"from parts\"\nexit 0\nstart ./alone\nwait \"alone\"\nexit 0\n");
  const auto done = run_to_end(command({"plays/all.play"}));
  EXPECT_EQ(done.exit_status, 0) << done.output;
  EXPECT_NE(done.output.find("The operator starts: ./greet\n"), std::string::npos) << done.output;
}

TEST_F(PlayVerb, SignalsTheCommandAndNotSpbox) {
  expect_done(
      "box qe2\nstart sh -c \"trap 'echo got it' USR1; echo up; while :; do sleep 0.05; done\"\nwait \"up\"\n"
      "signal USR1\nwait \"got it\"\nsignal TERM\ndies TERM\nstart sleep 30\nsignal KILL\ndies KILL\nin_order\n");
}

TEST_F(PlayVerb, CutsTheLineOfACommand) {
  expect_done("box qe2\nstart sleep 30\nhangup\ndies HUP\nin_order\n");
}

TEST_F(PlayVerb, LetsATechnicianWorkBesideTheOperator) {
  expect_done(
      "box qe2\nhands \"when led /PSU#3 blink; pull /PSU#3\"\nstart /mgb/bin/ctlled -u /PSU#3 -c blink\nexit 0\n"
      "handsdone\nspbox show /PSU#3\nsays \"Not installed\"\n");
}

TEST_F(PlayVerb, StopsAtOnceWhereATechnicianDoesNotKnowAUnit) {
  const std::string hands = "hands \"after 30; pull /PSU#99\"";
  const auto told = play("box qe2\n" + hands + "\nsay \"begun\"\n");
  EXPECT_EQ(told.exit_status, 2);
  EXPECT_EQ(told.output,
            "spbox: walk.play:2: `" + hands + "`: step 2: `pull /PSU#99`: a server of model qe2 has no unit /PSU#99\n");
  expect_done("box qe2\n", {"--box", "mine"});
  const auto done = play(hands + "\nsay \"begun\"\n", {"--box", "mine"});
  EXPECT_EQ(done.exit_status, 1);
  EXPECT_NE(done.output.find("walk.play:1: `" + hands + "`: the technician gave up."), std::string::npos)
      << done.output;
  EXPECT_NE(done.output.find("has no unit /PSU#99"), std::string::npos) << done.output;
}

TEST_F(PlayVerb, WritesTraceAndLogBehindTheTranscriptAlsoOfAFailure) {
  const auto done = play("box qe2\nsay \"begun\"\nspbox fault /PSU#3\nsays \"Normal\"\n", {"--transcript", "walk.txt"});
  EXPECT_EQ(done.exit_status, 1);
  const auto text = text_of("walk.txt");
  EXPECT_TRUE(text.starts_with("A box of model qe2.\n\nbegun\n\nThe technician: spbox fault /PSU#3\n")) << text;
  EXPECT_NE(text.find("walk.play:4: `says \"Normal\"`: spbox said something else:\n"), std::string::npos) << text;
  EXPECT_TRUE(
      text.ends_with("==== The trace\n\nThe trace is empty: the library has recorded nothing in this box yet.\n\n"
                     "==== The log\n\nThe log is empty.\n\n"))
      << text;
}

TEST_F(PlayVerb, SaysThatTheTranscriptCannotBeWrittenBeforeTheFirstStep) {
  const auto done = play("box qe2\nsay \"begun\"\n", {"--transcript", "boxes"});
  EXPECT_EQ(done.exit_status, 2);
  EXPECT_EQ(done.output, "spbox: the transcript boxes cannot be written: Is a directory\n");
}

TEST_F(PlayVerb, SaysThatThePictureCannotBeWrittenBeforeTheFirstStep) {
  const auto done = play("box qe2\nstart true\nexit 0\nscreen \"begun\"\n", {"--picture", "no/such/folder.svg"});
  EXPECT_EQ(done.exit_status, 2);
  EXPECT_EQ(done.output, "spbox: the picture no/such/folder.svg cannot be written: No such file or directory\n");
}

TEST_F(PlayVerb, LeavesThePictureOfAnEarlierPlayWhereAStepFails) {
  const std::string script = "box qe2\nstart true\nexit 3\nscreen \"the end\"\n";
  write("kept.svg", "kept");
  EXPECT_EQ(play(script, {"--picture", "kept.svg"}).exit_status, 1);
  EXPECT_EQ(text_of("kept.svg"), "kept");
  EXPECT_EQ(play(script, {"--picture", "new.svg"}).exit_status, 1);
  EXPECT_FALSE(fs::exists(scratch_ / "new.svg"));
}

TEST_F(PlayVerb, DrawsTheSamePictureOfTheSamePlay) {
  const std::string script =
      "box qe2\nstart sh -c \"echo 'a < b'; read x\"\nwait \"a < b\"\nscreen \"a & b\"\ntype \"1\\n\"\nexit 0\n"
      "screen \"the end\"\n";
  expect_done(script, {"--picture", "one.svg"});
  expect_done(script, {"--picture", "two.svg"});
  EXPECT_EQ(text_of("one.svg"), text_of("two.svg"));
  EXPECT_NE(text_of("one.svg").find(">a &lt; b</text>"), std::string::npos) << text_of("one.svg");
}

TEST_F(PlayVerb, KeepsAPageAndARecordingAlsoOfAFailure) {
  const auto done = play(
      "box qe2\nstart sh -c \"printf '\\e[31mred\\e[0m <b>\\n'; /mgb/bin/ctlled -u /PSU#0 -c blink; echo lit; read "
      "x\"\n"
      "wait \"lit\"\nspbox fault /PSU#1\npatience 0.1\nwait \"never\"\n",
      {"--report", "walk.html", "--cast", "walk.cast"});
  EXPECT_EQ(done.exit_status, 1);
  const std::string page = text_of("walk.html"), cast = text_of("walk.cast");
  const auto has = [&](const std::string &text) { return page.find(text) != std::string::npos; };
  EXPECT_TRUE(has("<article id=\"step-6\" class=\"wrong\" aria-label=\"Step 6 of 6, which failed, at ")) << page;
  EXPECT_TRUE(has("&quot;never&quot; did not come up in 0.1 s")) << page;
  EXPECT_TRUE(has("<span class=\"c1\">red</span> &lt;b&gt;\n")) << page;
  EXPECT_TRUE(has("<p class=\"deed\">The technician: spbox fault /PSU#1</p>")) << page;
  EXPECT_TRUE(has("PSU 0") && has("1F")) << "the server: " << page;
  EXPECT_TRUE(has("ctlled: starts: ctlled -u /PSU#0 -c blink</li>")) << page;
  EXPECT_EQ(page.find("As at the step before."), page.find("As at the step before.", page.find("step-2"))) << page;
  EXPECT_TRUE(cast.starts_with("{\"version\": 2, \"width\": 80, \"height\": 24, \"title\": \"walk.play\"")) << cast;
  EXPECT_NE(cast.find("\\u001b[31mred\\u001b[0m <b>\\r\\n"), std::string::npos) << cast;
  EXPECT_TRUE(fs::is_empty(scratch_ / "boxes"));
}

TEST_F(PlayVerb, KeepsThePageOfAPlayThatIsInterrupted) {
  write("walk.play", "box qe2\nstart sleep 60\npause 60\n");
  terminal::BackgroundProgram playing(command({"walk.play", "--report", "walk.html"}));
  ASSERT_TRUE(eventually([&] { return playing.output().find("starts: sleep 60") != std::string::npos; }));
  kill(playing.pid(), SIGTERM);
  playing.wait(20s);
  EXPECT_NE(text_of("walk.html").find("The play was interrupted here."), std::string::npos);
}

TEST_F(PlayVerb, SaysThatAPageCannotBeWrittenBeforeTheFirstStep) {
  for (const auto &[option, what] : {std::pair("--report", "report"), std::pair("--cast", "recording")}) {
    const auto done = play("box qe2\nsay \"begun\"\n", {option, "no/such/file"});
    EXPECT_EQ(done.exit_status, 2);
    EXPECT_EQ(done.output,
              std::string("spbox: the ") + what + " no/such/file cannot be written: No such file or directory\n");
  }
}

TEST_F(PlayVerb, DrawsTheServerBesideTheScreen) {
  expect_done("box qe2\nspbox fault /PSU#3\nstart true\nexit 0\nscreen \"the end\"\n",
              {"--picture", "one.svg", "--server"});
  const std::string svg = text_of("one.svg");
  EXPECT_NE(svg.find("PSU 0"), std::string::npos) << svg;
  EXPECT_NE(svg.find("3F"), std::string::npos) << svg;
  EXPECT_EQ(svg.find("At work"), std::string::npos) << "it would differ from play to play";
}

TEST_F(PlayVerb, HelpHasEveryStep) {
  const auto help = run_to_end({SPBOX, "play", "--help"});
  EXPECT_EQ(help.exit_status, 0);
  for (const auto &row : play::step_rows()) {
    EXPECT_NE(help.output.find("  " + std::string(row.written)), std::string::npos) << row.written;
  }
}

}  // namespace
