#include "include/lmainte.h"

#include "include/lmainte_platform.h"
#include "src/db/record_kinds.h"
#include "src/db/record_name.h"
#include "src/frame/trace.h"

// The database module: the sessions, and the records that are read and written within them.

namespace {

using lmainte::Block;
using lmainte::Call;

lmainte::Trace trace;
constexpr Block kFindSession = lmainte::second_block(0x005);
constexpr Block kCheckLockOrder = lmainte::second_block(0x006);
constexpr Block kMakeKey = lmainte::second_block(0x007);
constexpr Block kGet = lmainte::second_block(0x008);
constexpr Block kLockedGet = lmainte::second_block(0x009);
constexpr Block kPut = lmainte::second_block(0x01D);

struct Session {
  uint32_t db_id;
  int32_t open_count;
  int32_t lock_count;
};

constexpr uint32_t kEndOfSessions = 0xFFFFFFFF;
constexpr int32_t kRefused = -1;

Session lmainte_scdb_session[] = {
    {LMAINTE_DB_GEN, 0, 0}, {LMAINTE_DB_SETUP, 0, 0},    {LMAINTE_DB_CURRENT, 0, 0}, {LMAINTE_DB_LOCAL, 0, 0},
    {LMAINTE_DB_FRU, 0, 0}, {LMAINTE_DB_RESERVED, 0, 0}, {kEndOfSessions, -1, -1},
};

Session *lmainte_scdb_find_session(uint32_t db_id) {
  Call call(trace, kFindSession);
  for (Session *session = lmainte_scdb_session; session->db_id != kEndOfSessions; ++session)
    if (session->db_id == db_id) return session;
  call.error(1, db_id);
  return nullptr;
}

// Databases are locked in ascending and unlocked in descending order by every process, so that no two of them can wait
// for each other.
int32_t lmainte_scdb_check_lock_order(uint32_t db_id) {
  Call call(trace, kCheckLockOrder);
  for (const Session *session = lmainte_scdb_session; session->db_id != kEndOfSessions; ++session) {
    if (static_cast<int32_t>(session->db_id) > static_cast<int32_t>(db_id) && session->lock_count > 0) {
      call.error(1, db_id, session->db_id);
      return kRefused;
    }
  }
  return LMAINTE_OK;
}

// One of the four things that users do with a session. Taking is done by the first user, giving back by the last one.
struct Step {
  Block block;
  int32_t Session::*count;
  int32_t change;
  int32_t (*client)(uint32_t);
  bool is_lock;
};

constexpr Step kOpenSession = {lmainte::second_block(0x001), &Session::open_count, +1, scdb_open, false};
constexpr Step kCloseSession = {lmainte::second_block(0x002), &Session::open_count, -1, scdb_close, false};
constexpr Step kLockSession = {lmainte::second_block(0x003), &Session::lock_count, +1, scdb_lock, true};
constexpr Step kUnlockSession = {lmainte::second_block(0x004), &Session::lock_count, -1, scdb_unlock, true};

bool client_agrees(const Call &call, const Step &step, uint32_t db_id) {
  if (step.is_lock) {
    const int32_t order = lmainte_scdb_check_lock_order(db_id);
    if (order != LMAINTE_OK) {
      call.error(3, order, db_id);
      return false;
    }
  }
  const int32_t result = step.client(db_id);
  if (result != LMAINTE_OK) call.system_error(step.is_lock ? 4 : 3, result, db_id);
  return result == LMAINTE_OK;
}

// A step that the client refuses leaves the count as it was: a failed last close is asked of the client again by the
// next.
int32_t perform(const Step &step, uint32_t db_id) {
  Call call(trace, step.block);
  Session *session = lmainte_scdb_find_session(db_id);
  if (session == nullptr) {
    call.error(1, db_id);
    return kRefused;
  }
  int32_t &count = session->*step.count;
  const int32_t turning_point = step.change > 0 ? 0 : 1;
  if (count < turning_point) {
    call.error(2, db_id, count);
    return kRefused;
  }
  if (count == turning_point && !client_agrees(call, step, db_id)) return kRefused;
  count += step.change;
  if (!step.is_lock) call.point(2, count);
  return LMAINTE_OK;
}

struct Key {
  lmainte::RecordName name;
  int32_t size = 0;
};

uint32_t lmainte_scdb_make_key(const lmainte::Coordinates &at, Key &key) {
  Call call(trace, kMakeKey);
  const lmainte::RecordKind *kind = lmainte::kind_of(at);
  if (kind == nullptr) {
    call.error(1, at.db_id, at.model);
    call.error(2, at.unit_type, at.unit_no);
    return LMAINTE_FAILED;
  }
  key.name = lmainte::RecordName(kind->shape.name, static_cast<int32_t>(at.unit_no + kind->first_number));
  key.size = kind->shape.size;
  return LMAINTE_OK;
}

// Makes the record's key, or records at the function's first error why there is none.
bool make_key(const Call &call, const lmainte::Coordinates &at, Key &key) {
  const uint32_t result = lmainte_scdb_make_key(at, key);
  if (result != LMAINTE_OK) call.error(1, result);
  return result == LMAINTE_OK;
}

// Whatever the client hands over is the caller's, also when the read fails.
uint32_t read_record(const Call &call, lmainte::Point client_event, lmainte::Point size_event, uint32_t db_id,
                     const Key &key, void **buf) {
  int32_t size = 0;
  const int32_t result = scdb_get(db_id, key.name.text(), buf, &size, 0);
  if (result == LMAINTE_OK && size == key.size) return LMAINTE_OK;
  call.system_error(client_event, result, db_id);
  call.error(size_event, key.size, size);
  return LMAINTE_FAILED;
}

}  // namespace

int32_t lmainte_scdb_open(uint32_t db_id) {
  return perform(kOpenSession, db_id);
}

int32_t lmainte_scdb_close(uint32_t db_id) {
  return perform(kCloseSession, db_id);
}

int32_t lmainte_scdb_lock(uint32_t db_id) {
  return perform(kLockSession, db_id);
}

int32_t lmainte_scdb_unlock(uint32_t db_id) {
  return perform(kUnlockSession, db_id);
}

uint32_t lmainte_scdb_get(uint32_t db_id, uint32_t model, int32_t unit_type, uint32_t unit_no, void **buf) {
  Call call(trace, kGet);
  Key key;
  if (!make_key(call, {db_id, model, unit_type, unit_no}, key)) return LMAINTE_FAILED;
  return read_record(call, 2, 3, db_id, key, buf);
}

uint32_t lmainte_scdb_lget(uint32_t db_id, uint32_t model, int32_t unit_type, uint32_t unit_no, void **buf) {
  Call call(trace, kLockedGet);
  Key key;
  if (!make_key(call, {db_id, model, unit_type, unit_no}, key)) return LMAINTE_FAILED;
  const int32_t locked = lmainte_scdb_lock(db_id);
  if (locked != LMAINTE_OK) {
    call.error(2, locked, db_id);
    return LMAINTE_FAILED;
  }
  const uint32_t result = read_record(call, 3, 4, db_id, key, buf);
  const int32_t unlocked = lmainte_scdb_unlock(db_id);
  if (unlocked == LMAINTE_OK) return result;
  call.error(5, unlocked, db_id);
  return LMAINTE_FAILED;
}

uint32_t lmainte_scdb_put(uint32_t db_id, uint32_t model, int32_t unit_type, uint32_t unit_no, const void *data) {
  Call call(trace, kPut);
  Key key;
  if (!make_key(call, {db_id, model, unit_type, unit_no}, key)) return LMAINTE_FAILED;
  const int32_t result = lcmn_scdb_put(db_id, key.name.text(), data, key.size, 0);
  // The client is asked with a null record too, and must cope with it.
  if (result == LMAINTE_OK && data != nullptr) return LMAINTE_OK;
  call.system_error(2, result, db_id);
  return LMAINTE_FAILED;
}
