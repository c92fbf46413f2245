// spbox run --recording and spbox replay as somebody uses them who looks for a fault.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <list>

#include "host/recording/recording.h"
#include "host/report/report.h"
#include "host/terminal/terminal.h"
#include "tests/host/box/scratch.h"
#include "tests/host/recording/made_recording.h"
#include "tests/run.h"

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using terminal::Ending;
using Words = std::vector<std::string>;

constexpr auto kSoon = 20s;

class Replay : public testing::Test {
 protected:
  Replay() { fs::create_directory(temporary()); }
  Words spbox_words(const Words &words) const {
    Words all{"/usr/bin/env",
              "-C",
              scratch_.path(),
              std::string("PATH=") + PROCEDURES + ":/usr/bin:/bin",
              "TMPDIR=" + temporary().string(),
              SPBOX};
    all.insert(all.end(), words.begin(), words.end());
    return all;
  }
  fs::path temporary() const { return scratch_ / "temporary"; }
  Done spbox(const Words &words) const { return run_to_end(spbox_words(words)); }
  void done(const Words &words) const {
    const Done result = spbox(words);
    EXPECT_EQ(result.exit_status, 0) << words.front() << ": " << result.output;
  }
  void make_box() const { done({"create", "box", "--model", "qa"}); }

  // Records the test's own command. Where it asks, it needs a terminal, at which somebody types.
  void record(const std::string &calls, const std::string &typed = "", const Words &options = {}) const {
    Words words{"run", "--recording", "fault.rec", "--speed", "full", "box"};
    words.insert(words.begin() + 1, options.begin(), options.end());
    words.emplace_back("--");
    words.emplace_back(CALLER);
    std::istringstream each(calls);
    for (std::string word; each >> word;) words.push_back(word);
    if (typed.empty()) {
      spbox(words);
      return;
    }
    terminal::Terminal terminal;
    terminal.start(spbox_words(words));
    ASSERT_TRUE(terminal.wait_for_new("Which?", kSoon));
    ASSERT_TRUE(terminal.type(typed));
    ASSERT_TRUE(terminal.wait_for_exit(kSoon));
  }
  Done replay(const std::string &calls, const char *caller = CALLER) const {
    Words command{"replay", "fault.rec", "--", caller};
    std::istringstream words(calls);
    for (std::string word; words >> word;) command.push_back(word);
    return spbox(command);
  }
  std::string file() const { return text_of("fault.rec"); }
  std::string text_of(const char *name) const {
    std::ifstream in(scratch_ / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }

  Scratch scratch_;
};

constexpr const char *kCalls =
    "open:2 lock:2 get:2:current_psu_info get:2:absent put:7 unlock:2 close:2 name:0 file:/mgb/cli/etc/cmdtime_qa "
    "file:/absent log:3 daemon mainte:1 ask:Which mainte:0 exit:4";

TEST_F(Replay, GivesACommandTheSameAnswers) {
  make_box();
  record(kCalls, "9\n2\n");
  for (const char *command : {CALLER, WHOLE_CALLER}) {
    const Done same = replay(kCalls, command);
    EXPECT_EQ(same.output, "No difference in 21 calls.\n");
    EXPECT_EQ(same.exit_status, 0);
  }
}

TEST_F(Replay, NamesTheFirstDifferenceWithBothSides) {
  make_box();
  record("open:2 get:2:current_psu_info put:7 log:3 mainte:1 ask:Which close:2 exit:4", "2\n");
  struct Row {
    const char *says, *calls, *told;
  };
  for (const Row &row : std::list<Row>{
           {"another database", "open:3",
            "at call 1 of 8:\n  recorded     scdb_open: database current (2)\n  the command  scdb_open: database local "
            "(3)\n"},
           {"another record", "open:2 get:2:current_iou_info",
            "at call 2 of 8:\n  recorded     scdb_get: record current_psu_info of database current (2)\n  the command  "
            "scdb_get: record current_iou_info of database current (2)\n"},
           {"another call", "open:2 lock:2",
            "at call 2 of 8:\n  recorded     scdb_get: record current_psu_info of database current (2)\n  the command  "
            "scdb_lock: database current (2)\n"},
           {"another content", "open:2 get:2:current_psu_info put:8",
            "at call 3 of 8:\n  recorded     lcmn_scdb_put: record of_the_caller of database current (2), 1 bytes, "
            "with 37 "
            "at byte 0\n  the command  lcmn_scdb_put: record of_the_caller of database current (2), 1 bytes, with 38 "
            "at byte "
            "0\n"},
           {"another event", "open:2 get:2:current_psu_info put:7 log:4",
            "at call 4 of 8:\n  recorded     mgblog_save: an event, with 03000000 at byte 7\n  the command  "
            "mgblog_save: "
            "an event, with 04000000 at byte 7\n"},
           {"another program", "open:2 get:2:current_psu_info put:7 log:3 mainte:0",
            "at call 5 of 8:\n  recorded     ctlmainte: /mgb/bin/ctlmainte -c lock\n  the command  ctlmainte: "
            "/mgb/bin/ctlmainte -c unlock\n"},
           {"another question", "open:2 get:2:current_psu_info put:7 log:3 mainte:1 ask:What",
            "at call 6 of 8:\n  recorded     cli_ask_select: \"Which? \", 3 choices\n  the command  cli_ask_select: "
            "\"What? \", 3 choices\n"},
           {"a call too few", "open:2 get:2:current_psu_info put:7 log:3 mainte:1 ask:Which exit:4",
            "The command ended with exit status 4 before call 8 of 8:\n  recorded     scdb_close: database current "
            "(2)\n"},
           {"a call too many", "open:2 get:2:current_psu_info put:7 log:3 mainte:1 ask:Which close:2 close:2",
            "The command makes a call more than the recording has, which ended after 8 calls:\n  the command  "
            "scdb_close: database current (2)\n"},
           {"another end", "open:2 get:2:current_psu_info put:7 log:3 mainte:1 ask:Which close:2 exit:0",
            "The command makes the same 8 calls, and ends in another way:\n  recorded     exit status 4\n  the command "
            " "
            "exit status 0\n"},
       }) {
    const Done result = replay(row.calls);
    EXPECT_EQ(result.exit_status, 1) << row.says << result.output;
    EXPECT_NE(result.output.find(row.told), std::string::npos) << row.says << ":\n" << result.output;
  }
}

TEST_F(Replay, EndsWhereARecordedCommandWasKilled) {
  make_box();
  record("open:2 close:2 kill");
  const Done result = replay("open:2 close:2 open:3");
  EXPECT_EQ(result.exit_status, 0);
  EXPECT_EQ(result.output,
            "No difference in 2 calls. There the recording ends, in the middle of the recorded command.\n");
}

// A made recording of the test's command.
TEST_F(Replay, GoesOnWhereTheRecordedCommandDid) {
  const MadeRecord question{.kind = LMAINTE_RECORD_QUESTION, .first = 3, .text = "Which? "};
  const MadeRecord answer{.kind = LMAINTE_RECORD_ANSWER, .first = 2, .text = "2"};
  const MadeRecord unlock{.kind = LMAINTE_RECORD_UNLOCK, .first = 2}, close{.kind = LMAINTE_RECORD_CLOSE, .first = 2};
  const MadeRecord end{.kind = LMAINTE_RECORD_END};
  const MadeRecord program{.kind = LMAINTE_RECORD_PROGRAM, .text = "/mgb/bin/ctlmainte -c lock", .pid = 101};
  const MadeRecord file{.kind = LMAINTE_RECORD_FILE_OPEN, .result = -1, .text = std::string(4096, 'a')};
  const std::string long_file = "file:" + std::string(5000, 'a');
  struct Row {
    const char *says;
    std::vector<MadeRecord> records;
    std::string calls, told;
    int exit_status;
  };
  for (const Row &row : std::list<Row>{
           {"a handler's call before the answer",
            {question, unlock, answer, close, end},
            "ask:Which unlock:2 close:2",
            "No difference in 4 calls.\n",
            0},
           {"that call is missing behind the answer",
            {question, unlock, answer, close, end},
            "ask:Which close:2",
            "The command differs from the recording at call 2 of 4:\n  recorded     scdb_unlock: database current "
            "(2)\n",
            1},
           {"no answer", {question, close, end}, "ask:Which close:2", "asked and went on without an answer", 2},
           {"killed at the question",
            {question},
            "ask:Which close:2",
            "No difference in 1 call. There the recording ends, in the middle of the recorded command.\n",
            0},
           {"a program for which it does not wait",
            {program, unlock, close, end},
            "start unlock:2 close:2",
            "No difference in 3 calls.\n",
            0},
           {"the same, and a difference",
            {program, unlock, close, end},
            "start unlock:2 close:3",
            "The command differs from the recording at call 3 of 3:\n",
            1},
           {"a text that the recorder has cut", {file, end}, long_file, "No difference in 1 call.\n", 0},
           {"no end", {unlock}, "unlock:2", "How the recorded command ended is not in the recording.\n", 0},
           {"a lost child, and a difference by a call of a child",
            {{.kind = LMAINTE_RECORD_PROGRAM_END, .first = 102}, unlock, end},
            "child close:2 unlock:2",
            "or its records are missing.\n",
            2},
           {"a lost child, whose call is that of the command itself",
            {{.kind = LMAINTE_RECORD_PROGRAM_END, .first = 102}, unlock, close, end},
            "child unlock:2 unlock:2 close:2",
            "or its records are missing.\n",
            2},
           {"a lost child, and a difference by a call of the command itself",
            {{.kind = LMAINTE_RECORD_PROGRAM_END, .first = 102}, unlock, end},
            "close:2",
            "The command differs from the recording at call 1 of 1:\n",
            1},
           {"a lost child, and a command that ends too early",
            {{.kind = LMAINTE_RECORD_PROGRAM_END, .first = 102}, unlock, close, end},
            "unlock:2",
            "before call 2 of 2:\n",
            1},
       }) {
    MadeRecording made;
    made.begin();
    bool has_child = false;
    for (const MadeRecord &record : row.records) {
      if (record.pid == 101 && !has_child) made.begin_child(101);
      has_child = record.pid == 101;
      made.add(record);
    }
    std::ofstream(scratch_ / "fault.rec", std::ios::binary) << made.bytes;
    const Done result = replay(row.calls);
    EXPECT_EQ(result.exit_status, row.exit_status) << row.says << ":\n" << result.output;
    EXPECT_NE(result.output.find(row.told), std::string::npos) << row.says << ":\n" << result.output;
  }
}

TEST_F(Replay, HangsAsAProgramHungAndIsKilledInTime) {
  make_box();
  done({"program", "box", "ctlmainte", "--hang"});
  record("mainte:1");
  const Done same = replay("mainte:1");
  EXPECT_EQ(same.output, "No difference in 1 call.\n");
  EXPECT_NE(spbox({"replay", "fault.rec", "--errors"}).output.find("is killed by signal "), std::string::npos);
}

TEST_F(Replay, EndsACommandThatMakesNoCallAnyMore) {
  make_box();
  record("open:2");
  const Done silent = spbox({"replay", "fault.rec", "--limit", "1", "--", CALLER, "wait"});
  EXPECT_EQ(
      silent.output,
      "The command made no call for 1 second, and was ended before call 1 of 1:\n  recorded     scdb_open: database "
      "current (2)\n");
  EXPECT_EQ(silent.exit_status, 1);
  EXPECT_TRUE(fs::is_empty(temporary()));
}

TEST_F(Replay, ShowsWhatTheCommandWroteLastAlsoIntoAFile) {
  make_box();
  record("open:2 lock:2");
  EXPECT_NE(replay("open:2 exit:4").output.find("The command wrote last:\n  | open: 0\n"), std::string::npos);
}

TEST_F(Replay, LeavesNothingWhereItIsInterrupted) {
  make_box();
  record("open:2");
  Words words = spbox_words({"replay", "fault.rec", "--", CALLER, "wait"});
  words.insert(std::ranges::find(words, SPBOX), {"/usr/bin/timeout", "--foreground", "-s", "INT", "0.5"});
  EXPECT_EQ(run_to_end(words).exit_status, 124);
  EXPECT_TRUE(fs::is_empty(temporary()));
}

TEST_F(Replay, RefusesACommandThatCannotBeRun) {
  make_box();
  record("open:2");
  std::string head("\177ELF\1\2\1\0\0\0\0\0\0\0\0\0\0\2\0\24", 20);
  head.resize(64);
  std::ofstream(scratch_ / "of_target") << head;
  std::ofstream(scratch_ / "text") << "no program\n";
  fs::permissions(scratch_ / "of_target", fs::perms::owner_all);
  struct Row {
    const char *command, *told;
  };
  for (const Row &row : std::list<Row>{
           {"./absent", "spbox: ./absent is no program that can be run.\n"},
           {"absent", "spbox: the program absent is not found in the folders of PATH.\n"},
           {"./text", "spbox: ./text is no program that can be run.\n"},
           {"./of_target",
            "spbox: ./of_target is a program of the service processor. A command that runs against a recording is the "
            "workstation's, whatever machine was recorded: build it for that.\n"},
       }) {
    const Done refused = spbox({"replay", "fault.rec", "--", row.command});
    EXPECT_EQ(refused.output, row.told);
    EXPECT_EQ(refused.exit_status, 2) << row.command;
  }
  const Done deaf = spbox({"replay", "fault.rec", "--", "true"});
  EXPECT_NE(deaf.output.find("asked for nothing. Is it linked with its platform as a shared library?"),
            std::string::npos);
  EXPECT_EQ(deaf.exit_status, 1);
}

TEST_F(Replay, ShowsWhatWasRecordedInWords) {
  make_box();
  record(kCalls, "2\n");
  const Done shown = spbox({"replay", "fault.rec"});
  EXPECT_EQ(shown.exit_status, 0);
  for (const char *line : {"begins as run 1: ", "database current (2) is locked",
                           "record absent of current (2): LMAINTE_HOST_DB_ABSENT (-4)",
                           "starts: /mgb/bin/ctlmainte -c lock", "ends with exit status 0", "\"Which?\"",
                           "the operator types \"2\": choice 2", "ends with exit status 4", "lmainte_control_mainte"}) {
    EXPECT_NE(shown.output.find(line), std::string::npos) << line << "\n" << shown.output;
  }
  EXPECT_NE(spbox({"replay", "fault.rec", "--calls", "--run", "1"}).output.find("Run 1: "), std::string::npos);
  EXPECT_NE(spbox({"replay", "fault.rec", "--json", "--last", "1"}).output.find("\"steps\": ["), std::string::npos);
  EXPECT_NE(spbox({"replay", "fault.rec", "--run", "9"}).output.find("the recording holds no run `9`."),
            std::string::npos);
  EXPECT_EQ(spbox({"replay", "fault.rec", "--json", "--", CALLER, "open:3"}).exit_status, 1);
  MadeRecording made;
  made.begin();
  made.add({.kind = LMAINTE_RECORD_QUESTION, .first = 2, .text = "Which \x1b[2Jone?"});
  std::ofstream(scratch_ / "made.rec", std::ios::binary) << made.bytes;
  EXPECT_NE(spbox({"replay", "made.rec"}).output.find("Which \\x1b[2Jone?"), std::string::npos);
}

// What no record tells is unknown in the picture: of a new box, all would be well.
TEST_F(Replay, KeepsARecordingAsAPage) {
  make_box();
  done({"fault", "box", "/PSU#1"});
  record(kCalls, "9\n2\n");
  const Done made = spbox({"replay", "fault.rec", "--report", "fault.html"});
  EXPECT_EQ(made.exit_status, 0);
  EXPECT_EQ(made.output, "fault.html shows the recording in 11 steps.\n");
  const std::string page = text_of("fault.html");
  for (const char *line :
       {"The recording fault.rec", "✓ Recorded</span>: 11 steps in ", "<h3>What the operator saw of it</h3>",
        "cli_ask_select: &quot;Which?&quot;", "Which? 9\nWhich? 2\n", "starts: /mgb/bin/ctlmainte -c lock",
        "record of_the_caller of current (2)", "   1?  ", "   1F  "}) {
    EXPECT_NE(page.find(line), std::string::npos) << line;
  }
  EXPECT_NE(spbox({"replay", "fault.rec", "--report", "absent/fault.html"}).output.find("No such file or directory"),
            std::string::npos);
  EXPECT_EQ(spbox({"replay", "fault.rec", "--report", "fault.html", "--", CALLER}).exit_status, 2);
  const std::string before = file();
  fs::create_symlink("fault.rec", scratch_ / "link");
  for (const char *same : {"fault.rec", "link"}) {
    const Done refused = spbox({"replay", "fault.rec", "--report", same});
    EXPECT_EQ(refused.output,
              std::string("spbox: ") + same + " is the recording itself. Give another name for the page.\n");
    EXPECT_EQ(refused.exit_status, 2);
    EXPECT_EQ(file(), before);
  }
}

// A command that asks nothing of the platform, as one that was built without it, and a recording that has reached its bound.
TEST_F(Replay, SaysWhereNothingWasRecorded) {
  make_box();
  const Words run{"run", "--recording", "fault.rec", "box", "true"};
  const Done silent = spbox(run);
  EXPECT_EQ(silent.exit_status, 0);
  EXPECT_EQ(
      silent.output,
      "spbox: Nothing was recorded: the command called nothing of lmainte or its platform, or fault.rec is full.\n");
  EXPECT_EQ(spbox({"run", "--recording", "fault.rec", "box", "--", CALLER, "open:2"}).output, "open: 0\n");
  EXPECT_EQ(spbox(run).output, silent.output) << "it goes on in one that has something";
}

TEST_F(Replay, LeavesOutTheOldestStepsOfALongRecordingAndSaysSo) {
  MadeRecording made;
  made.begin();
  for (std::size_t i = 0; i <= report::kMostSteps; ++i) {
    made.add({.kind = LMAINTE_RECORD_QUESTION, .first = 2, .text = i < 10 ? "Which?" : std::string(200, '?')});
  }
  std::ofstream(scratch_ / "made.rec", std::ios::binary) << made.bytes;
  EXPECT_EQ(spbox({"replay", "made.rec", "--report", "made.html"}).output,
            "made.html shows the recording in 10000 steps. 2 older ones are left out; --run and --since choose.\n");
  const std::string page = text_of("made.html");
  EXPECT_NE(page.find("; 2 older steps left out.</p>"), std::string::npos) << "its beginning, and the first question";
  EXPECT_NE(page.find("??...\n</pre>"), std::string::npos) << "a row that never ends is cut";
  EXPECT_LT(page.size(), 30'000'000U);
}

TEST_F(Replay, GoesOnInARecordingAndAsksWhichRunIsMeant) {
  make_box();
  record("open:2");
  record("open:3");
  EXPECT_EQ(replay("open:3").output,
            "spbox: fault.rec has 2 runs of commands: 1 (caller), 2 (caller). Give one, as in --run last.\n");
  EXPECT_EQ(spbox({"replay", "fault.rec", "--run", "last", "--", CALLER, "open:3"}).exit_status, 0);
  EXPECT_EQ(spbox({"replay", "fault.rec", "--run", "1", "--", CALLER, "open:2"}).exit_status, 0);
}

TEST_F(Replay, LeavesContentsOutOnRequest) {
  make_box();
  record("open:2 get:2:current_psu_info close:2", "", {"--without-contents"});
  EXPECT_EQ(file().substr(0, 17), "without contents\n");
  EXPECT_NE(spbox({"replay", "fault.rec"}).output.find("record current_psu_info of current (2): "), std::string::npos);
  const Done refused = replay("open:2");
  EXPECT_EQ(refused.exit_status, 2);
  EXPECT_EQ(refused.output,
            "spbox: no command can run against fault.rec. The recording was made without contents: it can be "
            "shown, and nothing else.\n");
}

TEST_F(Replay, RefusesWhatCannotBeReadOrWritten) {
  make_box();
  std::ofstream(scratch_ / "text") << "a list of units, and nothing else\n";
  EXPECT_EQ(spbox({"replay", "absent"}).output, "spbox: absent cannot be read: No such file or directory.\n");
  EXPECT_EQ(spbox({"replay", "text"}).exit_status, 2);
  struct Row {
    Words words;
    const char *told;
  };
  for (const Row &row : std::list<Row>{
           {{"--recording", "text"}, "spbox: text is there already, and is no recording. Give another name.\n"},
           {{"--recording", "absent/fault.rec"},
            "spbox: absent/fault.rec cannot be written: No such file or directory.\n"},
           {{"--without-contents"},
            "spbox: --without-contents says what a recording leaves out: give --recording FILE, too. `spbox help run` "
            "says more.\n"},
       }) {
    Words words{"run"};
    words.insert(words.end(), row.words.begin(), row.words.end());
    words.insert(words.end(), {"box", "true"});
    const Done result = spbox(words);
    EXPECT_NE(result.exit_status, 0);
    EXPECT_EQ(result.output, row.told);
  }
  EXPECT_EQ(fs::file_size(scratch_ / "text"), 34u);
}

// Of the 32-bit big-endian machine, answered on this one.
TEST_F(Replay, AnswersFromARecordingOfTheServiceProcessor) {
  const Done same = spbox({"replay", OF_TARGET, "--", "list_units", "psus"});
  EXPECT_EQ(same.exit_status, 0) << same.output;
  const Done other = spbox({"replay", OF_TARGET, "--", "list_units", "fans"});
  EXPECT_EQ(other.exit_status, 1) << other.output;
  EXPECT_NE(other.output.find("recorded     "), std::string::npos) << other.output;
}

// The way of an operator through a procedure, once by hand, and once from the recording.
TEST_F(Replay, WalksThroughAWholeProcedure) {
  make_box();
  done({"fault", "box", "/PSU#1"});
  terminal::Terminal operator_;
  const auto answers = [&](const std::string &text, const std::string &keys) {
    ASSERT_TRUE(operator_.wait_for_new(text, kSoon)) << text;
    ASSERT_TRUE(operator_.type(keys));
  };
  operator_.start(spbox_words({"run", "--speed", "full", "--recording", "fault.rec", "box", "replace_unit", "psu"}));
  answers("q to give up:", "2\n");
  ASSERT_TRUE(operator_.wait_for_new("Pull out /PSU#1 now.", kSoon));
  done({"pull", "box", "/PSU#1"});
  ASSERT_TRUE(operator_.type("1\n"));
  ASSERT_TRUE(operator_.wait_for_new("Put in /PSU#1 now.", kSoon));
  done({"insert", "box", "/PSU#1"});
  ASSERT_TRUE(operator_.type("1\n"));
  ASSERT_EQ(operator_.wait_for_exit(kSoon), (Ending{false, 0}));
  const Done same = spbox({"replay", "fault.rec", "--", "replace_unit", "psu"});
  EXPECT_EQ(same.exit_status, 0) << same.output;
  EXPECT_NE(spbox({"replay", "fault.rec", "--function", "testfru"}).output.find("starts: /mgb/bin/testfru -u /PSU#1"),
            std::string::npos);
}

}  // namespace
