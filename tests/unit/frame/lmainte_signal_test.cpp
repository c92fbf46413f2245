#include <cerrno>
#include <csignal>

#include <gtest/gtest.h>

#include "tests/unit/doubles/library_test.h"
#include "tests/unit/doubles/system_calls.h"

namespace {

using doubles::in_a_process_of_its_own;
using doubles::Lines;
using doubles::machine;

volatile sig_atomic_t heard = 0;

void hear(int signal) {
  heard = signal;
}
void hear_otherwise(int) {
  heard = -1;
}

struct sigaction action_of(int signal) {
  struct sigaction action = {};
  EXPECT_EQ(__real_sigaction(signal, nullptr, &action), 0);
  return action;
}

// ---- handlers

class LmainteSignal : public doubles::LibraryTest {};

TEST_F(LmainteSignal, InstallsEveryHandlerInOrder) {
  in_a_process_of_its_own([] {
    const lmainte_signal_entry table[] = {{SIGUSR2, hear}, {SIGUSR1, hear_otherwise}, {-1, hear}};
    EXPECT_EQ(lmainte_signal(table), 0);
    EXPECT_EQ(machine().calls, (Lines{"sigaction 12", "sigaction 10"}));
    EXPECT_EQ(action_of(SIGUSR2).sa_handler, hear);
    EXPECT_EQ(action_of(SIGUSR1).sa_handler, hear_otherwise);
    raise(SIGUSR2);
    EXPECT_EQ(heard, SIGUSR2);
  });
}

TEST_F(LmainteSignal, RecordsEveryEntry) {
  in_a_process_of_its_own([] {
    const lmainte_signal_entry table[] = {{SIGUSR2, hear}, {SIGUSR1, hear}, {-1, nullptr}};
    lmainte_signal(table);
    EXPECT_EQ(doubles::trace(), (Lines{"100 110C0390", "100 110C0392 0 12", "100 110C0392 0 10", "100 110C0391"}));
  });
}

TEST_F(LmainteSignal, HandlersHaveNoFlagsAndAnEmptyMask) {
  in_a_process_of_its_own([] {
    const lmainte_signal_entry table[] = {{SIGUSR1, hear}, {-1, nullptr}};
    lmainte_signal(table);
    const auto action = action_of(SIGUSR1);
    EXPECT_EQ(action.sa_flags & (SA_RESTART | SA_SIGINFO | SA_NODEFER | SA_NOCLDSTOP | SA_ONSTACK), 0);
    EXPECT_EQ(action.sa_flags & static_cast<int>(SA_RESETHAND), 0);
    for (int signal = 1; signal < 65; ++signal) EXPECT_EQ(sigismember(&action.sa_mask, signal) == 1, false) << signal;
  });
}

TEST_F(LmainteSignal, SignalCanBeIgnoredOrGetItsDefaultBack) {
  in_a_process_of_its_own([] {
    const lmainte_signal_entry ignored[] = {{SIGUSR1, SIG_IGN}, {-1, nullptr}};
    EXPECT_EQ(lmainte_signal(ignored), 0);
    EXPECT_EQ(action_of(SIGUSR1).sa_handler, SIG_IGN);
    const lmainte_signal_entry defaulted[] = {{SIGUSR1, SIG_DFL}, {-1, nullptr}};
    EXPECT_EQ(lmainte_signal(defaulted), 0);
    EXPECT_EQ(action_of(SIGUSR1).sa_handler, SIG_DFL);
  });
}

TEST_F(LmainteSignal, LastEntryOfASignalHolds) {
  in_a_process_of_its_own([] {
    const lmainte_signal_entry table[] = {{SIGUSR1, hear}, {SIGUSR1, hear_otherwise}, {-1, nullptr}};
    EXPECT_EQ(lmainte_signal(table), 0);
    EXPECT_EQ(action_of(SIGUSR1).sa_handler, hear_otherwise);
  });
}

TEST_F(LmainteSignal, TableOfNothingButTheEndChangesNothing) {
  const lmainte_signal_entry table[] = {{-1, hear}};
  EXPECT_EQ(lmainte_signal(table), 0);
  EXPECT_EQ(machine().calls, Lines{});
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C0390", "100 110C0391"}));
}

TEST_F(LmainteSignal, MissingTableFails) {
  EXPECT_EQ(lmainte_signal(nullptr), 8);
  EXPECT_EQ(machine().calls, Lines{});
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C0390", "805 110C1391", "100 110C0391"}));
}

struct RefusedRow {
  const char *says;
  int signal;
};

TEST_F(LmainteSignal, FirstRefusalEndsTheWalkAndWhatWasInstalledStays) {
  constexpr RefusedRow kRows[] = {{"no signal has the number 65", 65},
                                  {"0 is no signal", 0},
                                  {"only -1 is the end", -2},
                                  {"SIGKILL has no handler", SIGKILL},
                                  {"SIGSTOP has no handler", SIGSTOP}};
  for (const auto &row : kRows) {
    in_a_process_of_its_own([&row] {
      machine().start();
      const lmainte_signal_entry table[] = {{SIGUSR1, hear}, {row.signal, hear}, {SIGUSR2, hear}, {-1, nullptr}};
      const std::string number = std::to_string(row.signal);
      EXPECT_EQ(lmainte_signal(table), 8) << row.says;
      EXPECT_EQ(machine().calls, (Lines{"sigaction 10", "sigaction " + number})) << row.says;
      EXPECT_EQ(action_of(SIGUSR1).sa_handler, hear) << row.says;
      EXPECT_EQ(action_of(SIGUSR2).sa_handler, SIG_DFL) << row.says;
      EXPECT_EQ(doubles::trace(), (Lines{"100 110C0390", "100 110C0392 0 10", "100 110C0392 -1 " + number,
                                         "800A 110C1392 -1 " + number, "100 110C0391"}))
          << row.says;
    });
  }
}

TEST_F(LmainteSignal, RefusalIsRecordedWithItsResult) {
  machine().fail("sigaction 10", 1, EINVAL, -3);
  const lmainte_signal_entry table[] = {{SIGUSR1, hear}, {-1, nullptr}};
  EXPECT_EQ(lmainte_signal(table), 8);
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C0390", "100 110C0392 -3 10", "800A 110C1392 -3 10", "100 110C0391"}));
}

// ---- masks

class LmainteSignalMask : public doubles::LibraryTest {
 protected:
  // In a process of its own in which SIGINT alone is blocked, the signals that are blocked after the table.
  static void after(const std::vector<lmainte_mask_entry> &table, const std::vector<int> &expected,
                    const char *says = "") {
    in_a_process_of_its_own([&] {
      machine().start();
      sigset_t set;
      sigemptyset(&set);
      sigaddset(&set, SIGINT);
      ASSERT_EQ(__real_sigprocmask(SIG_SETMASK, &set, nullptr), 0);
      EXPECT_EQ(lmainte_signal_mask(table.data()), 0) << says;
      EXPECT_EQ(doubles::blocked_signals(), expected) << says;
      EXPECT_EQ(doubles::trace(), (Lines{"100 110C0398", "100 110C0399"})) << says;
    });
  }
};

TEST_F(LmainteSignalMask, AppliesEachEntryForItself) {
  struct MaskRow {
    const char *says;
    std::vector<lmainte_mask_entry> table;
    std::vector<int> blocked;
  };
  const MaskRow rows[] = {
      {"blocking adds", {{SIGTERM, SIG_BLOCK}, {-1, 0}}, {SIGINT, SIGTERM}},
      {"unblocking takes away", {{SIGINT, SIG_UNBLOCK}, {-1, 0}}, {}},
      {"unblocking what is not blocked changes nothing", {{SIGTERM, SIG_UNBLOCK}, {-1, 0}}, {SIGINT}},
      {"setting leaves the one signal", {{SIGTERM, SIG_SETMASK}, {-1, 0}}, {SIGTERM}},
      {"setting drops what came before it", {{SIGUSR1, SIG_BLOCK}, {SIGTERM, SIG_SETMASK}, {-1, 0}}, {SIGTERM}},
      {"what comes behind a setting adds to it",
       {{SIGTERM, SIG_SETMASK}, {SIGUSR1, SIG_BLOCK}, {-1, 0}},
       {SIGUSR1, SIGTERM}},
      {"two settings leave the last", {{SIGTERM, SIG_SETMASK}, {SIGHUP, SIG_SETMASK}, {-1, 0}}, {SIGHUP}},
      {"nothing behind the end is read", {{-1, SIG_SETMASK}, {SIGTERM, SIG_BLOCK}, {-1, 0}}, {SIGINT}},
  };
  for (const auto &row : rows) after(row.table, row.blocked, row.says);
}

TEST_F(LmainteSignalMask, UnknownSignalAndOperationAreSteppedOver) {
  after({{65, SIG_BLOCK}, {SIGTERM, SIG_BLOCK}, {-1, 0}}, {SIGINT, SIGTERM});
  after({{0, SIG_UNBLOCK}, {-2, SIG_BLOCK}, {SIGTERM, SIG_BLOCK}, {-1, 0}}, {SIGINT, SIGTERM});
  after({{SIGHUP, 77}, {SIGTERM, SIG_BLOCK}, {-1, 0}}, {SIGINT, SIGTERM});
}

TEST_F(LmainteSignalMask, SettingAnUnknownSignalOpensTheMask) {
  after({{65, SIG_SETMASK}, {-1, 0}}, {});
}

TEST_F(LmainteSignalMask, EachSetHoldsItsOneSignal) {
  in_a_process_of_its_own([] {
    const lmainte_mask_entry table[] = {{SIGUSR1, SIG_BLOCK}, {SIGUSR2, SIG_UNBLOCK}, {65, SIG_SETMASK}, {-1, 0}};
    EXPECT_EQ(lmainte_signal_mask(table), 0);
    EXPECT_EQ(machine().calls, (Lines{"sigprocmask block 10", "sigprocmask unblock 12", "sigprocmask set"}));
  });
}

TEST_F(LmainteSignalMask, WhateverFailsTheWalkGoesOn) {
  in_a_process_of_its_own([] {
    machine().fail("sigprocmask", 0, EINVAL);
    const lmainte_mask_entry table[] = {{SIGUSR1, SIG_BLOCK}, {SIGUSR2, SIG_BLOCK}, {-1, 0}};
    EXPECT_EQ(lmainte_signal_mask(table), 0);
    EXPECT_EQ(machine().calls, (Lines{"sigprocmask block 10", "sigprocmask block 12"}));
    EXPECT_EQ(doubles::trace(), (Lines{"100 110C0398", "100 110C0399"}));
  });
}

TEST_F(LmainteSignalMask, TableOfNothingButTheEndChangesNothing) {
  const lmainte_mask_entry table[] = {{-1, SIG_SETMASK}};
  EXPECT_EQ(lmainte_signal_mask(table), 0);
  EXPECT_EQ(machine().calls, Lines{});
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C0398", "100 110C0399"}));
}

TEST_F(LmainteSignalMask, MissingTableFails) {
  EXPECT_EQ(lmainte_signal_mask(nullptr), 8);
  EXPECT_EQ(machine().calls, Lines{});
  EXPECT_EQ(doubles::trace(), (Lines{"100 110C0398", "805 110C1399", "100 110C0399"}));
}

}  // namespace
