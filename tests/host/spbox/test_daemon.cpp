#include <sys/prctl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <fstream>
#include <iterator>
#include <sstream>
#include <utility>

#include "host/base/child.h"
#include "host/box/daemon_bend.h"
#include "tests/eventually.h"
#include "tests/host/spbox/read_json.h"
#include "tests/host/spbox/spbox_test.h"

namespace {

using box::DaemonWay;

class Daemon : public SpboxTest {
 protected:
  void SetUp() override { make_box("qa"); }
  box::DaemonBend bend() const { return box::daemon_bend(box::TextDatabase(place())); }

  // The processes of this box's daemons, as a shell in the box finds them: neither itself nor spbox, whose lines have
  // these words, too. Nor is it the bwrap that has started it.
  std::string find_daemon() const {
    return "pgrep -f '^/mgb/lib/[m]onitor_daemon / [0-9]* " + place().root().string() + "$'";
  }
  // The one that was found; 0 for none, and for several.
  static pid_t daemon_in(const std::string &found) {
    std::istringstream words(found);
    pid_t one = 0, other = 0;
    return (words >> one) && !(words >> other) ? one : 0;
  }
  static bool is_gone(pid_t process) { return kill(process, 0) == -1 && errno == ESRCH; }
};

// spbox as a child of this test, which inherits whatever that one leaves behind.
class Abandoned {
 public:
  explicit Abandoned(const base::ArgumentVector &arguments) : spbox_(fork()) {
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    if (spbox_ != 0) return;
    execv(arguments.program(), arguments.data());
    _exit(127);
  }
  ~Abandoned() {
    if (spbox_ > 0 && kill(spbox_, SIGKILL) == 0) waitpid(spbox_, nullptr, 0);
    prctl(PR_SET_CHILD_SUBREAPER, 0);
  }
  Abandoned(const Abandoned &) = delete;
  Abandoned &operator=(const Abandoned &) = delete;

  int kill_spbox() {
    kill(spbox_, SIGKILL);
    return base::exit_status_of(std::exchange(spbox_, 0));
  }
  // Whether a process that was left ends, and how.
  static bool ends(pid_t process, int &status) {
    return eventually([&] { return waitpid(process, &status, WNOHANG) == process; });
  }

 private:
  pid_t spbox_;
};

TEST_F(Daemon, AnswersAndDoesNotRunInANewBox) {
  EXPECT_EQ(done({"daemon", "box"}), "monitor, not running: answers\n");
}

TEST_F(Daemon, IsBentAsAsked) {
  const struct {
    Words words;
    DaemonWay way;
    std::uint32_t seconds;
    const char *says;
  } rows[] = {
      {{"late", "5"}, DaemonWay::kLate, 5, "answers after 5 s"},
      {{"silent"}, DaemonWay::kSilent, 0, "does not answer"},
      {{"dead"}, DaemonWay::kDead, 0, "ends the connection instead of answering"},
      {{"garbled"}, DaemonWay::kGarbled, 0, "answers with messages that are not as long as they say"},
      {{"well"}, DaemonWay::kWell, 0, "answers"},
      {{"--delay", "7"}, DaemonWay::kLate, 7, "answers after 7 s"},
      {{"--silent"}, DaemonWay::kSilent, 0, "does not answer"},
      {{"--dead"}, DaemonWay::kDead, 0, "ends the connection instead of answering"},
      {{"--garbled"}, DaemonWay::kGarbled, 0, "answers with messages that are not as long as they say"},
      {{"--reset"}, DaemonWay::kWell, 0, "answers"},
  };
  for (const auto &row : rows) {
    Words words{"daemon", "box"};
    words.insert(words.end(), row.words.begin(), row.words.end());
    EXPECT_EQ(done(words), "monitor, not running: " + std::string(row.says) + "\n");
    EXPECT_EQ(bend().way, row.way) << row.says;
    EXPECT_EQ(bend().seconds, row.seconds) << row.says;
    done({"daemon", "box"});
    EXPECT_EQ(bend().way, row.way) << "showing changes nothing";
  }
}

TEST_F(Daemon, IsShownToScripts) {
  done({"daemon", "box", "late", "7"});
  const auto shown = ReadJson(done({"daemon", "box", "--json"}));
  EXPECT_EQ(
      shown,
      ReadJson(
          R"({"exit_status": 0, "name": "monitor", "running": false, "said": [], "seconds": 7, "verb": "daemon", "way": "late"})"));
}

TEST_F(Daemon, RefusesWhatMakesNoSense) {
  for (const Words &words :
       {Words{"daemon", "box", "sleepy"}, Words{"daemon", "box", "late"}, Words{"daemon", "box", "silent", "5"},
        Words{"daemon", "box", "late", "0"}, Words{"daemon", "box", "--silent", "--dead"},
        Words{"daemon", "box", "late", "5", "--reset"}}) {
    EXPECT_EQ(spbox(words).exit_status, 2) << words.back();
  }
  refused({"daemon", "elsewhere"});
}

TEST_F(Daemon, RunsAsLongAsTheCommand) {
  const Done seen = in_box({"sh", "-c", "test -S /mgb/run/monitor && " + find_daemon()});
  ASSERT_EQ(seen.exit_status, 0) << seen.output;
  const pid_t daemon = daemon_in(seen.output);
  ASSERT_GT(daemon, 0) << seen.output;
  EXPECT_TRUE(is_gone(daemon));
  EXPECT_FALSE(std::filesystem::exists(place().daemons() / "monitor"));
}

TEST_F(Daemon, IsRunningForOthersToSee) {
  EXPECT_EQ(in_box({"/mgb/lib/spbox", "daemon", "/"}).output, "monitor, running: answers\n");
}

// The next command's daemon takes its turn, and the box is none the worse.
TEST_F(Daemon, IsNotLeftBehindByACommandThatIsKilled) {
  const Done seen = in_box({"sh", "-c", find_daemon() + "; kill -KILL $$"});
  EXPECT_EQ(seen.exit_status, 128 + SIGKILL);
  const pid_t daemon = daemon_in(seen.output);
  ASSERT_GT(daemon, 0) << seen.output;
  EXPECT_TRUE(is_gone(daemon));
  EXPECT_EQ(in_box({"test", "-S", "/mgb/run/monitor"}).exit_status, 0);
}

TEST_F(Daemon, EndsWithASpboxThatIsKilled) {
  const auto found = place().tmp() / "found";
  const std::string script = find_daemon() + " >/tmp/finding; mv /tmp/finding /tmp/found; exec sleep 100";
  Abandoned spbox(base::ArgumentVector({SPBOX, "run", place().root(), "sh", "-c", script}));
  ASSERT_TRUE(eventually([&] { return std::filesystem::exists(found); }));
  std::ifstream in(found);
  const pid_t daemon = daemon_in({std::istreambuf_iterator<char>(in), {}});
  ASSERT_GT(daemon, 0);
  EXPECT_EQ(spbox.kill_spbox(), 128 + SIGKILL);
  int status = -1;
  ASSERT_TRUE(Abandoned::ends(daemon, status));
  EXPECT_EQ(status, 0) << "it ends as if it had been asked to";
  EXPECT_FALSE(std::filesystem::exists(place().daemons() / "monitor"));
  EXPECT_EQ(in_box({"test", "-S", "/mgb/run/monitor"}).exit_status, 0) << "the next one";
}

TEST_F(Daemon, IsReportedWhenItEndsBeforeTheCommand) {
  const Done seen =
      run_to_end({"/bin/sh", "-c",
                  "cd " + scratch_.path().string() +
                      "; " SPBOX " run box -- sh -c 'touch /tmp/ready; until test -e /tmp/go; do sleep 0.02; done' & "
                      "until test -e box/tmp/ready; do sleep 0.02; done; kill -KILL $(" +
                      find_daemon() + "); touch box/tmp/go; wait $!; echo status $?"});
  EXPECT_EQ(seen.output,
            "spbox: the box's daemon ended before the command: signal 9. Requests to it failed from then on.\n"
            "status 0\n");
}

// Of a library that it cannot preload, before anything else.
TEST_F(Daemon, RunsWhateverTheLoaderComplainsOf) {
  const Done seen = run_to_end({"/usr/bin/env", "-C", scratch_.path(), "LD_PRELOAD=/of_another_machine.so", SPBOX,
                                "run", "box", "/mgb/lib/spbox", "daemon", "/"});
  EXPECT_NE(seen.output.find("/of_another_machine.so"), std::string::npos) << seen.output;
  EXPECT_NE(seen.output.find("monitor, running: answers\n"), std::string::npos) << seen.output;
}

TEST_F(Daemon, DoesNotKeepTheCommandFromRunningWhenItCannotStart) {
  std::ofstream(place().daemons()).close();  // a file where its folder should be
  const Done seen = in_box({"true"});
  EXPECT_EQ(seen.exit_status, 0);
  EXPECT_NE(seen.output.find("The command runs without it."), std::string::npos) << seen.output;
  EXPECT_NE(seen.output.find("/mgb/run"), std::string::npos) << "and why: " << seen.output;
}

}  // namespace
