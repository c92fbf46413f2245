#include <csignal>
#include <fstream>
#include <nlohmann/json.hpp>

#include "host/box/daemon_bend.h"
#include "tests/host/spbox/spbox_test.h"

namespace {

using box::DaemonWay;

class Daemon : public SpboxTest {
 protected:
  void SetUp() override { make_box("qa"); }
  box::DaemonBend bend() const { return box::daemon_bend(box::Hardware(place())); }

  // The process of this box's daemon, as a command in the box finds it; 0 without one.
  static pid_t daemon_in(const std::string &output) { return output.empty() ? 0 : std::stoi(output); }
  std::string find_daemon() const { return "pgrep -f 'monitor_daemon " + place().root().string() + " ' || true"; }
};

TEST_F(Daemon, AnswersAndDoesNotRunInANewBox) {
  EXPECT_EQ(done({"daemon", "box"}), "monitor, not running, as no command is in the box: answers\n");
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
  };
  for (const auto &row : rows) {
    Words words{"daemon", "box"};
    words.insert(words.end(), row.words.begin(), row.words.end());
    EXPECT_EQ(done(words), "monitor, not running, as no command is in the box: " + std::string(row.says) + "\n");
    EXPECT_EQ(bend().way, row.way) << row.says;
    EXPECT_EQ(bend().seconds, row.seconds) << row.says;
    done({"daemon", "box"});
    EXPECT_EQ(bend().way, row.way) << "showing changes nothing";
  }
}

TEST_F(Daemon, IsShownToScripts) {
  done({"daemon", "box", "late", "7"});
  const auto shown = nlohmann::json::parse(done({"daemon", "box", "--json"}));
  EXPECT_EQ(shown, nlohmann::json({{"name", "monitor"}, {"running", false}, {"way", "late"}, {"seconds", 7}}));
}

TEST_F(Daemon, RefusesWhatMakesNoSense) {
  for (const Words &words : {Words{"daemon", "box", "sleepy"}, Words{"daemon", "box", "late"},
                             Words{"daemon", "box", "silent", "5"}, Words{"daemon", "box", "late", "0"}}) {
    EXPECT_EQ(spbox(words).exit_status, 2) << words.back();
  }
  refused({"daemon", "elsewhere"});
}

TEST_F(Daemon, RunsAsLongAsTheCommand) {
  const terminal::Done seen = in_box({"sh", "-c", "test -S /mgb/run/monitor && " + find_daemon()});
  ASSERT_EQ(seen.exit_status, 0) << seen.output;
  const pid_t daemon = daemon_in(seen.output);
  ASSERT_GT(daemon, 0);
  EXPECT_EQ(kill(daemon, 0), -1);
  EXPECT_EQ(errno, ESRCH);
  EXPECT_FALSE(std::filesystem::exists(place().daemons() / "monitor"));
}

TEST_F(Daemon, IsRunningForOthersToSee) {
  EXPECT_EQ(in_box({"/mgb/lib/spbox", "daemon", "/"}).output, "monitor, running: answers\n");
}

// The next command's daemon takes its turn, and the box is none the worse.
TEST_F(Daemon, IsNotLeftBehindByACommandThatIsKilled) {
  const terminal::Done seen = in_box({"sh", "-c", find_daemon() + "; kill -KILL $$"});
  EXPECT_EQ(seen.exit_status, 128 + SIGKILL);
  const pid_t daemon = daemon_in(seen.output);
  ASSERT_GT(daemon, 0);
  EXPECT_EQ(kill(daemon, 0), -1);
  EXPECT_EQ(in_box({"test", "-S", "/mgb/run/monitor"}).exit_status, 0);
}

TEST_F(Daemon, IsDoneWithoutWhereItCannotRun) {
  std::ofstream(place().daemons()).close();  // a file where its folder should be
  const terminal::Done seen = in_box({"true"});
  EXPECT_EQ(seen.exit_status, 0);
  EXPECT_NE(seen.output.find("The command runs without it."), std::string::npos) << seen.output;
}

}  // namespace
