// The trace events of src/db.
#pragma once

#include "trace_events/event.h"

namespace trace_events {

struct Db;

// lmainte_scdb_open
struct ScdbOpen : SecondBlock<Db, 0x001> {
  enum Point : Code { kCount = point(2) };
  enum Error : Code { kNoDatabase = error(1), kWrongCount, kClientRefused };
};

// lmainte_scdb_close
struct ScdbClose : SecondBlock<Db, 0x002> {
  enum Point : Code { kCount = point(2) };
  enum Error : Code { kNoDatabase = error(1), kNotOpen, kClientRefused };
};

// lmainte_scdb_lock
struct ScdbLock : SecondBlock<Db, 0x003> {
  enum Error : Code { kNoDatabase = error(1), kWrongCount, kOutOfOrder, kClientRefused };
};

// lmainte_scdb_unlock
struct ScdbUnlock : SecondBlock<Db, 0x004> {
  enum Error : Code { kNoDatabase = error(1), kNotLocked, kOutOfOrder, kClientRefused };
};

// What the four have in common: the session of a database, and the order in which databases are locked.
struct FindSession : SecondBlock<Db, 0x005> {
  enum Error : Code { kNoDatabase = error(1) };
};
struct CheckLockOrder : SecondBlock<Db, 0x006> {
  enum Error : Code { kHigherLocked = error(1) };
};

// The name of a record, for the three below
struct MakeKey : SecondBlock<Db, 0x007> {
  enum Error : Code { kNoRecord = error(1), kNoRecordOfUnit };
};

// lmainte_scdb_get
struct ScdbGet : SecondBlock<Db, 0x008> {
  enum Error : Code { kNoRecord = error(1), kNotRead, kOtherSize };
};

// lmainte_scdb_lget
struct ScdbLget : SecondBlock<Db, 0x009> {
  enum Error : Code { kNoRecord = error(1), kNotLocked, kNotRead, kOtherSize, kNotUnlocked };
};

// lmainte_scdb_put
struct ScdbPut : SecondBlock<Db, 0x01D> {
  enum Error : Code { kNoRecord = error(1), kNotWritten };
};

// lmainte_db_get_data
struct GetData : PlainBlock<Db, 0x03A> {
  enum Error : Code { kNoTable = error(1), kNotOpened, kNotLocked, kNotRead, kOtherSize, kNotUnlocked, kNotClosed };
};

// lmainte_db_make_access_table
struct MakeAccessTable : PlainBlock<Db, 0x03B> {
  enum Error : Code { kRefused = error(1), kRefusedSize, kNoMemory };
};

// lmainte_db_free_access_table
struct FreeAccessTable : PlainBlock<Db, 0x03C> {
  enum Error : Code { kNoTable = error(1), kNeverRead };
};

struct Db : Room<ScdbOpen, ScdbClose, ScdbLock, ScdbUnlock, FindSession, CheckLockOrder, MakeKey, ScdbGet, ScdbLget,
                 ScdbPut, GetData, MakeAccessTable, FreeAccessTable> {};

}  // namespace trace_events
