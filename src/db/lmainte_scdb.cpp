#include "include/lmainte.h"

#include "include/lmainte_platform.h"
#include "src/frame/trace.h"

// The database module: the sessions, and the records that are read and written within them.

namespace {

using lmainte::Block;
using lmainte::Call;

lmainte::Trace trace;
constexpr Block kFindSession = lmainte::second_block(0x005);
constexpr Block kCheckLockOrder = lmainte::second_block(0x006);

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
