#include "trace_events/db.h"
#include "host/trace_book/phrases.h"

namespace trace_book {

using namespace trace_events;

namespace {

constexpr std::array kSharedOfDatabase{
    SharedPhrase{"no-database", "no such database", kDatabase},
    SharedPhrase{"out-of-order", "out of order", kResult, kDatabase},
    SharedPhrase{"not-locked", "the database was not locked", kResult, kDatabase},
    SharedPhrase{"no-record", "there is no such record", kResult},
    SharedPhrase{"not-read", "the record was not read", kClientResult, kDatabase},
    SharedPhrase{"other-size", "the record has another size", "bytes expected", "bytes found"},
    SharedPhrase{"not-unlocked", "the database was not unlocked", kResult, kDatabase},
    SharedPhrase{"no-table", "the table is null"},
};

}  // namespace

template <>
inline constexpr Page kPage<ScdbOpen>{
    "lmainte_scdb_open",
    {
        {ScdbOpen::kCount, "one user more", "users"},
        {ScdbOpen::kWrongCount, "the count of users is wrong", kDatabase, "users"},
        {ScdbOpen::kClientRefused, "the client did not open it", kClientResult, kDatabase},
    },
};

template <>
inline constexpr Page kPage<ScdbClose>{
    "lmainte_scdb_close",
    {
        {ScdbClose::kCount, "one user less", "users"},
        {ScdbClose::kNotOpen, "it is not open", kDatabase, "users"},
        {ScdbClose::kClientRefused, "the client did not close it", kClientResult, kDatabase},
    },
};

template <>
inline constexpr Page kPage<ScdbLock>{
    "lmainte_scdb_lock",
    {
        {ScdbLock::kWrongCount, "the count of locks is wrong", kDatabase, "locks"},
        {ScdbLock::kClientRefused, "the client did not lock it", kClientResult, kDatabase},
    },
};

template <>
inline constexpr Page kPage<ScdbUnlock>{
    "lmainte_scdb_unlock",
    {
        {ScdbUnlock::kNotLocked, "it is not locked", kDatabase, "locks"},
        {ScdbUnlock::kClientRefused, "the client did not unlock it", kClientResult, kDatabase},
    },
};

template <>
inline constexpr Page kPage<FindSession>{
    "lmainte_scdb_find_session",
};

template <>
inline constexpr Page kPage<CheckLockOrder>{
    "lmainte_scdb_check_lock_order",
    {
        {CheckLockOrder::kHigherLocked, "a higher database is locked", kDatabase,
         Value{"higher database", Form::kDatabase}},
    },
};

template <>
inline constexpr Page kPage<MakeKey>{
    "lmainte_scdb_make_key",
    {
        {MakeKey::kNoRecord, "there is no such record", kDatabase, kModel},
        {MakeKey::kNoRecordOfUnit, "of the unit", "type", "number"},
    },
};

template <>
inline constexpr Page kPage<ScdbGet>{
    "lmainte_scdb_get",
};

template <>
inline constexpr Page kPage<ScdbLget>{
    "lmainte_scdb_lget",
};

template <>
inline constexpr Page kPage<ScdbPut>{
    "lmainte_scdb_put",
    {
        {ScdbPut::kNotWritten, "the record was not written", kClientResult, kDatabase},
    },
};

template <>
inline constexpr Page kPage<GetData>{
    "lmainte_db_get_data",
    {
        {GetData::kNotOpened, "the database was not opened", kResult, kDatabase},
        {GetData::kNotRead, "the record was not read", kClientResult, "index"},
        {GetData::kNotClosed, "the database was not closed", kResult, kDatabase},
    },
};

template <>
inline constexpr Page kPage<MakeAccessTable>{
    "lmainte_db_make_access_table",
    {
        {MakeAccessTable::kRefused, "an argument is refused", "first", "count"},
        {MakeAccessTable::kRefusedSize, "an argument is refused, or the name is null", "size"},
        {MakeAccessTable::kNoMemory, "no memory for the table", kErrno},
    },
};

template <>
inline constexpr Page kPage<FreeAccessTable>{
    "lmainte_db_free_access_table",
    {
        {FreeAccessTable::kNeverRead, "the record was never read", "index"},
    },
};

Functions db_functions() {
  static constexpr auto kFunctions = functions_of<kSharedOfDatabase>(Db{});
  return kFunctions;
}

}  // namespace trace_book
