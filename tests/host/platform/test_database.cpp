#include <array>
#include <cstdlib>
#include <cstring>

#include "host/include/lmainte_host.h"
#include "include/lmainte_platform.h"
#include "tests/host/platform/box_fixture.h"

namespace {

// A key as the library hands it over.
struct Key {
  explicit Key(const char *name) { std::strcpy(text, name); }
  char text[128] = {};
};

class PlatformDatabase : public BoxTest {
 protected:
  void TearDown() override {
    for (std::uint32_t id = 0; id < 6; ++id) scdb_close(id);
    BoxTest::TearDown();
  }

  // The record as text, or "result N".
  static std::string get(std::uint32_t db_id, const char *name) {
    void *record = nullptr;
    std::int32_t size = -1;
    const std::int32_t result = scdb_get(db_id, Key(name).text, &record, &size, 0);
    std::string text = "result " + std::to_string(result);
    if (result == 0) text.assign(static_cast<char *>(record), static_cast<std::size_t>(size));
    std::free(record);
    return text;
  }
  static std::int32_t put(std::uint32_t db_id, const char *name, const std::string &text) {
    return lcmn_scdb_put(db_id, Key(name).text, text.data(), static_cast<std::int32_t>(text.size()), 0);
  }
};

TEST_F(PlatformDatabase, OpensAndClosesEachDatabaseOnce) {
  for (std::uint32_t id = 0; id < 6; ++id) {
    EXPECT_EQ(scdb_close(id), LMAINTE_HOST_DB_SESSION) << id;
    EXPECT_EQ(scdb_open(id), 0) << id;
    EXPECT_EQ(scdb_open(id), LMAINTE_HOST_DB_SESSION) << id;
  }
  for (std::uint32_t id = 0; id < 6; ++id) {
    EXPECT_EQ(scdb_close(id), 0) << id;
    EXPECT_EQ(scdb_close(id), LMAINTE_HOST_DB_SESSION) << id;
    EXPECT_EQ(scdb_open(id), 0) << id;
  }
}

TEST_F(PlatformDatabase, KnowsSixDatabases) {
  void *record = nullptr;
  std::int32_t size = 0;
  for (std::uint32_t id : {6U, 7U, 0xFFFFFFFFU}) {
    EXPECT_EQ(scdb_open(id), LMAINTE_HOST_DB_ARGUMENT);
    EXPECT_EQ(scdb_close(id), LMAINTE_HOST_DB_ARGUMENT);
    EXPECT_EQ(scdb_lock(id), LMAINTE_HOST_DB_ARGUMENT);
    EXPECT_EQ(scdb_unlock(id), LMAINTE_HOST_DB_ARGUMENT);
    EXPECT_EQ(scdb_get(id, Key("key").text, &record, &size, 0), LMAINTE_HOST_DB_ARGUMENT);
    EXPECT_EQ(put(id, "key", "text"), LMAINTE_HOST_DB_ARGUMENT);
  }
}

TEST_F(PlatformDatabase, NeedsASession) {
  EXPECT_EQ(scdb_lock(2), LMAINTE_HOST_DB_SESSION);
  EXPECT_EQ(scdb_unlock(2), LMAINTE_HOST_DB_SESSION);
  EXPECT_EQ(get(2, "key"), "result -2");
  EXPECT_EQ(put(2, "key", "text"), LMAINTE_HOST_DB_SESSION);
}

TEST_F(PlatformDatabase, ReadsARecordIntoABufferOfTheCaller) {
  store(2, "current_psu_info", std::string("\0words\0", 7));
  store(4, "current_psu_info", "another database");
  store(2, "empty", "");
  ASSERT_EQ(scdb_open(2), 0);
  EXPECT_EQ(get(2, "current_psu_info"), std::string("\0words\0", 7));
  EXPECT_EQ(get(2, "empty"), "");
  EXPECT_EQ(get(2, "current_psu_inf"), "result -4");
  ASSERT_EQ(scdb_lock(2), 0);
  EXPECT_EQ(get(2, "current_psu_info"), std::string("\0words\0", 7));
}

TEST_F(PlatformDatabase, ARecordReadStaysTheCallersAfterClose) {
  store(2, "key", "text");
  ASSERT_EQ(scdb_open(2), 0);
  void *record = nullptr;
  std::int32_t size = 0;
  ASSERT_EQ(scdb_get(2, Key("key").text, &record, &size, 0), 0);
  ASSERT_EQ(scdb_close(2), 0);
  std::memset(record, 'x', 4);
  std::free(record);
  EXPECT_TRUE(stored(2, "key", "text"));
}

TEST_F(PlatformDatabase, AFailedReadHandsOverNothing) {
  store(2, "key", "text");
  ASSERT_EQ(scdb_open(2), 0);
  std::array<char, 128> endless{};
  endless.fill('k');
  int there = 0;
  void *record = &there;
  std::int32_t size = 77;
  EXPECT_EQ(scdb_get(2, Key("other").text, &record, &size, 0), LMAINTE_HOST_DB_ABSENT);
  EXPECT_EQ(scdb_get(2, Key("").text, &record, &size, 0), LMAINTE_HOST_DB_ARGUMENT);
  EXPECT_EQ(scdb_get(2, endless.data(), &record, &size, 0), LMAINTE_HOST_DB_ARGUMENT);
  EXPECT_EQ(scdb_get(2, nullptr, &record, &size, 0), LMAINTE_HOST_DB_ARGUMENT);
  EXPECT_EQ(scdb_get(2, Key("key").text, &record, &size, 1), LMAINTE_HOST_DB_ARGUMENT);
  EXPECT_EQ(scdb_get(2, Key("key").text, nullptr, &size, 0), LMAINTE_HOST_DB_ARGUMENT);
  EXPECT_EQ(scdb_get(2, Key("key").text, &record, nullptr, 0), LMAINTE_HOST_DB_ARGUMENT);
  EXPECT_EQ(record, &there);
  EXPECT_EQ(size, 77);
}

TEST_F(PlatformDatabase, ANameOf127CharactersIsAKey) {
  ASSERT_EQ(scdb_open(2), 0);
  const std::string name(127, 'n');
  EXPECT_EQ(put(2, name.c_str(), "text"), 0);
  EXPECT_EQ(get(2, name.c_str()), "text");
  EXPECT_TRUE(stored(2, name, "text")) << "stored without the padding";
}

TEST_F(PlatformDatabase, LocksAndUnlocksOnce) {
  ASSERT_EQ(scdb_open(2), 0);
  EXPECT_EQ(scdb_unlock(2), LMAINTE_HOST_DB_SESSION);
  EXPECT_EQ(scdb_lock(2), 0);
  EXPECT_EQ(scdb_lock(2), LMAINTE_HOST_DB_SESSION);
  EXPECT_EQ(scdb_unlock(2), 0);
  EXPECT_EQ(scdb_unlock(2), LMAINTE_HOST_DB_SESSION);
  EXPECT_TRUE(lockable(2));
}

TEST_F(PlatformDatabase, LocksSeveralDatabasesAtOnce) {
  for (std::uint32_t id = 0; id < 6; ++id) {
    ASSERT_EQ(scdb_open(id), 0);
    ASSERT_EQ(scdb_lock(id), 0);
    ASSERT_EQ(put(id, "key", std::to_string(id)), 0);
  }
  for (std::uint32_t id = 6; id-- > 0;) ASSERT_EQ(scdb_unlock(id), 0);
  for (std::uint32_t id = 0; id < 6; ++id) EXPECT_TRUE(stored(id, "key", std::to_string(id)));
}

TEST_F(PlatformDatabase, ALockThatAnotherProcessKeepsIsBusy) {
  Child holder([&](const auto &say_ready) {
    box::Database database(place.database(2));
    if (!database.lock()) return 1;
    say_ready();
    pause();
    return 0;
  });
  ASSERT_TRUE(holder.is_ready());
  ASSERT_EQ(scdb_open(2), 0);
  EXPECT_EQ(scdb_lock(2), LMAINTE_HOST_DB_BUSY);
  holder.die();
  EXPECT_EQ(scdb_lock(2), 0);
}

TEST_F(PlatformDatabase, WritesUnderTheLockAtUnlock) {
  ASSERT_EQ(scdb_open(2), 0);
  ASSERT_EQ(scdb_lock(2), 0);
  EXPECT_EQ(put(2, "a", "1"), 0);
  EXPECT_EQ(put(2, "b", "2"), 0);
  EXPECT_TRUE(absent(2, "a"));
  EXPECT_EQ(get(2, "a"), "1");
  EXPECT_EQ(scdb_unlock(2), 0);
  EXPECT_TRUE(stored(2, "a", "1"));
  EXPECT_TRUE(stored(2, "b", "2"));
}

TEST_F(PlatformDatabase, AHolderThatDiesLeavesNothing) {
  Child holder([&](const auto &say_ready) {
    if (scdb_open(2) != 0 || scdb_lock(2) != 0 || put(2, "a", "1") != 0) return 1;
    say_ready();
    pause();
    return 0;
  });
  ASSERT_TRUE(holder.is_ready());
  holder.die();
  EXPECT_TRUE(lockable(2));
  EXPECT_TRUE(absent(2, "a"));
}

TEST_F(PlatformDatabase, WritesWithoutALockAtOnce) {
  ASSERT_EQ(scdb_open(2), 0);
  EXPECT_EQ(put(2, "a", "1"), 0);
  EXPECT_TRUE(stored(2, "a", "1"));
  EXPECT_TRUE(lockable(2));
}

TEST_F(PlatformDatabase, RefusesBadRecordsWithoutHarm) {
  store(2, "a", "1");
  ASSERT_EQ(scdb_open(2), 0);
  EXPECT_EQ(lcmn_scdb_put(2, Key("a").text, nullptr, 1, 0), LMAINTE_HOST_DB_ARGUMENT);
  EXPECT_EQ(lcmn_scdb_put(2, Key("a").text, "2", -1, 0), LMAINTE_HOST_DB_ARGUMENT);
  EXPECT_EQ(lcmn_scdb_put(2, Key("a").text, "2", 1, 1), LMAINTE_HOST_DB_ARGUMENT);
  EXPECT_EQ(lcmn_scdb_put(2, nullptr, "2", 1, 0), LMAINTE_HOST_DB_ARGUMENT);
  EXPECT_EQ(lcmn_scdb_put(2, Key("").text, "2", 1, 0), LMAINTE_HOST_DB_ARGUMENT);
  EXPECT_TRUE(stored(2, "a", "1"));
  EXPECT_TRUE(lockable(2));
}

TEST_F(PlatformDatabase, CloseDropsWhatWasNotUnlocked) {
  ASSERT_EQ(scdb_open(2), 0);
  ASSERT_EQ(scdb_lock(2), 0);
  ASSERT_EQ(put(2, "a", "1"), 0);
  EXPECT_EQ(scdb_close(2), 0);
  EXPECT_TRUE(lockable(2));
  EXPECT_TRUE(absent(2, "a"));
}

TEST_F(PlatformDatabase, AChildOfForkIsRefusedUntilItOpensAnew) {
  store(2, "a", "1");
  ASSERT_EQ(scdb_open(2), 0);
  ASSERT_EQ(scdb_open(4), 0);
  ASSERT_EQ(scdb_lock(4), 0);
  EXPECT_EQ(in_child([&] {
              if (get(2, "a") != "result -5") return 1;
              if (put(2, "a", "2") != LMAINTE_HOST_DB_STORAGE) return 2;
              if (scdb_lock(2) != LMAINTE_HOST_DB_STORAGE) return 3;
              if (scdb_unlock(4) == 0) return 4;
              if (scdb_close(2) != 0 || scdb_open(2) != 0) return 5;
              return get(2, "a") == "1" && put(2, "a", "child's") == 0 ? 0 : 6;
            }),
            0);
  EXPECT_EQ(get(2, "a"), "child's");
  EXPECT_EQ(put(4, "b", "1"), 0);
  EXPECT_EQ(scdb_unlock(4), 0);
  EXPECT_TRUE(stored(4, "b", "1"));
}

#ifndef PLATFORM_SERVER  // which has its box, wherever a program thinks that it is
TEST_F(PlatformDatabase, AFolderThatIsNoBoxHasNoDatabase) {
  setenv("SPBOX_ROOT", (scratch / "elsewhere").c_str(), 1);
  EXPECT_EQ(scdb_open(2), LMAINTE_HOST_DB_STORAGE);
  EXPECT_EQ(scdb_close(2), LMAINTE_HOST_DB_SESSION);
}
#endif

}  // namespace
