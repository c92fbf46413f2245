#include <gtest/gtest.h>

#include "tests/unit/doubles/library_test.h"

namespace {

using doubles::Lines;
using doubles::machine;

// Sessions and their counts. The client itself complains about an open of an open database, and the like.
class LmainteScdb : public doubles::LibraryTest {
 protected:
  void open_and_lock(uint32_t db_id) {
    EXPECT_EQ(lmainte_scdb_open(db_id), 0);
    EXPECT_EQ(lmainte_scdb_lock(db_id), 0);
  }
  void unlock_and_close(uint32_t db_id) {
    EXPECT_EQ(lmainte_scdb_unlock(db_id), 0);
    EXPECT_EQ(lmainte_scdb_close(db_id), 0);
  }
};

TEST_F(LmainteScdb, EveryDatabaseIsOpenedLockedUnlockedAndClosed) {
  for (uint32_t id = 0; id <= 5; ++id) {
    machine().start();
    const std::string n = std::to_string(id);
    open_and_lock(id);
    unlock_and_close(id);
    EXPECT_EQ(machine().calls, (Lines{"open " + n, "lock " + n, "unlock " + n, "close " + n}));
  }
}

TEST_F(LmainteScdb, FirstUserOpensAndLastOneCloses) {
  EXPECT_EQ(lmainte_scdb_open(2), 0);
  EXPECT_EQ(lmainte_scdb_open(2), 0);
  EXPECT_EQ(machine().calls, (Lines{"open 2"}));
  EXPECT_EQ(lmainte_scdb_close(2), 0);
  EXPECT_EQ(machine().calls, (Lines{"open 2"}));
  EXPECT_EQ(lmainte_scdb_close(2), 0);
  EXPECT_EQ(machine().calls, (Lines{"open 2", "close 2"}));
}

TEST_F(LmainteScdb, FirstHolderLocksAndLastOneUnlocks) {
  EXPECT_EQ(lmainte_scdb_lock(2), 0);
  EXPECT_EQ(lmainte_scdb_lock(2), 0);
  EXPECT_EQ(lmainte_scdb_unlock(2), 0);
  EXPECT_EQ(machine().calls, (Lines{"lock 2"}));
  EXPECT_EQ(lmainte_scdb_unlock(2), 0);
  EXPECT_EQ(machine().calls, (Lines{"lock 2", "unlock 2"}));
}

TEST_F(LmainteScdb, OpenAndCloseRecordTheNewCount) {
  lmainte_scdb_open(3);
  lmainte_scdb_open(3);
  lmainte_scdb_close(3);
  lmainte_scdb_close(3);
  EXPECT_EQ(doubles::trace_of(0x110C8010), (Lines{"100 110C8010", "100 110C8012 1", "100 110C8011", "100 110C8010",
                                                  "100 110C8012 2", "100 110C8011"}));
  EXPECT_EQ(doubles::trace_of(0x110C8020), (Lines{"100 110C8020", "100 110C8022 1", "100 110C8021", "100 110C8020",
                                                  "100 110C8022 0", "100 110C8021"}));
}

TEST_F(LmainteScdb, LockAndUnlockRecordTheSearchAndTheOrder) {
  lmainte_scdb_lock(3);
  lmainte_scdb_unlock(3);
  EXPECT_EQ(doubles::trace(),
            (Lines{"100 110C8030", "100 110C8050", "100 110C8051", "100 110C8060", "100 110C8061", "100 110C8031",
                   "100 110C8040", "100 110C8050", "100 110C8051", "100 110C8060", "100 110C8061", "100 110C8041"}));
}

TEST_F(LmainteScdb, NestedLockAsksNeitherOrderNorClient) {
  lmainte_scdb_lock(3);
  machine().start();
  machine().databases[3].locked = true;
  EXPECT_EQ(lmainte_scdb_lock(3), 0);
  EXPECT_EQ(lmainte_scdb_unlock(3), 0);
  EXPECT_EQ(machine().calls, Lines{});
  EXPECT_EQ(doubles::trace_of(0x110C8060), Lines{});
  lmainte_scdb_unlock(3);
}

// ---- refusals

struct Verb {
  const char *name;
  int32_t (*call)(uint32_t);
  uint32_t entry;
};

constexpr Verb kOpen = {"open", lmainte_scdb_open, 0x110C8010};
constexpr Verb kClose = {"close", lmainte_scdb_close, 0x110C8020};
constexpr Verb kLock = {"lock", lmainte_scdb_lock, 0x110C8030};
constexpr Verb kUnlock = {"unlock", lmainte_scdb_unlock, 0x110C8040};

std::string event(const Verb &verb, const char *level, uint32_t offset, const std::string &values = "") {
  char text[32];
  std::snprintf(text, sizeof text, "%s %08X", level, verb.entry + offset);
  return text + values;
}

TEST_F(LmainteScdb, UnknownDatabaseIsRefused) {
  for (const auto &verb : {kOpen, kClose, kLock, kUnlock}) {
    for (const uint32_t id : {6U, 7U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
      machine().start();
      const std::string value = " " + std::to_string(static_cast<int32_t>(id));
      EXPECT_EQ(verb.call(id), -1) << verb.name << value;
      EXPECT_EQ(machine().calls, Lines{});
      EXPECT_EQ(doubles::trace(), (Lines{event(verb, "100", 0), "100 110C8050", "805 110CB051" + value, "100 110C8051",
                                         event(verb, "805", 0x3001, value), event(verb, "100", 1)}));
    }
  }
}

TEST_F(LmainteScdb, CloseWithoutOpenIsRefused) {
  EXPECT_EQ(lmainte_scdb_close(2), -1);
  EXPECT_EQ(machine().calls, Lines{});
  EXPECT_EQ(doubles::trace_of(0x110C8020), (Lines{"100 110C8020", "805 110CB022 2 0", "100 110C8021"}));
}

TEST_F(LmainteScdb, UnlockWithoutLockIsRefused) {
  EXPECT_EQ(lmainte_scdb_unlock(2), -1);
  EXPECT_EQ(machine().calls, Lines{});
  EXPECT_EQ(doubles::trace_of(0x110C8040), (Lines{"100 110C8040", "805 110CB042 2 0", "100 110C8041"}));
}

TEST_F(LmainteScdb, RefusedCloseLeavesTheCountAtZero) {
  EXPECT_EQ(lmainte_scdb_close(2), -1);
  EXPECT_EQ(lmainte_scdb_close(2), -1);
  EXPECT_EQ(lmainte_scdb_open(2), 0);
  EXPECT_EQ(machine().calls, (Lines{"open 2"}));
  EXPECT_EQ(lmainte_scdb_close(2), 0);
}

// ---- order of the locks

TEST_F(LmainteScdb, LowerDatabaseCannotBeLockedAfterAHigherOne) {
  lmainte_scdb_lock(2);
  EXPECT_EQ(lmainte_scdb_lock(1), -1);
  EXPECT_EQ(machine().calls, (Lines{"lock 2"}));
  EXPECT_EQ(doubles::trace_of(0x110C8060).at(3), "805 110CB061 1 2");
  EXPECT_EQ(doubles::trace_of(0x110C8030).at(3), "805 110CB033 -1 1");
  lmainte_scdb_unlock(2);
}

TEST_F(LmainteScdb, RefusedLockIsNotHeld) {
  lmainte_scdb_lock(2);
  lmainte_scdb_lock(1);
  lmainte_scdb_unlock(2);
  EXPECT_EQ(lmainte_scdb_unlock(1), -1);
}

TEST_F(LmainteScdb, HigherDatabaseCanBeLockedAfterALowerOne) {
  for (const uint32_t id : {0U, 1U, 2U, 3U, 4U, 5U}) EXPECT_EQ(lmainte_scdb_lock(id), 0);
  for (const uint32_t id : {5U, 4U, 3U, 2U, 1U, 0U}) EXPECT_EQ(lmainte_scdb_unlock(id), 0);
}

TEST_F(LmainteScdb, LowerDatabaseCannotBeUnlockedBeforeAHigherOne) {
  lmainte_scdb_lock(1);
  lmainte_scdb_lock(4);
  EXPECT_EQ(lmainte_scdb_unlock(1), -1);
  EXPECT_EQ(machine().calls, (Lines{"lock 1", "lock 4"}));
  EXPECT_EQ(doubles::trace_of(0x110C8060).at(5), "805 110CB061 1 4");
  EXPECT_EQ(doubles::trace_of(0x110C8040).at(1), "805 110CB043 -1 1");
  EXPECT_EQ(lmainte_scdb_unlock(4), 0);
  EXPECT_EQ(lmainte_scdb_unlock(1), 0);
}

TEST_F(LmainteScdb, FirstOffenderInTheTableIsTheOneRecorded) {
  lmainte_scdb_lock(2);
  lmainte_scdb_lock(4);
  EXPECT_EQ(lmainte_scdb_lock(0), -1);
  EXPECT_EQ(doubles::trace_of(0x110C8060).at(5), "805 110CB061 0 2");
  lmainte_scdb_unlock(4);
  lmainte_scdb_unlock(2);
}

TEST_F(LmainteScdb, NestedLockIsNotAskedForTheOrder) {
  lmainte_scdb_lock(2);
  lmainte_scdb_lock(4);
  EXPECT_EQ(lmainte_scdb_lock(2), 0);
  EXPECT_EQ(lmainte_scdb_unlock(2), 0);
  EXPECT_EQ(machine().calls, (Lines{"lock 2", "lock 4"}));
  lmainte_scdb_unlock(4);
  lmainte_scdb_unlock(2);
}

TEST_F(LmainteScdb, OpenAndCloseKnowNoOrder) {
  EXPECT_EQ(lmainte_scdb_open(4), 0);
  lmainte_scdb_lock(4);
  EXPECT_EQ(lmainte_scdb_open(1), 0);
  EXPECT_EQ(lmainte_scdb_close(1), 0);
  unlock_and_close(4);
}

TEST_F(LmainteScdb, OpeningAndLockingAreCountedApart) {
  EXPECT_EQ(lmainte_scdb_open(2), 0);
  EXPECT_EQ(lmainte_scdb_unlock(2), -1);
  EXPECT_EQ(lmainte_scdb_lock(2), 0);
  EXPECT_EQ(lmainte_scdb_close(2), 0);
  EXPECT_EQ(lmainte_scdb_unlock(2), 0);
}

TEST_F(LmainteScdb, DatabasesAreCountedApart) {
  EXPECT_EQ(lmainte_scdb_open(1), 0);
  EXPECT_EQ(lmainte_scdb_close(2), -1);
  EXPECT_EQ(lmainte_scdb_close(1), 0);
}

// ---- failures of the client

TEST_F(LmainteScdb, FailedOpenLeavesTheDatabaseClosed) {
  machine().fail("open 2", 1, 0, 77);
  EXPECT_EQ(lmainte_scdb_open(2), -1);
  EXPECT_EQ(doubles::trace_of(0x110C8010), (Lines{"100 110C8010", "800A 110CB013 77 2", "100 110C8011"}));
  EXPECT_EQ(lmainte_scdb_open(2), 0);
  EXPECT_EQ(machine().calls, (Lines{"open 2", "open 2"}));
  EXPECT_EQ(lmainte_scdb_close(2), 0);
}

TEST_F(LmainteScdb, FailedCloseIsAskedOfTheClientAgain) {
  lmainte_scdb_open(2);
  machine().fail("close 2", 1, 0, -9);
  EXPECT_EQ(lmainte_scdb_close(2), -1);
  EXPECT_EQ(doubles::trace_of(0x110C8020), (Lines{"100 110C8020", "800A 110CB023 -9 2", "100 110C8021"}));
  EXPECT_EQ(lmainte_scdb_close(2), 0);
  EXPECT_EQ(machine().calls, (Lines{"open 2", "close 2", "close 2"}));
  EXPECT_EQ(lmainte_scdb_close(2), -1);
}

TEST_F(LmainteScdb, DatabaseCountsAsOpenAfterAFailedClose) {
  lmainte_scdb_open(2);
  machine().fail("close 2");
  lmainte_scdb_close(2);
  EXPECT_EQ(lmainte_scdb_open(2), 0);
  EXPECT_EQ(lmainte_scdb_close(2), 0);
  EXPECT_EQ(machine().calls, (Lines{"open 2", "close 2"}));
  EXPECT_EQ(lmainte_scdb_close(2), 0);
}

TEST_F(LmainteScdb, FailedLockLeavesTheDatabaseUnlocked) {
  machine().fail("lock 2", 1, 0, 5);
  EXPECT_EQ(lmainte_scdb_lock(2), -1);
  EXPECT_EQ(doubles::trace_of(0x110C8030), (Lines{"100 110C8030", "800A 110CB034 5 2", "100 110C8031"}));
  EXPECT_EQ(lmainte_scdb_unlock(2), -1);
  EXPECT_EQ(machine().calls, (Lines{"lock 2"}));
}

TEST_F(LmainteScdb, FailedUnlockKeepsTheLock) {
  lmainte_scdb_lock(2);
  machine().fail("unlock 2", 1, 0, 5);
  EXPECT_EQ(lmainte_scdb_unlock(2), -1);
  EXPECT_EQ(doubles::trace_of(0x110C8040), (Lines{"100 110C8040", "800A 110CB044 5 2", "100 110C8041"}));
  EXPECT_EQ(lmainte_scdb_lock(1), -1);
  EXPECT_EQ(lmainte_scdb_unlock(2), 0);
  EXPECT_EQ(machine().calls, (Lines{"lock 2", "unlock 2", "unlock 2"}));
}

}  // namespace
