#include <algorithm>
#include <map>
#include <sstream>

#include "host/base/quoted.h"
#include "host/spbox/spelling.h"
#include "host/spbox/verbs.h"
#include "include/lmainte.h"
#include "tests/host/spbox/spbox_test.h"

namespace {

namespace fs = std::filesystem;

struct WrongRow {
  Words line;
  const char *says;
};

const WrongRow kWrong[] = {
    {{}, "give a verb, as in `spbox create box --model qe1`. `spbox help` lists the verbs."},
    {{"frob"}, "there is no verb `frob`. `spbox help` lists the verbs."},
    {{"unit", "box"}, "there is no verb `unit`. Did you mean `units`? `spbox help` lists the verbs."},
    {{"craete", "x"}, "there is no verb `craete`. Did you mean `create`? `spbox help` lists the verbs."},
    {{"version"}, "there is no verb `version`. Did you mean `--version`? `spbox help` lists the verbs."},
    {{"help", "frob"}, "there is no verb `frob`. `spbox help` lists the verbs."},
    {{"help", "create", "units"}, "`units` is one word too many for `spbox help VERB`. `spbox help` lists the verbs."},
    {{"--versoin"}, "there is no option --versoin. Did you mean `--version`? `spbox help` lists the verbs."},
    {{"create", "x"},
     "--model is missing, as in `spbox create [OPTIONS] [DIR] --model MODEL`. `spbox help create` says more."},
    {{"create", "x", "--model", "qz"},
     "there is no model `qz`. Give qa, qb1, qb2, qe1, qe2 or qe3. `spbox help create` says more."},
    {{"create", "x", "--model"}, "--model takes a value: --model MODEL. `spbox help create` says more."},
    {{"create", "x", "--model", "qa", "--model", "qb1"}, "--model is given twice. `spbox help create` says more."},
    {{"units"}, "no box is named. Give its folder, set SPBOX to it, or go there. `spbox help units` says more."},
    {{"units", "box", "--jsn"},
     "`spbox units` has no option --jsn. Did you mean `--json`? `spbox help units` says more."},
    {{"units", "box", "--xml=yes"}, "`spbox units` has no option --xml. `spbox help units` says more."},
    {{"units", "box", "--json=yes"}, "--json takes no value. `spbox help units` says more."},
    {{"show", "box"}, "UNIT is missing, as in `spbox show [OPTIONS] [DIR] UNIT`. `spbox help show` says more."},
    {{"show", "box", "/PSU#0", "/PSU#1"},
     "`/PSU#1` is one word too many for `spbox show [OPTIONS] [DIR] UNIT`. `spbox help show` says more."},
    {{"pull", "box"}, "UNIT is missing, as in `spbox pull [OPTIONS] [DIR] UNIT...`. `spbox help pull` says more."},
    {{"run", "box"}, "COMMAND is missing, as in `spbox run [OPTIONS] [DIR] COMMAND...`. `spbox help run` says more."},
    {{"run", "box", "--"},
     "COMMAND is missing, as in `spbox run [OPTIONS] [DIR] COMMAND...`. `spbox help run` says more."},
    {{"run", "box", ""}, "COMMAND is empty. Is a variable not set? `spbox help run` says more."},
    {{"run", "--no-pagr", "box", "ls"},
     "`spbox run` has no option --no-pagr. Did you mean `--no-pager`? `spbox help run` says more."},
    {{"break", "box", "/PSU#0"},
     "how is the record to be broken? Give --missing, --short or --long. `spbox help break` says more."},
    {{"break", "box", "--short"}, "no unit and no record is named. `spbox help break` says more."},
    {{"break", "box", "/PSU#0", "--short", "--long"},
     "--short and --long cannot be given together. `spbox help break` says more."},
    {{"load", "x.dump"},
     "no box is named. Give its folder, set SPBOX to it, or go there. `spbox help load` says more."},
    {{"replay"}, "FILE is missing, as in `spbox replay [OPTIONS] FILE [COMMAND...]`. `spbox help replay` says more."},
    {{"replay", "fault.rec", "--last", "0", "--", "ls"},
     "--last takes a number from 1 to 65536, not `0`. `spbox help replay` says more."},
    {{"dump"}, "no box is named. Give its folder, set SPBOX to it, or go there. `spbox help dump` says more."},
    {{"trace", "box", "--last", "0"}, "--last takes a number from 1 to 65536, not `0`. `spbox help trace` says more."},
    {{"trace", "box", "--last", "many"},
     "--last takes a number from 1 to 65536, not `many`. `spbox help trace` says more."},
    {{"trace", "box", "--last=\x1b[2J"},
     "--last takes a number from 1 to 65536, not `\\x1b[2J`. `spbox help trace` says more."},
    {{"daemon", "box", "late"},
     "how late? Give seconds, as in `spbox daemon box --delay 5`. `spbox help daemon` says more."},
    {{"play", "x", "--box", ""},
     "--box is empty. Is a variable not set? The current folder is a dot. `spbox help play` says more."},
    {{"play", "x", "--speed", ""}, "--speed is empty. Is a variable not set? `spbox help play` says more."},
    {{"play", ""}, "SCRIPT is empty. Is a variable not set? `spbox help play` says more."},
    {{"dump", "box", ""}, "FILE is empty. Is a variable not set? `spbox help dump` says more."},
    {{"pull", "--now", "--", "box", "/PSU#0"}, "`spbox pull` has no option --now. `spbox help pull` says more."},
    {{"create", "--", "new", "--model", "qa"},
     "`--model` is one word too many for `spbox create [OPTIONS] [DIR] --model MODEL`. `spbox help create` says more."},
};

class CommandLine : public SpboxTest {
 protected:
  // The exit status of spbox when what it prints goes to a file that takes nothing, and what it says about it.
  Done into_full_file(const Words &words) const {
    std::string line = "cd " + scratch_.path().string() + " && exec " SPBOX;
    for (const std::string &word : words) line += " " + base::quoted(word);
    return run_to_end({"/bin/sh", "-c", line + " 2>&1 >/dev/full"});
  }
};

TEST_F(CommandLine, ThatMakesNoSenseIsExitStatusTwoAndASentence) {
  make_box("qa");
  for (const WrongRow &row : kWrong) {
    const Done result = spbox(row.line);
    EXPECT_EQ(result.exit_status, 2) << row.says;
    EXPECT_EQ(result.output, "spbox: " + std::string(row.says) + "\n");
  }
}

// As from a shell in which a variable is not set: the current folder is not meant.
TEST_F(CommandLine, WithAnEmptyDirIsRefusedByEveryVerb) {
  write("letter", "dear");
  for (const spbox::Verb &verb : spbox::all_verbs()) {
    Words line{verb.name};
    for (const spbox::Word &word : verb.words) {
      if (word.is_option() && word.need == spbox::Need::kOptional) continue;
      if (word.is_option()) line.push_back(word.name);
      line.push_back(word.name == "DIR" ? "" : word.name == "--model" ? "qa" : "letter");
    }
    if (verb.name == "create") line.push_back("--force");
    if (verb.name == "play") line.insert(line.end(), {"--box", ""});
    if (verb.name == "test") line = {"test", ""};
    if (verb.name == "sweep") line = {"sweep", "letter", "--findings", ""};
    if (verb.name == "daemon") line = {"daemon", ""};
    if (verb.name == "program") line = {"program", ""};
    if (verb.name == "replay") line = {"replay", ""};
    const Done result = spbox(line);
    EXPECT_EQ(result.exit_status, 2) << verb.name;
    EXPECT_NE(result.output.find(" is empty. Is a variable not set?"), std::string::npos) << result.output;
  }
  EXPECT_FALSE(fs::exists(scratch_ / "mgb"));
  EXPECT_TRUE(fs::exists(scratch_ / "letter"));
}

TEST_F(CommandLine, IsAFailureWhereItsOutputCannotBeWritten) {
  make_box("qa");
  done({"dump", "box", "box.dump"});
  write("say.play", "box qa\nsay \"word\"\n");
  const std::vector<Words> lines{{"help"},
                                 {"--version"},
                                 {"units", "--help"},
                                 {"create", "other", "--model", "qa"},
                                 {"units", "box"},
                                 {"units", "box", "--json"},
                                 {"show", "box", "/PSU#0"},
                                 {"pull", "box", "/PSU#0"},
                                 {"technician", "box", "--do", "insert /PSU#0"},
                                 {"play", "say.play"},
                                 {"program", "box"},
                                 {"daemon", "box", "--json"},
                                 {"break", "box"},
                                 {"mend", "box"},
                                 {"points", "box"},
                                 {"watch", "box", "--once"},
                                 {"trace", "box"},
                                 {"trace", "box", "--json"},
                                 {"log", "box"},
                                 {"dump", "box"},
                                 {"load", "box.dump", "third"}};
  for (const Words &line : lines) {
    const Done result = into_full_file(line);
    EXPECT_EQ(result.exit_status, 1) << line.front();
    const bool flushes_itself = line.front() == "technician" || line.front() == "play";
    const char *told = flushes_itself ? "spbox: the output cannot be written"
                                      : "spbox: the output cannot be written: No space left on device.";
    EXPECT_TRUE(result.output.starts_with(told)) << line.front() << result.output;
    EXPECT_EQ(std::count(result.output.begin(), result.output.end(), '\n'), 1) << result.output;
  }
}

// A closed output leaves its descriptor to the next file that is opened, which is one of the box's.
TEST_F(CommandLine, WritesNoOutputIntoTheBox) {
  make_box("qe1");
  const auto sizes = [&] {
    std::map<std::string, std::uintmax_t> all;
    for (const auto &entry : fs::recursive_directory_iterator(scratch_ / "box")) {
      if (entry.is_regular_file()) all[entry.path()] = entry.file_size();
    }
    return all;
  };
  done({"units", "box"});  // which leaves the files of its locks
  const auto before = sizes();
  const Done result =
      run_to_end({"/bin/sh", "-c", "cd " + scratch_.path().string() + " && exec " SPBOX " units box --json >&-"});
  EXPECT_EQ(sizes(), before);
  EXPECT_EQ(result.exit_status, 1);
  EXPECT_EQ(result.output, "spbox: the output cannot be written: Bad file descriptor.\n");
}

// Some programs that start others ignore the ends of their children, and hand that on.
TEST_F(CommandLine, LearnsHowItsChildrenEnd) {
  make_box("qa");
  write("short.play", "box qa\nstart true\nexit 0\n");
  constexpr struct {
    const char *words;
    int exit_status;
  } kRows[] = {
      {"dump box", 0},
      {"run box -- sh -c 'sh -c \"exit 3\"'", 3},
      {"play short.play", 0},
      {"test short.play", 0},
  };
  for (const auto &row : kRows) {
    const Done result = run_to_end(
        {"bash", "-c",
         "cd " + scratch_.path().string() + "; export TMPDIR=$PWD; trap '' CHLD; exec " SPBOX " " + row.words});
    EXPECT_EQ(result.exit_status, row.exit_status) << row.words << ": " << result.output;
  }
}

TEST_F(CommandLine, HelpsWithExamplesForEveryVerb) {
  const std::string all = done({"--help"});
  EXPECT_NE(all.find("spbox create box --model qe1"), std::string::npos);
  EXPECT_EQ(done({"help"}), all);
  EXPECT_EQ(done({"help", "help"}), all);
  EXPECT_EQ(done({"-h"}), all);
  for (const spbox::Verb &verb : spbox::all_verbs()) {
    EXPECT_NE(all.find("\n  " + verb.name + " "), std::string::npos) << verb.name;
    const std::string help = done({verb.name, "--help"});
    EXPECT_NE(help.find("Example"), std::string::npos) << verb.name;
    EXPECT_EQ(done({"help", verb.name}), help);
  }
}

TEST_F(CommandLine, FitsATerminalOf80ColumnsInEveryHelp) {
  std::vector<Words> lines{{"help"}};
  for (const spbox::Verb &verb : spbox::all_verbs()) lines.push_back({"help", verb.name});
  for (const Words &words : lines) {
    std::istringstream help(done(words));
    for (std::string line; std::getline(help, line);) EXPECT_LE(line.size(), 80u) << words.back() << ": " << line;
  }
}

TEST_F(CommandLine, TakesNoWordBehindTwoDashesForAnOption) {
  EXPECT_EQ(done({"create", "--model", "qa", "--", "box"}),
            "Made box: model qa, 20 units, all healthy. `spbox units box` lists them.\n");
  EXPECT_EQ(done({"create", "--model", "qa", "--", "-q"}),
            "Made ./-q: model qa, 20 units, all healthy. `spbox units ./-q` lists them.\n");
  done({"units", "./-q"});
}

// A script that calls spbox for its user says how.
TEST_F(CommandLine, GivesAdviceInTheWordsByWhichItWasCalled) {
  const auto called = [&](const Words &words) {
    Words command{"/usr/bin/env", "-C", scratch_.path(), "SPBOX_CALLED=./dev spbox", SPBOX};
    command.insert(command.end(), words.begin(), words.end());
    return run_to_end(command).output;
  };
  EXPECT_EQ(called({"units", "my box"}),
            "spbox: my box is no box. `./dev spbox create 'my box' --model MODEL` makes one.\n");
  EXPECT_EQ(
      called({"pull", "box"}),
      "spbox: UNIT is missing, as in `./dev spbox pull [OPTIONS] [DIR] UNIT...`. `./dev spbox help pull` says more.\n");
  EXPECT_NE(called({"help"}).find("\n`./dev spbox help VERB` says more.\n"), std::string::npos);
}

TEST_F(CommandLine, TellsTheVersion) {
  const std::string in_the_header = std::to_string(LMAINTE_VERSION_MAJOR) + "." +
                                    std::to_string(LMAINTE_VERSION_MINOR) + "." + std::to_string(LMAINTE_VERSION_PATCH);
  EXPECT_EQ(done({"--version"}), "spbox " + in_the_header + "\n");
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

TEST(Spelling, NamesWhatIsOneOrTwoKeysAway) {
  const Words names{"units", "create", "log", "load"};
  const struct {
    const char *word, *meant;
  } rows[] = {{"unit", "units"},   {"uints", "units"}, {"unitss", "units"},    {"umits", "units"},
              {"crate", "create"}, {"lgo", "log"},     {"laod", "load"},       {"something", ""},
              {"x", ""},           {"", ""},           {"createss", "create"}, {"creations", ""}};
  for (const auto &row : rows) EXPECT_EQ(spbox::nearest(row.word, names), row.meant) << row.word;
}

}  // namespace
