// A box whose files a command has forged: no verb dies of it, and none does more than the command could.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <set>

#include "host/box/data_file.h"
#include "host/box/event_log.h"
#include "host/spbox/damaged_files.h"
#include "host/spbox/verbs.h"
#include "host/terminal/background_program.h"
#include "tests/eventually.h"
#include "tests/host/box/child.h"
#include "tests/host/box/database_test.h"
#include "tests/host/spbox/spbox_test.h"

namespace {

namespace fs = std::filesystem;

class Damage : public SpboxTest {
 protected:
  Damage() { make_box("qa"); }

  fs::path data() const { return place().databases() / "data.mdb"; }

  // As `dd` in the box does.
  void forge(const std::function<void(box::Bytes &)> &change) const {
    box::Bytes bytes = bytes_of_file(data());
    change(bytes);
    std::ofstream(data(), std::ios::binary)
        .write(reinterpret_cast<const char *>(bytes.data()), static_cast<long>(bytes.size()));
  }

  // What every verb says of the damage, in one sentence.
  void expect_of_all(const std::string &damage) const {
    const std::string sentence = "spbox: databases in " + (fs::path("box") / "mgb/db").string() +
                                 ": cannot read: data.mdb is damaged: " + damage +
                                 " Make the box anew, or load a dump of it.\n";
    for (const Words &words :
         {Words{"units", "box"}, Words{"show", "box", "/PSU#0"}, Words{"pull", "box", "/PSU#1"},
          Words{"program", "box"}, Words{"daemon", "box"}, Words{"mend", "box"},
          Words{"break", "box", "/PSU#0", "--short"}, Words{"dump", "box"}, Words{"watch", "box", "--once"},
          Words{"status", "box"}, Words{"heal", "box"}, Words{"edit", "box", "/PSU#0", "0:00"},
          Words{"technician", "box", "--do", "pull /PSU#1"}}) {
      EXPECT_EQ(refused(words), sentence) << words.front();
    }
  }
};

TEST_F(Damage, OfAPageIsNamedByEveryVerb) {
  done({"pull", "box", "/PSU#0"});
  forge([](box::Bytes &bytes) {
    const auto root = static_cast<std::size_t>(bytes[4096 * 0 + 128] | bytes[4096 * 0 + 129] << 8U);
    bytes[root * 4096 + 14] = 0x00;
    bytes[root * 4096 + 15] = 0x10;
  });
  const auto root = static_cast<std::size_t>(bytes_of_file(data())[128]);
  expect_of_all("page " + std::to_string(root) + " is not as it was written.");
}

TEST_F(Damage, OfTheFirstPagesIsNamedByEveryVerb) {
  done({"pull", "box", "/PSU#0"});
  const box::Bytes whole = bytes_of_file(data());
  forge([](box::Bytes &bytes) { bytes[144] = 0; });
  expect_of_all("what was saved last is lost.");
  forge([&](box::Bytes &bytes) { bytes = whole; });
  forge([](box::Bytes &bytes) { bytes[4096 + 144] = 200; });
  expect_of_all("it does not begin as it should.");
}

TEST_F(Damage, OfARecordIsNamedByEveryVerb) {
  forge([](box::Bytes &bytes) {
    const std::string name = "CM-2210";
    for (std::size_t at = 0; at + name.size() < bytes.size(); ++at) {
      if (std::equal(name.begin(), name.end(), bytes.begin() + static_cast<long>(at))) bytes[at] = 'X';
    }
  });
  expect_of_all("its records are not those that were saved.");
}

TEST_F(Damage, ACommandRunsWithoutTheDatabases) {
  forge([](box::Bytes &bytes) { bytes[4096 + 144] = 200; });
  const Done result = shell("/mgb/bin/ctlled -u /PSU#0 -c on; echo $?");
  EXPECT_NE(result.output.find("data.mdb is damaged: it does not begin as it should."), std::string::npos);
  EXPECT_TRUE(result.output.ends_with("The command runs without them.\n8\n")) << result.output;
}

TEST_F(Damage, ABoxThatMayOnlyBeReadIsRead) {
  const std::string box = place().root();
  const auto in_read_only = [&](const Words &words) {
    Words command{"/usr/bin/bwrap", "--dev-bind", "/", "/", "--ro-bind", box, box, "--chdir", scratch_.path(), SPBOX};
    command.insert(command.end(), words.begin(), words.end());
    return run_to_end(command);
  };
  for (const Words &words :
       {Words{"units", "box"}, Words{"show", "box", "/PSU#0"}, Words{"dump", "box"}, Words{"program", "box"},
        Words{"daemon", "box"}, Words{"break", "box"}, Words{"trace", "box"}, Words{"log", "box"},
        Words{"watch", "box", "--once"}, Words{"status", "box"}, Words{"times", "box"}, Words{"model", "box"},
        Words{"edit", "box", "/PSU#0", "--print"}}) {
    const Done result = in_read_only(words);
    EXPECT_EQ(result.exit_status, 0) << words.front() << ": " << result.output;
    EXPECT_EQ(result.output, done(words)) << words.front();
  }
  EXPECT_EQ(in_read_only({"pull", "box", "/PSU#0"}).output,
            "spbox: databases in box/mgb/db: cannot lock database 2: Read-only file system\n");
}

TEST_F(Damage, EveryVerbThatWorksOnABoxActsConfined) {
  for (const spbox::Verb &verb : spbox::all_verbs()) {
    // `dump` writes a file outside, `watch` looks for who is at work, `edit` runs an editor: they read the box in a process of its own.
    // `times` and `model` read no more than small files, and make and remove files, which a confined process must not.
    const std::set<std::string> others{"dump", "watch", "edit", "times", "model"};
    EXPECT_EQ(verb.works_on_box && verb.acts_confined, verb.works_on_box && !others.contains(verb.name)) << verb.name;
  }
}

TEST_F(Damage, AVerbAtWorkIsConfined) {
  terminal::BackgroundProgram hands({SPBOX, "technician", place().root(), "--do", "when led /PSU#0 on"}, -1);
  const fs::path status = "/proc/" + std::to_string(hands.pid()) + "/status";
  EXPECT_TRUE(eventually([&] {
    std::ifstream in(status);
    const std::string text{std::istreambuf_iterator<char>(in), {}};
    return text.find("NoNewPrivs:\t1\n") != text.npos && text.find("Seccomp:\t2\n") != text.npos;
  }));
}

// The folder of the log and the trace may be replaced by a command.
TEST_F(Damage, NoVerbReadsOutsideBehindALink) {
  fs::rename(place().root() / "mgb/log", scratch_ / "log");
  fs::create_directory_symlink(scratch_ / "log", place().root() / "mgb/log");
  EXPECT_EQ(refused({"trace", "box"}), "spbox: trace box/mgb/log/trace: cannot read it: Permission denied\n");
  EXPECT_EQ(refused({"log", "box"}), "spbox: log box/mgb/log/events: cannot read it: Permission denied\n");
  EXPECT_EQ(refused({"watch", "box", "--once"}), "spbox: trace box/mgb/log/trace: cannot read it: Permission denied\n");
}

// What a command records or reports would be lost without a word.
TEST_F(Damage, OfALogIsNamedByWhoeverLooksForDamageOrRunsACommand) {
  const std::string anew = " Make the box anew, or load a dump of it.";
  const auto put_folder = [](const fs::path &file) {
    fs::remove(file);
    fs::create_directory(file);
  };
  const auto put_link = [](const fs::path &file) {
    fs::remove(file);
    fs::create_symlink("/etc/passwd", file);
  };
  const auto put_pipe = [](const fs::path &file) {
    fs::remove(file);
    EXPECT_EQ(mkfifo(file.c_str(), 0600), 0);
  };
  const auto cut_short = [](const fs::path &file) { fs::resize_file(file, 1000); };
  const auto fill_otherwise = [](const fs::path &file) {
    const auto size = fs::file_size(file);
    fs::resize_file(file, 0);
    fs::resize_file(file, size);
  };
  struct DamagedLog {
    fs::path file;
    void (*damage)(const fs::path &);
    std::string sentence;
  };
  const std::string trace = "trace box/mgb/log/trace: cannot keep records: ",
                    calls = "calls box/mgb/log/calls: cannot keep records: ",
                    events = "log box/mgb/log/events: cannot save events: ", no_file = "it is no file." + anew,
                    no_end = "it is damaged: it was cut short or emptied." + anew;
  for (const DamagedLog &row : {DamagedLog{place().trace(), cut_short, trace + no_end},
                                {place().calls(), cut_short, calls + no_end},
                                {place().trace(), fill_otherwise, trace + "the file holds no trace ring"},
                                {place().trace(), put_folder, trace + no_file},
                                {place().calls(), put_link, calls + no_file},
                                {place().trace(), put_pipe, trace + no_file},
                                {place().events(), put_folder, events + no_file},
                                {place().events(), put_link, events + no_file},
                                {place().events(), put_pipe, events + no_file}}) {
    row.damage(row.file);
    EXPECT_NE(done({"status", "box"}).find("\nDamaged  " + row.sentence + "\n"), std::string::npos) << row.sentence;
    EXPECT_EQ(refused({"heal", "box"}), "spbox: " + row.sentence + "\n");
    EXPECT_EQ(done({"run", "--no-pager", "box", "true"}), "spbox: " + row.sentence + "\n");
    done({"create", "box", "--model", "qa", "--force"});
    EXPECT_EQ(done({"heal", "box"}), "Nothing was to be put right.\n") << row.sentence;
  }
}

TEST_F(Damage, ALogThatIsGoneIsNotDamagedForItsNextEntryMakesIt) {
  fs::remove(place().events());
  EXPECT_EQ(done({"heal", "box"}), "Nothing was to be put right.\n");
}

TEST_F(Damage, ThatLeadsLmdbAstrayEndsInWords) {
  const std::string said = scratch_ / "said";
  const auto die_by = [&](int signal, bool in_data_file) {
    return in_child([&] {
      const int out = open(said.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
      dup2(out, STDERR_FILENO);
      std::signal(signal, SIG_DFL);
      spbox::tell_of_damaged_files();
      std::optional<box::InDataFile> here;
      if (in_data_file) here.emplace();
      raise(signal);
      if (signal != SIGABRT) raise(signal);  // as the instruction that led astray would again
      return 0;
    });
  };
  for (const int signal : {SIGSEGV, SIGABRT, SIGFPE, SIGILL}) {
    EXPECT_EQ(die_by(signal, true), 1);
    std::ifstream in(said);
    std::string line;
    std::getline(in, line);
    EXPECT_EQ(line,
              "spbox: the data file of the box is damaged: reading it led astray. Make the box anew, or load a dump of "
              "it.");
  }
  EXPECT_EQ(die_by(SIGSEGV, false), -SIGSEGV) << "an error of another kind stays what it is";
}

}  // namespace
