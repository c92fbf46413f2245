#include "host/box/database.h"

#include <unistd.h>

#include <array>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "host/box/place.h"
#include "host/include/lmainte_host.h"
#include "host/platform/calls.h"
#include "host/platform/exported.h"
#include "host/platform/points.h"
#include "include/lmainte_record.h"

namespace {

constexpr std::size_t kKeyRoom = 128;

// The process's sessions, by database id.
std::array<std::unique_ptr<box::Database>, box::kDatabaseCount> sessions;

// Runs one step on the session of a database. What is thrown on the way is a failure of the files.
template <typename Step>
int32_t with_session(uint32_t db_id, Step step) noexcept {
  if (db_id >= sessions.size()) return LMAINTE_HOST_DB_ARGUMENT;
  try {
    if (!sessions[db_id]) return LMAINTE_HOST_DB_SESSION;
    return step(*sessions[db_id]);
  } catch (...) {
    return LMAINTE_HOST_DB_STORAGE;
  }
}

// Where a call for a database is refused on purpose.
bool is_refused(box::PointKind kind, uint32_t db_id) {
  return db_id < sessions.size() && platform::is_refused(kind, box::kDatabaseNames[db_id]);
}

// The record's name: the key without its padding. Empty when it is no name.
std::string_view name_in(const char *key) {
  const std::size_t length = key == nullptr ? 0 : strnlen(key, kKeyRoom);
  return length < kKeyRoom ? std::string_view(key, length) : std::string_view();
}

// The content of a record that is read, where its length deviates.
box::Bytes resized(box::Bytes content, box::Way way) {
  if (way == box::Way::kShort && !content.empty()) content.pop_back();
  if (way == box::Way::kLong) content.push_back(0);
  return content;
}

int32_t hand_over(const box::Bytes &found, void **record, int32_t *size) {
  if (found.size() > INT_MAX) return LMAINTE_HOST_DB_STORAGE;
  void *copy = std::malloc(found.empty() ? 1 : found.size());
  if (copy == nullptr) return LMAINTE_HOST_DB_STORAGE;
  if (!found.empty()) std::memcpy(copy, found.data(), found.size());
  *record = copy;
  *size = static_cast<int32_t>(found.size());
  return 0;
}

int32_t open_session(uint32_t db_id) {
  if (db_id >= sessions.size()) return LMAINTE_HOST_DB_ARGUMENT;
  if (is_refused(box::PointKind::kOpen, db_id)) return LMAINTE_HOST_DB_STORAGE;
  if (sessions[db_id]) return LMAINTE_HOST_DB_SESSION;
  try {
    sessions[db_id] = std::make_unique<box::Database>(box::Place::here().database(db_id));
    return 0;
  } catch (...) {
    return LMAINTE_HOST_DB_STORAGE;
  }
}

// A lock still held is given back, and what was put under it is dropped.
int32_t close_session(uint32_t db_id) {
  if (db_id >= sessions.size()) return LMAINTE_HOST_DB_ARGUMENT;
  if (is_refused(box::PointKind::kClose, db_id)) return LMAINTE_HOST_DB_STORAGE;
  if (!sessions[db_id]) return LMAINTE_HOST_DB_SESSION;
  sessions[db_id].reset();
  return 0;
}

int32_t lock_session(uint32_t db_id) {
  if (db_id >= sessions.size()) return LMAINTE_HOST_DB_ARGUMENT;
  const box::Way way = platform::reach(box::PointKind::kLock, box::kDatabaseNames[db_id]).way;
  if (way == box::Way::kRefused) return LMAINTE_HOST_DB_STORAGE;
  if (way == box::Way::kBusy) {
    sleep(static_cast<unsigned>(box::kLockPatience.count()));
    return LMAINTE_HOST_DB_BUSY;
  }
  return with_session(db_id, [](box::Database &database) -> int32_t {
    if (database.locked()) return LMAINTE_HOST_DB_SESSION;
    return database.lock() ? 0 : LMAINTE_HOST_DB_BUSY;
  });
}

int32_t unlock_session(uint32_t db_id) {
  if (is_refused(box::PointKind::kUnlock, db_id)) return LMAINTE_HOST_DB_STORAGE;
  return with_session(db_id, [](box::Database &database) -> int32_t {
    if (!database.locked()) return LMAINTE_HOST_DB_SESSION;
    return database.unlock() ? 0 : LMAINTE_HOST_DB_STORAGE;
  });
}

int32_t get_record(uint32_t db_id, std::string_view name, void **record, int32_t *size, uint32_t flags) {
  if (name.empty() || record == nullptr || size == nullptr || flags != 0) return LMAINTE_HOST_DB_ARGUMENT;
  const box::Way way = platform::reach(box::PointKind::kRead, name).way;
  if (way == box::Way::kRefused) return LMAINTE_HOST_DB_STORAGE;
  if (way == box::Way::kMissing) return LMAINTE_HOST_DB_ABSENT;
  return with_session(db_id, [&](box::Database &database) -> int32_t {
    const auto found = database.get(name);
    if (!found) return LMAINTE_HOST_DB_ABSENT;
    if (way == box::Way::kShort || way == box::Way::kLong) return hand_over(resized(*found, way), record, size);
    return hand_over(*found, record, size);
  });
}

int32_t put_record(uint32_t db_id, std::string_view name, const void *data, int32_t size, uint32_t flags) {
  if (name.empty() || data == nullptr || size < 0 || flags != 0) return LMAINTE_HOST_DB_ARGUMENT;
  if (platform::is_refused(box::PointKind::kWrite, name)) return LMAINTE_HOST_DB_STORAGE;
  return with_session(db_id, [&](box::Database &database) {
    database.put(name, {static_cast<const std::uint8_t *>(data), static_cast<std::size_t>(size)});
    return 0;
  });
}

// A call that only names its database.
template <typename Step>
int32_t keep(box::CallKind kind, uint32_t recorded_as, uint32_t db_id, Step step) {
  const uint64_t began = lmainte_record_begin();
  platform::KeptCall call(kind, {}, db_id);
  return lmainte_record_session(recorded_as, began, db_id, call.ends_with(step(db_id)));
}

}  // namespace

int32_t scdb_open(uint32_t db_id) {
  return keep(box::CallKind::kOpen, LMAINTE_RECORD_OPEN, db_id, open_session);
}

int32_t scdb_close(uint32_t db_id) {
  return keep(box::CallKind::kClose, LMAINTE_RECORD_CLOSE, db_id, close_session);
}

int32_t scdb_lock(uint32_t db_id) {
  return keep(box::CallKind::kLock, LMAINTE_RECORD_LOCK, db_id, lock_session);
}

int32_t scdb_unlock(uint32_t db_id) {
  return keep(box::CallKind::kUnlock, LMAINTE_RECORD_UNLOCK, db_id, unlock_session);
}

int32_t scdb_get(uint32_t db_id, const char *key, void **record, int32_t *size, uint32_t flags) {
  const uint64_t began = lmainte_record_begin();
  const std::string_view name = name_in(key);
  platform::KeptCall call(box::CallKind::kRead, name, db_id);
  const int32_t result = get_record(db_id, name, record, size, flags);
  if (result == 0) call.set_second(static_cast<uint32_t>(*size));
  return lmainte_record_get(began, db_id, key, record, size, call.ends_with(result));
}

int32_t lcmn_scdb_put(uint32_t db_id, const char *key, const void *data, int32_t size, uint32_t flags) {
  const uint64_t began = lmainte_record_begin();
  const std::string_view name = name_in(key);
  platform::KeptCall call(box::CallKind::kWrite, name, db_id, static_cast<uint32_t>(size));
  const int32_t result = call.ends_with(put_record(db_id, name, data, size, flags));
  return lmainte_record_put(began, db_id, key, data, size, result);
}
