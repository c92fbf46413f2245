#include "include/lmainte.h"

#include <optional>

#include "include/lmainte_platform.h"
#include "src/db/record_kinds.h"
#include "src/db/record_name.h"
#include "src/frame/trace.h"
#include "trace_events/db.h"

// The database module: the sessions, and the records that are read and written within them.

namespace {

using lmainte::Block;
using lmainte::Call;
using lmainte::Error;
using lmainte::Point;
using trace_events::CheckLockOrder;
using trace_events::FindSession;
using trace_events::MakeKey;
using trace_events::ScdbClose;
using trace_events::ScdbGet;
using trace_events::ScdbLget;
using trace_events::ScdbLock;
using trace_events::ScdbOpen;
using trace_events::ScdbPut;
using trace_events::ScdbUnlock;

lmainte::Trace trace;
constexpr Block kFindSession = lmainte::block_of<FindSession>();
constexpr Block kCheckLockOrder = lmainte::block_of<CheckLockOrder>();
constexpr Block kMakeKey = lmainte::block_of<MakeKey>();
constexpr Block kGet = lmainte::block_of<ScdbGet>();
constexpr Block kLockedGet = lmainte::block_of<ScdbLget>();
constexpr Block kPut = lmainte::block_of<ScdbPut>();

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
  call.error(FindSession::kNoDatabase, db_id);
  return nullptr;
}

// Databases are locked in ascending and unlocked in descending order by every process, so that no two of them can wait
// for each other.
int32_t lmainte_scdb_check_lock_order(uint32_t db_id) {
  Call call(trace, kCheckLockOrder);
  for (const Session *session = lmainte_scdb_session; session->db_id != kEndOfSessions; ++session) {
    if (static_cast<int32_t>(session->db_id) > static_cast<int32_t>(db_id) && session->lock_count > 0) {
      call.error(CheckLockOrder::kHigherLocked, db_id, session->db_id);
      return kRefused;
    }
  }
  return LMAINTE_OK;
}

// One of the four things that users do with a session. The client is asked for the first user and for the last one.
struct Step {
  Block block;
  Point entry;
  int32_t Session::*count;
  int32_t change;
  int32_t (*client)(uint32_t);
  Error no_database, wrong_count, client_refused;
  std::optional<Error> out_of_order = {};  // of the two that keep the order of locks
  std::optional<Point> new_count = {};     // of the two that record it
};

constexpr Step kOpenSession = {
    .block = lmainte::block_of<ScdbOpen>(),
    .entry = ScdbOpen::kEntry,
    .count = &Session::open_count,
    .change = +1,
    .client = scdb_open,
    .no_database = ScdbOpen::kNoDatabase,
    .wrong_count = ScdbOpen::kWrongCount,
    .client_refused = ScdbOpen::kClientRefused,
    .new_count = Point(ScdbOpen::kCount),
};
constexpr Step kCloseSession = {
    .block = lmainte::block_of<ScdbClose>(),
    .entry = ScdbClose::kEntry,
    .count = &Session::open_count,
    .change = -1,
    .client = scdb_close,
    .no_database = ScdbClose::kNoDatabase,
    .wrong_count = ScdbClose::kNotOpen,
    .client_refused = ScdbClose::kClientRefused,
    .new_count = Point(ScdbClose::kCount),
};
constexpr Step kLockSession = {
    .block = lmainte::block_of<ScdbLock>(),
    .entry = ScdbLock::kEntry,
    .count = &Session::lock_count,
    .change = +1,
    .client = scdb_lock,
    .no_database = ScdbLock::kNoDatabase,
    .wrong_count = ScdbLock::kWrongCount,
    .client_refused = ScdbLock::kClientRefused,
    .out_of_order = Error(ScdbLock::kOutOfOrder),
};
constexpr Step kUnlockSession = {
    .block = lmainte::block_of<ScdbUnlock>(),
    .entry = ScdbUnlock::kEntry,
    .count = &Session::lock_count,
    .change = -1,
    .client = scdb_unlock,
    .no_database = ScdbUnlock::kNoDatabase,
    .wrong_count = ScdbUnlock::kNotLocked,
    .client_refused = ScdbUnlock::kClientRefused,
    .out_of_order = Error(ScdbUnlock::kOutOfOrder),
};

bool client_agrees(const Call &call, const Step &step, uint32_t db_id) {
  if (step.out_of_order) {
    const int32_t order = lmainte_scdb_check_lock_order(db_id);
    if (order != LMAINTE_OK) {
      call.error(*step.out_of_order, order, db_id);
      return false;
    }
  }
  const int32_t result = step.client(db_id);
  if (result != LMAINTE_OK) call.system_error(step.client_refused, result, db_id);
  return result == LMAINTE_OK;
}

// The count stays as it was when the client refuses: after a failed last close, the next close asks the client again.
int32_t perform(const Step &step, uint32_t db_id) {
  Call call(trace, step.block, step.entry);
  Session *session = lmainte_scdb_find_session(db_id);
  if (session == nullptr) {
    call.error(step.no_database, db_id);
    return kRefused;
  }
  int32_t &count = session->*step.count;
  const int32_t turning_point = step.change > 0 ? 0 : 1;
  if (count < turning_point) {
    call.error(step.wrong_count, db_id, count);
    return kRefused;
  }
  if (count == turning_point && !client_agrees(call, step, db_id)) return kRefused;
  count += step.change;
  if (step.new_count) call.point(*step.new_count, count);
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
    call.error(MakeKey::kNoRecord, at.db_id, at.model);
    call.error(MakeKey::kNoRecordOfUnit, at.unit_type, at.unit_no);
    return LMAINTE_FAILED;
  }
  key.name.fill(kind->shape.name, static_cast<int32_t>(at.unit_no + kind->first_number));
  key.size = kind->shape.size;
  return LMAINTE_OK;
}

// Makes the record's key, or records this error.
bool make_key(const Call &call, const Error &no_record, const lmainte::Coordinates &at, Key &key) {
  const uint32_t result = lmainte_scdb_make_key(at, key);
  if (result != LMAINTE_OK) call.error(no_record, result);
  return result == LMAINTE_OK;
}

struct ReadErrors {
  Error not_read, other_size;
};

constexpr ReadErrors kGetErrors = {
    .not_read = ScdbGet::kNotRead,
    .other_size = ScdbGet::kOtherSize,
};
constexpr ReadErrors kLockedGetErrors = {
    .not_read = ScdbLget::kNotRead,
    .other_size = ScdbLget::kOtherSize,
};

// Whatever the client hands over belongs to the caller, also when the read fails.
uint32_t read_record(const Call &call, const ReadErrors &errors, uint32_t db_id, const Key &key, void **buf) {
  int32_t size = 0;
  const int32_t result = scdb_get(db_id, key.name.text(), buf, &size, 0);
  if (result == LMAINTE_OK && size == key.size) return LMAINTE_OK;
  call.system_error(errors.not_read, result, db_id);
  call.error(errors.other_size, key.size, size);
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
  if (!make_key(call, ScdbGet::kNoRecord, {db_id, model, unit_type, unit_no}, key)) return LMAINTE_FAILED;
  return read_record(call, kGetErrors, db_id, key, buf);
}

uint32_t lmainte_scdb_lget(uint32_t db_id, uint32_t model, int32_t unit_type, uint32_t unit_no, void **buf) {
  Call call(trace, kLockedGet);
  Key key;
  if (!make_key(call, ScdbLget::kNoRecord, {db_id, model, unit_type, unit_no}, key)) return LMAINTE_FAILED;
  const int32_t locked = lmainte_scdb_lock(db_id);
  if (locked != LMAINTE_OK) {
    call.error(ScdbLget::kNotLocked, locked, db_id);
    return LMAINTE_FAILED;
  }
  const uint32_t result = read_record(call, kLockedGetErrors, db_id, key, buf);
  const int32_t unlocked = lmainte_scdb_unlock(db_id);
  if (unlocked == LMAINTE_OK) return result;
  call.error(ScdbLget::kNotUnlocked, unlocked, db_id);
  return LMAINTE_FAILED;
}

uint32_t lmainte_scdb_put(uint32_t db_id, uint32_t model, int32_t unit_type, uint32_t unit_no, const void *data) {
  Call call(trace, kPut);
  Key key;
  if (!make_key(call, ScdbPut::kNoRecord, {db_id, model, unit_type, unit_no}, key)) return LMAINTE_FAILED;
  const int32_t result = lcmn_scdb_put(db_id, key.name.text(), data, key.size, 0);
  // The client is asked with a null record too, and must cope with it.
  if (result == LMAINTE_OK && data != nullptr) return LMAINTE_OK;
  call.system_error(ScdbPut::kNotWritten, result, db_id);
  return LMAINTE_FAILED;
}
