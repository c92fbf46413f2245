#include "bench/memory_platform.h"

#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string_view>
#include <unordered_map>

#include "include/lmainte_platform.h"

namespace {

constexpr std::uint8_t kByte = 0x8F;
constexpr std::size_t kMostReads = 4096;  // of a call

// Found without a copy of the name: a slow client would hide what the library takes.
struct Hash {
  using is_transparent = void;
  std::size_t operator()(std::string_view name) const { return std::hash<std::string_view>()(name); }
};
using Database = std::unordered_map<std::string, std::vector<std::uint8_t>, Hash, std::equal_to<>>;

std::array<Database, 6> databases;
bench::Requests *watched = nullptr;
std::uint32_t last_record[4];

std::int32_t count_session() {
  if (watched != nullptr) ++watched->sessions;
  return 0;
}

}  // namespace

namespace bench {

void put(std::uint32_t db_id, const char *pattern, int count, std::size_t size) {
  for (int n = 0; n < count; ++n) {
    char name[128];
    std::snprintf(name, sizeof name, pattern, n);
    databases.at(db_id)[name] = std::vector<std::uint8_t>(size, kByte);
  }
}

void clear() {
  databases = {};
}

Requests watch(void (*call)()) {
  Requests requests;
  watched = &requests;
  call();
  watched = nullptr;
  return requests;
}

void replay(const Requests &requests, Kept kept) {
  void *records[kMostReads];
  std::size_t held = 0;
  for (std::uint64_t i = 0; i < requests.sessions; ++i) scdb_open(0);
  for (const Requests::Read &read : requests.reads) {
    char key[128] = {};
    std::memcpy(key, read.key.data(), read.key.size());
    void *record = nullptr;
    std::int32_t size = 0;
    scdb_get(read.db_id, key, &record, &size, 0);
    if (kept == Kept::kForAMoment)
      std::free(record);
    else
      records[held++] = record;
  }
  for (std::size_t i = 0; i < held; ++i) std::free(records[i]);
  for (std::uint64_t i = 0; i < requests.records; ++i) {
    const std::uint32_t words[2] = {static_cast<std::uint32_t>(getpid()), 0};
    mgb_trace_write(14, 256, 15, 0x110C0000, words, 16);
  }
}

}  // namespace bench

std::int32_t mgb_trace_write(std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t, const std::uint32_t *words,
                             std::uint32_t length) {
  std::memcpy(last_record, words, length - 8);
  if (watched != nullptr) ++watched->records;
  return 0;
}

std::int32_t scdb_open(std::uint32_t) {
  return count_session();
}
std::int32_t scdb_close(std::uint32_t) {
  return count_session();
}
std::int32_t scdb_lock(std::uint32_t) {
  return count_session();
}
std::int32_t scdb_unlock(std::uint32_t) {
  return count_session();
}

std::int32_t scdb_get(std::uint32_t db_id, const char *key, void **record, std::int32_t *size, std::uint32_t) {
  if (watched != nullptr) watched->reads.push_back({db_id, key});
  const Database &database = databases[db_id];
  const auto found = database.find(std::string_view(key));
  if (found == database.end()) return -1;
  *record = std::malloc(found->second.size());
  std::memcpy(*record, found->second.data(), found->second.size());
  *size = static_cast<std::int32_t>(found->second.size());
  return 0;
}

std::int32_t lcmn_scdb_put(std::uint32_t, const char *, const void *, std::int32_t, std::uint32_t) {
  return -1;
}

std::int32_t lcmn_lopen(const char *, std::int32_t, std::uint32_t) {
  return 3;
}
std::int32_t lcmn_read(std::int32_t, void *buffer, std::int32_t size) {
  std::memset(buffer, 0, static_cast<std::size_t>(size));
  return size;
}
std::int32_t lcmn_close(std::int32_t) {
  return 0;
}
std::int32_t cli_ask_select(std::int32_t, void *, const char *) {
  return -1;
}

std::int32_t api_conv_unit_name_get(const std::uint32_t *, std::int32_t, char *name, std::int32_t, std::int32_t) {
  std::strcpy(name, "/PSU#40");
  return 0;
}
