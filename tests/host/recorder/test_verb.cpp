// spbox record as an author uses it: at a terminal, and at a second one.
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>

#include "host/box/hardware.h"
#include "host/terminal/terminal.h"
#include "tests/eventually.h"
#include "tests/host/box/scratch.h"
#include "tests/run.h"

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using terminal::Ending;
using terminal::Mode;
using Words = std::vector<std::string>;

constexpr auto kSoon = 20s;

class Record : public testing::Test {
 protected:
  // spbox in the folder where the box is called "box" and the play "by_hand.play".
  Words spbox_words(const Words &words) const {
    Words all{"/usr/bin/env", "-C", scratch_.path(), std::string("PATH=") + PROCEDURES + ":/usr/bin:/bin", SPBOX};
    all.insert(all.end(), words.begin(), words.end());
    return all;
  }
  Done spbox(const Words &words) const { return run_to_end(spbox_words(words)); }
  void done(const Words &words) const {
    const Done result = spbox(words);
    EXPECT_EQ(result.exit_status, 0) << words.front() << ": " << result.output;
  }
  void make_box(const std::string &model) const { done({"create", "box", "--model", model}); }

  void start(const Words &command) {
    Words words{"record", "box", "-o", "by_hand.play", "--speed", "50", "--"};
    words.insert(words.end(), command.begin(), command.end());
    author_.start(spbox_words(words));
  }

  // The author waits for a text, and types.
  void answers(const std::string &text, const std::string &keys) {
    ASSERT_TRUE(author_.wait_for_new(text, kSoon)) << text << screen();
    ASSERT_TRUE(author_.type(keys));
  }
  void sees(const std::string &text) { ASSERT_TRUE(author_.wait_for_new(text, kSoon)) << text << screen(); }
  void ends(int status = 0) {
    EXPECT_EQ(author_.wait_for_exit(kSoon), (Ending{false, status})) << screen();
    EXPECT_EQ(author_.mode(), (Mode{true, true, true}));
    EXPECT_FALSE(fs::exists(scratch_ / "box/mgb/lib/recorder"));
  }
  std::string screen() {
    std::string text;
    for (const auto &line : author_.everything_shown()) text += "\n" + line;
    return text;
  }

  // Without its patience, which a busy machine makes longer.
  std::string play() const {
    std::ifstream file(scratch_ / "by_hand.play");
    const std::string script(std::istreambuf_iterator<char>(file), {});
    return std::regex_replace(script, std::regex("\npatience [0-9]+\n"), "\n");
  }
  void passes_when_played() const {
    const Done played = spbox({"test", "--speed", "full", "by_hand.play"});
    EXPECT_EQ(played.exit_status, 0) << played.output << play();
  }

  Scratch scratch_;
  terminal::Terminal author_;
};

// The pager takes single keys, and what is typed wrongly is mended before the line goes off.
TEST_F(Record, WritesTheReplacementOfABoardAsAPlay) {
  make_box("qe3");
  done({"fault", "box", "/CMU#2"});
  start({"replace_unit", "cmu"});
  answers("q to give up:", "34\177\r");
  answers("--More--", "q");
  answers("Type 1 or 2", "1\r");
  sees("Pull out /CMU#2 now.");
  done({"pull", "box", "/CMU#2"});
  done({"units", "box"});
  ASSERT_TRUE(author_.type("1\r"));
  sees("Put in /CMU#2 now.");
  done({"insert", "box", "/CMU#2"});
  ASSERT_TRUE(author_.type("1\r"));
  answers("--More--", "q");
  ends();
  EXPECT_EQ(play(), R"(box qe3
spbox fault /CMU#2

start replace_unit cmu
wait "Which CPU/memory unit do you replace?"
type "3\n"
wait "--More--"
type "q"
wait "How is the board of /CMU#2 to be used?"
type "1\n"
wait "Pull out /CMU#2 now."
spbox pull /CMU#2
type "1\n"
wait "Put in /CMU#2 now."
spbox insert /CMU#2
type "1\n"
wait "--More--"
type "q"
wait "/CMU#2 is replaced."
exit 0
in_order
spbox log
says "unit replaced"
)");
  passes_when_played();
}

TEST_F(Record, WritesTheRemovalOfAPowerSupplyAsAPlay) {
  make_box("qe1");
  start({"remove_unit", "psu"});
  answers("q to give up:", "4\r");
  sees("Pull out /PSU#3 now.");
  done({"pull", "box", "/PSU#3"});
  ASSERT_TRUE(author_.type("1\r"));
  ends();
  EXPECT_TRUE(
      play().ends_with("wait \"/PSU#3 is removed.\"\nexit 0\nin_order but /PSU#3\nspbox log\n"
                       "says \"unit removed\"\n"))
      << play();
  passes_when_played();
}

// A board that mirrors its memory: no verb of spbox makes it.
TEST_F(Record, WritesHowAUnitIsAddedToABoxThatIsNotAsNew) {
  make_box("qb2");
  box::Hardware(box::Place(scratch_ / "box")).set_mirrored(1, true);
  done({"pull", "box", "/PSU#3"});
  start({"add_unit", "psu"});
  answers("q to give up:", "4\r");
  sees("Put in /PSU#3 now.");
  done({"insert", "box", "/PSU#3"});
  ASSERT_TRUE(author_.type("1\r"));
  ends();
  EXPECT_EQ(play(),
            "box qb2 by_hand.dump\n\nstart add_unit psu\n"
            "wait \"Which power supply do you add?\"\ntype \"4\\n\"\n"
            "wait \"Put in /PSU#3 now.\"\nspbox insert /PSU#3\ntype \"1\\n\"\n"
            "wait \"/PSU#3 is added.\"\nexit 0\nin_order\nspbox log\nsays \"unit added\"\n");
  passes_when_played();
}

TEST_F(Record, WritesWhatIsNotInOrderBehindACommand) {
  make_box("qb1");
  done({"program", "box", "ctlled", "--delay", "2"});
  start({"fan_check"});
  answers("Which fan tray do you check?", "2\r");
  sees("Type 1 or 2");
  done({"program", "box", "ctlfan", "--exit", "219"});
  EXPECT_EQ(spbox({"pull", "box", "/PSU#99"}).exit_status, 1);
  done({"technician", "box", "--do", "after 0.1; fault /PSU#0"});
  ASSERT_TRUE(author_.type("1\r"));
  ends();
  EXPECT_EQ(play(),
            "box qb1\nspbox program ctlled --delay 2\n\nstart fan_check\n"
            "wait \"Which fan tray do you check?\"\ntype \"2\\n\"\nwait \"Type 1 or 2, q to give up:\"\n"
            "spbox program ctlfan --exit 219\nhands \"after 0.1; fault /PSU#0\"\ntype \"1\\n\"\n"
            "wait \"/mgb/bin/ctlfan -c low\"\nexit 1\n# Not all was in order then:\n"
            "# - the fans run at speed \"high\"\nspbox log\nsays \"LED, maintenance flag or fans left switched\"\n");
  passes_when_played();
}

TEST_F(Record, WritesCtrlCAsAKey) {
  make_box("qb1");
  start({"fan_check"});
  answers("Which fan tray do you check?", "\003");
  ends();
  EXPECT_NE(play().find("wait \"Which fan tray do you check?\"\ntype \"\\003\"\n"), std::string::npos) << play();
  EXPECT_NE(play().find("dies INT\nin_order\n"), std::string::npos) << play();
  passes_when_played();
}

// Ctrl-Z stops the command and its recorder; the author's shell lets both go on.
TEST_F(Record, StopsAndGoesOnWithItsCommand) {
  make_box("qa");
  start({"sh", "-c", "echo begun; read word; echo got $word; stty size; read word"});
  answers("begun", "\032");
  ASSERT_TRUE(eventually([&] { return author_.take_stop(); }));
  EXPECT_EQ(author_.mode(), (Mode{true, true, true}));
  author_.resize({30, 100});
  author_.go_on();
  ASSERT_TRUE(eventually([&] { return !author_.mode().lines; }));
  ASSERT_TRUE(author_.type("one\r"));
  answers("30 100", "\004");
  ends();
  EXPECT_NE(play().find("wait \"begun\"\ntype \"\\032\"\nresize 30 100\n"
                        "signal CONT\ntype \"one\\n\"\nwait \"got one\"\ntype \"\\004\"\n"),
            std::string::npos)
      << play();
  passes_when_played();
}

// Killed as the system does it when it goes down, and by a terminal that is gone.
class RecordCutOff : public Record, public testing::WithParamInterface<int> {};

TEST_P(RecordCutOff, KeepsWhatItHasAndLeavesTheTerminalWhole) {
  make_box("qb1");
  start({"fan_check"});
  answers("Which fan tray do you check?", "2\r");
  sees("Type 1 or 2");
  kill(author_.process("spbox").value(), GetParam());
  EXPECT_EQ(author_.wait_for_exit(kSoon), (Ending{true, GetParam()})) << screen();
  EXPECT_EQ(author_.mode(), (Mode{true, true, true}));
  EXPECT_NE(play().find("type \"2\\n\"\nwait \"Type 1 or 2, q to give up:\"\nhangup\ndies HUP\nin_order\n"),
            std::string::npos)
      << play();
  EXPECT_TRUE(author_.processes().empty());
  passes_when_played();
}

INSTANTIATE_TEST_SUITE_P(Record, RecordCutOff, testing::Values(SIGTERM, SIGHUP, SIGINT));

TEST_F(Record, KeepsWhatItHasWhereItsTerminalIsClosed) {
  make_box("qb1");
  start({"fan_check"});
  answers("Which fan tray do you check?", "2\r");
  sees("Type 1 or 2");
  author_.hang_up();
  EXPECT_EQ(author_.wait_for_exit(kSoon), (Ending{true, SIGHUP}));
  EXPECT_TRUE(play().ends_with("wait \"Type 1 or 2, q to give up:\"\nhangup\ndies HUP\nin_order\n")) << play();
  EXPECT_TRUE(author_.processes().empty());
  EXPECT_FALSE(fs::exists(scratch_ / "box/mgb/lib/recorder"));
}

TEST_F(Record, LosesNothingWhereItIsKilled) {
  make_box("qb1");
  start({"fan_check"});
  answers("Which fan tray do you check?", "2\r");
  sees("Type 1 or 2");
  kill(author_.process("spbox").value(), SIGKILL);
  EXPECT_EQ(author_.wait_for_exit(kSoon), (Ending{true, SIGKILL}));
  EXPECT_TRUE(play().ends_with("type \"2\\n\"\n# The recording broke off here.\n")) << play();
  done({"pull", "box", "/FAN_A#1"});  // Nobody listens.
  author_.start({"stty", "sane"});
  EXPECT_EQ(author_.wait_for_exit(kSoon), (Ending{false, 0}));
  fs::remove(scratch_ / "by_hand.play");
  start({"true"});
  sees("The box has files that the play does not make: /tmp/mainte_procedure.");
  ends();
}

TEST_F(Record, RefusesWhatItCannotDo) {
  make_box("qa");
  const auto refused = [&](const Words &words) {
    author_.start(spbox_words(words));
    EXPECT_EQ(author_.wait_for_exit(kSoon), (Ending{false, 1}));
    std::string said;
    for (const auto &line : author_.screen()) said += line;
    EXPECT_FALSE(fs::exists(scratch_ / "new.play"));
    EXPECT_EQ(author_.mode(), (Mode{true, true, true}));
    return said;
  };
  const struct {
    const char *says;
    Words words;
    const char *told;
  } rows[] = {
      {"a file that is there", {"box", "-o", "here.play", "--", "true"}, "is there already"},
      {"no folder for the file", {"box", "-o", "none/new.play", "--", "true"}, "there is no such folder"},
      {"no box", {"none", "-o", "new.play", "--", "true"}, "none is no box"},
      {"a damaged box", {"torn", "-o", "new.play", "--", "true"}, "torn/mgb/db: cannot read: data.mdb is damage"},
      {"a command that is not found", {"box", "-o", "new.play", "--", "nonesuch"}, "the program nonesuch is not found"},
      {"a command that is no program",
       {"box", "-o", "new.play", "--", "./box"},
       "./box is no program that can be run."},
      {"a program of a machine that is not given",
       {"box", "-o", "new.play", "--", "./of_target"},
       "it is a program of a powerpc. Give --machine powerpc to run"},
      {"a program of another machine than is given",
       {"box", "-o", "new.play", "--machine", "powerpc", "--", "./of_arm"},
       "./of_arm: it is a program of another machine"},
  };
  const auto write_program = [&](const std::string &name, std::string head) {
    std::ofstream(scratch_ / name.c_str()) << head.append(32, '\0');
    fs::permissions(scratch_ / name.c_str(), fs::perms::owner_all);
  };
  write_program("of_target", std::string("\177ELF\1\2\1\0\0\0\0\0\0\0\0\0\0\2\0\x14", 20));
  write_program("of_arm", std::string("\177ELF\1\1\1\0\0\0\0\0\0\0\0\0\2\0\x28\0", 20));
  std::ofstream(scratch_ / "here.play") << "kept";
  done({"create", "torn", "--model", "qa"});
  fs::resize_file(scratch_ / "torn/mgb/db/data.mdb", 5000);
  for (const auto &row : rows) {
    Words words{"record"};
    words.insert(words.end(), row.words.begin(), row.words.end());
    EXPECT_NE(refused(words).find(row.told), std::string::npos) << row.says << screen();
  }
  const Done blind = spbox({"record", "box", "-o", "new.play", "--", "true"});
  EXPECT_EQ(blind.exit_status, 1);
  EXPECT_NE(blind.output.find("there is no terminal"), std::string::npos) << blind.output;
}

// The emulator here is a script, which does as the program: what is run by which emulator is looked at elsewhere.
TEST_F(Record, RunsACommandOfAMachineAndSaysHowItIsPlayed) {
  make_box("qa");
  const Scratch bin;
  std::ofstream(bin / "qemu-ppc") << "#!/bin/sh\nread word; exit 3\n";
  std::ofstream(bin / "of_target") << std::string("\177ELF\1\2\1\0\0\0\0\0\0\0\0\0\0\2\0\x14", 20).append(32, '\0');
  for (const char *name : {"qemu-ppc", "of_target"}) fs::permissions(bin / name, fs::perms::owner_all);
  Words words = spbox_words({"record", "box", "-o", "by_hand.play", "--machine", "powerpc", "--", "of_target"});
  words[3] = "PATH=" + bin.path().string() + ":/usr/bin:/bin";
  author_.start(words);
  sees("is recorded, too.");
  ASSERT_TRUE(author_.type("\r"));
  sees("`spbox test --machine powerpc --speed full by_hand.play`");
  ends();
  EXPECT_NE(play().find("start of_target\n"), std::string::npos) << play();
  EXPECT_NE(play().find("exit 3\n"), std::string::npos) << play();
}

TEST_F(Record, RefusesASecondRecorderInABox) {
  make_box("qa");
  start({"sh", "-c", "echo begun; read word"});
  sees("begun");
  terminal::Terminal other;
  other.start(spbox_words({"record", "box", "-o", "other.play", "--", "true"}));
  EXPECT_EQ(other.wait_for_exit(kSoon), (Ending{false, 1}));
  EXPECT_TRUE(other.shows("a command is recorded in"));
  EXPECT_FALSE(fs::exists(scratch_ / "other.play"));
  ASSERT_TRUE(author_.type("\r"));
  ends();
  passes_when_played();
}

TEST_F(Record, ShowsThePlayWhereItsFileCannotBeWritten) {
  make_box("qa");
  author_.start(spbox_words({"record", "box", "-o", "/dev/full", "--force", "--", "true"}));
  EXPECT_EQ(author_.wait_for_exit(kSoon), (Ending{false, 1}));
  EXPECT_TRUE(author_.shows("start true")) << screen();
  EXPECT_TRUE(author_.shows("/dev/full could not be written: No space left on device.")) << screen();
  box::Hardware(box::Place(scratch_ / "box")).set_mirrored(0, true);
  author_.start(spbox_words({"record", "box", "-o", "/dev/full", "--force", "--", "true"}));
  EXPECT_EQ(author_.wait_for_exit(kSoon), (Ending{false, 1}));
  EXPECT_TRUE(author_.shows("the box is not as new, and beside /dev/full no dump can lie")) << screen();
  EXPECT_FALSE(fs::exists("/dev/full.dump"));
}

}  // namespace
