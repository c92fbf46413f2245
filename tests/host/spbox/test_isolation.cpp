// What a command in a box reaches, and what not.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <fstream>
#include <iterator>

#include "host/base/descriptor.h"
#include "host/box/event_log.h"
#include "host/terminal/terminal.h"
#include "tests/eventually.h"
#include "tests/host/spbox/spbox_test.h"

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

class Isolation : public SpboxTest {
 protected:
  void SetUp() override { make_box("qa"); }

  std::string text_of(const char *name) const {
    std::ifstream file(scratch_ / name);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  std::string scratch(const char *name) const { return (scratch_ / name).string(); }
};

// A place where anybody on this machine can connect.
class Port {
 public:
  Port() {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    EXPECT_EQ(bind(fd_.get(), reinterpret_cast<sockaddr *>(&address), size), 0);
    EXPECT_EQ(listen(fd_.get(), 4), 0);
    EXPECT_EQ(getsockname(fd_.get(), reinterpret_cast<sockaddr *>(&address), &size), 0);
    number_ = std::to_string(ntohs(address.sin_port));
  }
  const std::string &number() const { return number_; }

 private:
  base::Descriptor fd_{socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)};
  std::string number_;
};

// Files.

TEST_F(Isolation, TheDaemonWritesNothingOutsideBehindALinkInPlaceOfTheLog) {
  write("victim", "mine\n");
  const Done tried = shell("ln -sf " + scratch("victim") + " /mgb/log/events && " REACH " log");
  EXPECT_EQ(tried.output, "result 4\n") << "the box failed";
  EXPECT_EQ(text_of("victim"), "mine\n");
}

TEST_F(Isolation, TheDaemonWritesNothingOutsideBehindALinkInPlaceOfTheLogsFolder) {
  fs::create_directory(scratch_ / "elsewhere");
  const Done tried = shell("rm -r /mgb/log && ln -s " + scratch("elsewhere") + " /mgb/log && " REACH " log");
  EXPECT_EQ(tried.output, "result 4\n");
  EXPECT_TRUE(fs::is_empty(scratch_ / "elsewhere"));
}

TEST_F(Isolation, TheNextDaemonMakesNothingOutside) {
  fs::create_directory(scratch_ / "elsewhere");
  EXPECT_EQ(shell("rm -f /mgb/run/.turn; ln -s " + scratch("elsewhere/made") + " /mgb/run/.turn").output, "");
  EXPECT_NE(shell("true").output.find("the box's daemon does not run"), std::string::npos);
  EXPECT_EQ(shell("rm -r /mgb/run && ln -s " + scratch("elsewhere") + " /mgb/run").exit_status, 0);
  EXPECT_NE(shell("true").output.find("the box's daemon does not run"), std::string::npos);
  EXPECT_TRUE(fs::is_empty(scratch_ / "elsewhere"));
}

TEST_F(Isolation, TheDaemonServesAsBefore) {
  EXPECT_EQ(in_box({REACH, "log"}).output, "result 0\n");
  EXPECT_EQ(box::EventLog::read(place().events()).size(), 1U);
}

TEST_F(Isolation, NothingComesInPlaceOfADatabase) {
  for (const char *const line :
       {"ln -s /etc /mgb/db/9", "mv /mgb/db/data.mdb /mgb/other", "ln -sf /etc/passwd /mgb/db/locks",
        "rm /mgb/db/locks", "mv /mgb/db /mgb/other", "touch /mgb/db/more", "mv /mgb/lib /mgb/other"}) {
    EXPECT_NE(shell(line).exit_status, 0) << line;
  }
  EXPECT_EQ(shell("/mgb/bin/ctlled -u /PSU#0 -c on").exit_status, 0);
  done({"pull", "box", "/PSU#0"});
}

TEST_F(Isolation, ABoxThatWasCopiedWithoutItsLockFileWorks) {
  fs::remove(place().databases() / "locks");
  EXPECT_EQ(shell("/mgb/bin/ctlled -u /PSU#0 -c on").exit_status, 0);
}

TEST_F(Isolation, ABoxWhoseDatabasesCannotBeOpenedIsSaidToBeSo) {
  fs::resize_file(place().databases() / "data.mdb", 0);
  const Done result = shell("/mgb/bin/ctlled -u /PSU#0 -c on; echo $?");
  EXPECT_EQ(result.output, "spbox: databases in " + place().databases().string() +
                               ": cannot open: data.mdb is damaged: it is empty. Make the box anew, or load a dump of "
                               "it. The command runs without them.\n8\n");
  EXPECT_EQ(result.exit_status, 0);
}

TEST_F(Isolation, ABoxThatLeadsElsewhereIsRefused) {
  write("victim", "mine\n");
  const struct {
    const char *link, *to;
  } rows[] = {{"mgb/db/locks", "victim"}, {"mgb/db", "box/mgb/log"}, {"tmp", "."}};
  for (const auto &row : rows) {
    const fs::path link = place().root() / row.link, kept = scratch_ / "kept";
    fs::rename(link, kept);
    fs::create_symlink(scratch_ / row.to, link);
    for (const Words &words : {Words{"pull", "box", "/PSU#0"}, Words{"run", "box", "true"}}) {
      EXPECT_EQ(refused(words),
                std::string("spbox: box/") + row.link +
                    " is a link, which may lead out of the box. Put the file or folder itself there.\n");
    }
    fs::remove(link);
    fs::rename(kept, link);
  }
  EXPECT_EQ(text_of("victim"), "mine\n");
  done({"pull", "box", "/PSU#0"});
}

// What a making that died has left is put in its place or removed by the next spbox.
TEST_F(Isolation, AMakingThatLeadsElsewhereIsRefused) {
  const fs::path making = place().root() / ".making", outside = scratch_ / "outside";
  for (const char *const folder : {"new", "whole/tmp", "old/tmp/mine"}) fs::create_directories(outside / folder);
  std::ofstream(outside / "made_by_spbox") << "";
  for (const char *const link : {".making", ".making/new", ".making/whole", ".making/old"}) {
    fs::create_directories(making / "whole/tmp");
    std::ofstream(making / "made_by_spbox") << "";
    const fs::path whole = place().root() / link;
    fs::remove_all(whole);
    fs::create_directory_symlink(whole == making ? outside : outside / whole.filename(), whole);
    for (const Words &words :
         {Words{"units", "box"}, Words{"run", "box", "true"}, Words{"create", "box", "--model", "qa", "--force"}}) {
      EXPECT_EQ(refused(words),
                std::string("spbox: box/") + link + " is a link, which may lead out of the box. Remove it.\n");
    }
    for (const char *const folder : {"new", "whole/tmp", "old/tmp/mine"}) EXPECT_TRUE(fs::exists(outside / folder));
    fs::remove_all(making);
  }
  done({"units", "box"});
}

// The list of mount points names folders of tmp, which a run removes when they are empty.
TEST_F(Isolation, AListOfMountPointsThatLeadsElsewhereTouchesNothing) {
  const fs::path list = place().root() / "mgb/lib/mount_points", outside = scratch_ / "outside";
  fs::create_directories(outside / "empty");
  std::ofstream(list) << (outside / "empty").string() << "\n../../outside/empty\n..\n";
  done({"run", "box", "true"});
  EXPECT_TRUE(fs::exists(outside / "empty"));
  const std::string why = "spbox: " + list.string() + " is no file of a box. Remove it.\n";
  fs::remove(list);
  fs::create_symlink(outside / "list", list);
  EXPECT_EQ(refused({"run", "box", "true"}), why);
  EXPECT_FALSE(fs::exists(outside / "list"));
  fs::remove(list);
  ASSERT_EQ(mkfifo(list.c_str(), 0644), 0);
  EXPECT_EQ(refused({"run", "box", "true"}), why);
}

TEST_F(Isolation, APipeInPlaceOfALogKeepsNobodyWaiting) {
  ASSERT_EQ(shell("rm /mgb/log/events /mgb/log/trace; mkfifo /mgb/log/events /mgb/log/trace").exit_status, 0);
  for (const char *const book : {"trace", "log"}) EXPECT_LT(spbox({book, "box"}).exit_status, 2) << book;
}

TEST_F(Isolation, TheWorkstationsRunFolderIsEmpty) {
  EXPECT_EQ(shell("ls -A /run").output, "");
}

TEST_F(Isolation, HasNoRights) {
  const std::string status = shell("cat /proc/self/status").output;
  for (const char *const line : {"CapPrm:\t0000000000000000\n", "CapEff:\t0000000000000000\n", "NoNewPrivs:\t1\n"}) {
    EXPECT_NE(status.find(line), std::string::npos) << line;
  }
}

// Network.

TEST_F(Isolation, HasNoNetwork) {
  const Port port;
  EXPECT_EQ(in_box({REACH, "port", port.number()}).output, "Connection refused\n");
}

TEST_F(Isolation, HasTheWorkstationsNetworkWhereItIsAskedFor) {
  const Port port;
  EXPECT_EQ(spbox({"run", "box", "--network", "--", REACH, "port", port.number()}).output, "done\n");
}

// Processes and signals.

TEST_F(Isolation, SharesNoMemoryNorMessagesWithTheWorkstation) {
  const auto own = fs::read_symlink("/proc/self/ns/ipc").string();
  EXPECT_NE(shell("readlink /proc/self/ns/ipc").output, own + "\n");
}

TEST_F(Isolation, SeesTheProcessesOfTheWorkstationAndNotIntoThem) {
  const std::string process = "/proc/" + std::to_string(getpid());
  EXPECT_EQ(shell("test -d " + process + " && echo seen").output, "seen\n");
  for (const char *const part : {"environ", "mem", "root/etc/passwd", "fd/0"}) {
    EXPECT_NE(shell("head -c 1 " + process + "/" + part + " 2>/dev/null").exit_status, 0) << part;
  }
}

// Linux 6.12 and later keep signals in; before that they reach all processes of the user.
TEST_F(Isolation, SignalsReachWhatTheCommandHasStarted) {
  EXPECT_EQ(shell("sleep 100 & kill -KILL $!; wait $! 2>/dev/null; echo $?").output, "137\n");
  constexpr int kAskForVersion = 1;
  const bool are_kept_in = syscall(SYS_landlock_create_ruleset, nullptr, 0, kAskForVersion) >= 6;
  EXPECT_EQ(shell("kill -0 " + std::to_string(getpid()) + " 2>/dev/null && echo it got out").output,
            are_kept_in ? "" : "it got out\n");
}

// A limit of processor time kills as a signal does.
TEST_F(Isolation, SetsNoLimitsOfOtherProcesses) {
  EXPECT_EQ(in_box({REACH, "limit", std::to_string(getpid())}).output, "Operation not permitted\n");
  EXPECT_EQ(in_box({REACH, "limit", "0"}).output, "done\n");
  EXPECT_EQ(shell("ulimit -t 100; ulimit -t").output, "100\n");
}

TEST_F(Isolation, HasNoKeysOfTheUsersSession) {
  EXPECT_EQ(in_box({REACH, "key"}).output, "Operation not permitted\n");
}

TEST_F(Isolation, DoesNotOutliveSpbox) {
  const std::string script = "cd " + scratch_.path().string() +
                             "; " SPBOX
                             " run box -- sh -c 'echo $$ >/tmp/it; mv /tmp/it /tmp/ready; exec sleep 100' & "
                             "until test -e box/tmp/ready; do sleep 0.02; done; kill -KILL $!; cat box/tmp/ready";
  const int command = std::stoi(run_to_end({"/bin/sh", "-c", script}).output);
  EXPECT_TRUE(
      eventually([&] { return kill(command, 0) != 0 || !fs::exists("/proc/" + std::to_string(command) + "/exe"); }));
}

// Terminals.

class IsolationOnTerminal : public Isolation {
 protected:
  void start(const Words &command) {
    Words words{"/usr/bin/env", "-C", scratch_.path(), SPBOX, "run", "box", "--"};
    words.insert(words.end(), command.begin(), command.end());
    terminal_.start(words);
  }
  terminal::Terminal terminal_;
};

TEST_F(IsolationOnTerminal, TypesNothingIntoTheOperatorsShell) {
  start({"sh", "-c", REACH " type x; echo that was all"});
  ASSERT_TRUE(terminal_.wait_for("that was all", 10s));
  for (const char *const line : {"Operation not permitted", "that was all"}) EXPECT_TRUE(terminal_.shows(line)) << line;
  EXPECT_FALSE(terminal_.shows("done"));
  EXPECT_FALSE(terminal_.shows("xx"));
  EXPECT_TRUE(terminal_.wait_for_exit(10s));
}

TEST_F(IsolationOnTerminal, ReachesNoOtherTerminal) {
  terminal::Terminal other;
  other.start({"/bin/sh", "-c", "tty >" + scratch("other") + "; echo ready; sleep 100"});
  ASSERT_TRUE(other.wait_for("ready", 10s));
  std::string name = text_of("other");
  name.erase(name.find('\n'));
  start({"sh", "-c", "tty; test -e " + name + " || echo not there"});
  EXPECT_TRUE(terminal_.wait_for("/dev/pts/", 10s));
  EXPECT_TRUE(terminal_.wait_for("not there", 10s));
  EXPECT_TRUE(terminal_.wait_for_exit(10s));
}

}  // namespace
