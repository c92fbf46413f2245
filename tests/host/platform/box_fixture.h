// A box for one test, and the platform in it.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <optional>
#include <string>

#include "host/box/database.h"
#include "host/box/place.h"
#include "host/box/trace_ring.h"
#include "tests/host/box/child.h"
#include "tests/host/box/scratch.h"
#ifdef PLATFORM_SERVER
#include "tests/host/platform/remote_platform.h"
#endif

class BoxTest : public testing::Test {
 protected:
  void SetUp() override {
    for (const auto &folder : {place.tmp(), place.etc(), place.trace().parent_path()}) {
      std::filesystem::create_directories(folder);
    }
    box::TraceRing::create(place.trace());
    in_child([&] {
      for (std::uint32_t id = 0; id < box::kDatabaseCount; ++id) box::Database(place.database(id), true);
      return 0;
    });
    setenv("SPBOX_ROOT", scratch.path().c_str(), 1);
#ifdef PLATFORM_SERVER
    remote.emplace(place);
#endif
  }
  void TearDown() override {
#ifdef PLATFORM_SERVER
    remote.reset();
#endif
    unsetenv("SPBOX_ROOT");
  }

  void mark(const char *model) const {
    std::ofstream(place.tmp() / model).close();
  }

  // A record as another process sees and writes it. The platform has LMDB in this process for itself.
  void store(std::uint32_t db_id, const std::string &key, const std::string &text) const {
    ASSERT_EQ(in_child([&] {
                box::Database(place.database(db_id)).put(key, box::Bytes(text.begin(), text.end()));
                return 0;
              }),
              0);
  }
  bool stored(std::uint32_t db_id, const std::string &key, const std::string &text) const {
    return in_child([&] {
             return box::Database(place.database(db_id)).get(key) == box::Bytes(text.begin(), text.end()) ? 0 : 1;
           }) == 0;
  }
  bool absent(std::uint32_t db_id, const std::string &key) const {
    return in_child([&] { return box::Database(place.database(db_id)).get(key) ? 1 : 0; }) == 0;
  }
  bool lockable(std::uint32_t db_id) const {
    return in_child([&] { return box::Database(place.database(db_id)).lock() ? 0 : 1; }) == 0;
  }

  Scratch scratch;
  box::Place place{scratch.path()};
#ifdef PLATFORM_SERVER
  std::optional<RemotePlatform> remote;
#endif
};
