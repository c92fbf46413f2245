#include <csignal>
#include <functional>

#include <gtest/gtest.h>

#include "tests/unit/doubles/library_test.h"
#include "tests/unit/doubles/system_calls.h"

namespace {

using doubles::Lines;
using doubles::machine;

class LmainteShowFile : public doubles::LibraryTest {
 protected:
  int32_t show(const doubles::Program &pager) {
    machine().programs = {pager};
    return lmainte_show_file("/tmp/a_text");
  }
  Lines process_calls() { return machine().calls_of({"fork", "waitpid", "kill", "sleep"}); }
};

TEST_F(LmainteShowFile, RunsThePagerOnTheFile) {
  machine().children_are_real = true;
  EXPECT_EQ(lmainte_show_file("/tmp/a text"), 0);
  EXPECT_STREQ(machine().executed().path, "/bin/busybox");
  EXPECT_STREQ(machine().executed().arguments, "/bin/busybox\nmore\n/tmp/a text\n2>\n/dev/null\n");
  EXPECT_EQ(machine().executed().arguments_end, 5u);
  EXPECT_STREQ(machine().executed().environment, "");
}

TEST_F(LmainteShowFile, PagerKeepsStandardOutputAlone) {
  machine().children_are_real = true;
  lmainte_show_file("/tmp/a_text");
  EXPECT_EQ(machine().child_calls(), (Lines{"close 0", "close 2", "sigprocmask set", "execve /bin/busybox"}));
  EXPECT_EQ(doubles::child_trace(), (Lines{"8001 110C02E2"}));
}

TEST_F(LmainteShowFile, PercentInAPathIsNoConversion) {
  machine().children_are_real = true;
  lmainte_show_file("/tmp/100%s");
  EXPECT_STREQ(machine().executed().arguments, "/bin/busybox\nmore\n/tmp/100%s\n2>\n/dev/null\n");
}

TEST_F(LmainteShowFile, CutsThePathAt1023Characters) {
  machine().children_are_real = true;
  for (const size_t length : {1023U, 1024U, 1500U}) {
    EXPECT_EQ(lmainte_show_file(std::string(length, 'f').c_str()), 0);
    EXPECT_EQ(machine().executed().arguments, "/bin/busybox\nmore\n" + std::string(1023, 'f') + "\n2>\n/dev/null\n");
  }
}

TEST_F(LmainteShowFile, ShorterPathLeavesNothingOfALongerOne) {
  machine().children_are_real = true;
  lmainte_show_file("/tmp/a_long_name");
  lmainte_show_file("/tmp/b");
  EXPECT_STREQ(machine().executed().arguments, "/bin/busybox\nmore\n/tmp/b\n2>\n/dev/null\n");
}

TEST_F(LmainteShowFile, WaitsForThePagerAndRecordsTheResult) {
  EXPECT_EQ(show(doubles::exits(0, 3600)), 0);
  EXPECT_EQ(process_calls(), (Lines{"fork", "waitpid 500"}));
  EXPECT_EQ(machine().clock, 3600);
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C02E0", "100 110C02E1 0"}));
}

TEST_F(LmainteShowFile, EveryExitStatusButOneIsASuccess) {
  for (int status = 0; status < 256; ++status) {
    if (status == 127) continue;
    machine().start();
    EXPECT_EQ(show(doubles::exits(status)), 0) << status;
    EXPECT_EQ(doubles::trace(), (Lines{"100 110C02E0", "100 110C02E1 0"})) << status;
  }
}

TEST_F(LmainteShowFile, PagerThatCannotRunFails) {
  EXPECT_EQ(show(doubles::exits(127)), 8);
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C02E0", "805 110C12E6 32512", "100 110C02E1 8"}));
}

TEST_F(LmainteShowFile, MissingPagerFails) {
  machine().children_are_real = true;
  machine().fail("execve", 1, ENOENT);
  EXPECT_EQ(lmainte_show_file("/tmp/a_text"), 8);
  EXPECT_EQ(doubles::child_trace(), (Lines{"8001 110C02E2", "800A 110C12E3 2"}));
  EXPECT_TRUE(machine().child_left_by_exit());
}

TEST_F(LmainteShowFile, PagerKilledBySignalIsASuccess) {
  for (const int signal : {SIGTERM, SIGKILL, SIGSEGV}) {
    machine().start();
    EXPECT_EQ(show(doubles::dies_of(signal)), 0);
    EXPECT_EQ(doubles::trace(), (Lines{"100 110C02E0", "805 110C12E5 " + std::to_string(signal), "100 110C02E1 0"}));
  }
}

TEST_F(LmainteShowFile, FailedWaitIsASuccessAndNotRepeated) {
  machine().fail("waitpid", 1, EINTR);
  EXPECT_EQ(show(doubles::exits(0)), 0);
  EXPECT_EQ(process_calls(), (Lines{"fork", "waitpid 500"}));
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C02E0", "800A 110C12E4 -1 4", "100 110C02E1 0"}));
  EXPECT_EQ(g_show_file_pid, -1);
  machine().forget_children();
}

TEST_F(LmainteShowFile, FailedForkFails) {
  machine().fail("fork", 1, EAGAIN);
  EXPECT_EQ(lmainte_show_file("/tmp/a_text"), 8);
  EXPECT_EQ(process_calls(), (Lines{"fork"}));
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C02E0", "800A 110C12E2 11", "100 110C02E1 8"}));
  EXPECT_EQ(g_show_file_pid, -1);
}

TEST_F(LmainteShowFile, MissingPathFails) {
  EXPECT_EQ(lmainte_show_file(nullptr), 8);
  EXPECT_EQ(machine().calls, Lines{});
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C02E0", "805 110C12E1", "100 110C02E1 8"}));
}

TEST_F(LmainteShowFile, PagersProcessIdIsKnownWhileItRuns) {
  EXPECT_EQ(g_show_file_pid, -1);
  for (const int status : {0, 1, 127}) {
    show(doubles::exits(status));
    EXPECT_EQ(g_show_file_pid, -1);
  }
  EXPECT_EQ(machine().seen_pids, (std::vector<int>{500, 501, 502}));
}

// ---- the command's signal handlers

int pid_in_handler = 0;

// Runs a body with a handler that notes which pager it finds.
void with_handler_of(int signal, const std::function<void()> &body) {
  struct sigaction before = {};
  struct sigaction action = {};
  action.sa_handler = [](int) { pid_in_handler = g_show_file_pid; };
  ASSERT_EQ(__real_sigaction(signal, &action, &before), 0);
  pid_in_handler = 0;
  body();
  ASSERT_EQ(__real_sigaction(signal, &before, nullptr), 0);
}

TEST_F(LmainteShowFile, HandlerFindsThePagerAsSoonAsItRuns) {
  for (const int signal : {SIGINT, SIGTERM, SIGUSR1}) {
    machine().start();
    machine().meanwhile = [signal](const std::string &call) {
      if (call == "fork") raise(signal);
    };
    with_handler_of(signal, [] { EXPECT_EQ(lmainte_show_file("/tmp/a_text"), 0); });
    EXPECT_EQ(pid_in_handler, 500) << signal;
  }
}

TEST_F(LmainteShowFile, HandlerFindsNoPagerWhereNoneStarts) {
  machine().fail("fork");
  machine().meanwhile = [](const std::string &call) {
    if (call == "fork") raise(SIGUSR1);
  };
  with_handler_of(SIGUSR1, [] { EXPECT_EQ(lmainte_show_file("/tmp/a_text"), 8); });
  EXPECT_EQ(pid_in_handler, -1);
}

TEST_F(LmainteShowFile, ChildThatBecomesThePagerKnowsOfNone) {
  machine().children_are_real = true;
  machine().meanwhile = [](const std::string &call) {
    if (call.rfind("execve", 0) == 0) machine().note("pager " + std::to_string(g_show_file_pid));
  };
  EXPECT_EQ(lmainte_show_file("/tmp/a_text"), 0);
  EXPECT_EQ(machine().child_calls(),
            (Lines{"close 0", "close 2", "sigprocmask set", "pager -1", "execve /bin/busybox"}));
}

TEST_F(LmainteShowFile, PagerStartsWithTheCallersMaskAndTheCallerKeepsIt) {
  sigset_t mask;
  sigset_t before;
  sigemptyset(&mask);
  sigaddset(&mask, SIGUSR1);
  sigaddset(&mask, SIGTERM);
  ASSERT_EQ(__real_sigprocmask(SIG_SETMASK, &mask, &before), 0);
  machine().children_are_real = true;
  EXPECT_EQ(lmainte_show_file("/tmp/a_text"), 0);
  const std::string restored = "sigprocmask set " + std::to_string(SIGUSR1) + " " + std::to_string(SIGTERM);
  EXPECT_EQ(machine().child_calls(), (Lines{"close 0", "close 2", restored, "execve /bin/busybox"}));
  EXPECT_EQ(machine().calls_of({"sigprocmask"}), (Lines{"sigprocmask block all asking", restored}));
  sigset_t after;
  ASSERT_EQ(__real_sigprocmask(SIG_SETMASK, &before, &after), 0);
  for (const int signal : {SIGUSR1, SIGTERM}) EXPECT_EQ(sigismember(&after, signal), 1) << signal;
  for (const int signal : {SIGINT, SIGUSR2, SIGHUP}) EXPECT_EQ(sigismember(&after, signal), 0) << signal;
}

}  // namespace
