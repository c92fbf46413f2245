#include "host/spbox/trace/phrases.h"

namespace spbox {
namespace {

constexpr Phrase kOpen[] = {
    point(2, "one user more", "users"),
    error(1, "no such database", "database"),
    error(2, "the count of users is wrong", "database", "users"),
    error(3, "the client did not open it", "client's result", "database"),
};
constexpr Phrase kClose[] = {
    point(2, "one user less", "users"),
    error(1, "no such database", "database"),
    error(2, "it is not open", "database", "users"),
    error(3, "the client did not close it", "client's result", "database"),
};
constexpr Phrase kLock[] = {
    error(1, "no such database", "database"),
    error(2, "the count of locks is wrong", "database", "locks"),
    error(3, "out of order", "result", "database"),
    error(4, "the client did not lock it", "client's result", "database"),
};
constexpr Phrase kUnlock[] = {
    error(1, "no such database", "database"),
    error(2, "it is not locked", "database", "locks"),
    error(3, "out of order", "result", "database"),
    error(4, "the client did not unlock it", "client's result", "database"),
};
constexpr Phrase kFindSession[] = {
    error(1, "no such database", "database"),
};
constexpr Phrase kCheckLockOrder[] = {
    error(1, "a higher database is locked", "database", "higher database"),
};
constexpr Phrase kMakeKey[] = {
    error(1, "there is no such record", "database", "model"),
    error(2, "of the unit", "type", "number"),
};
constexpr Phrase kGet[] = {
    error(1, "there is no such record", "result"),
    error(2, "the record was not read", "client's result", "database"),
    error(3, "the record has another size", "bytes expected", "bytes found"),
};
constexpr Phrase kLockedGet[] = {
    error(1, "there is no such record", "result"),
    error(2, "the database was not locked", "result", "database"),
    error(3, "the record was not read", "client's result", "database"),
    error(4, "the record has another size", "bytes expected", "bytes found"),
    error(5, "the database was not unlocked", "result", "database"),
};
constexpr Phrase kPut[] = {
    error(1, "there is no such record", "result"),
    error(2, "the record was not written", "client's result", "database"),
};
constexpr Phrase kGetData[] = {
    error(1, "the table is null"),
    error(2, "the database was not opened", "result", "database"),
    error(3, "the database was not locked", "result", "database"),
    error(4, "the record was not read", "client's result", "index"),
    error(5, "the record has another size", "bytes expected", "bytes found"),
    error(6, "the database was not unlocked", "result", "database"),
    error(7, "the database was not closed", "result", "database"),
};
constexpr Phrase kMakeTable[] = {
    error(1, "an argument is refused", "first", "count"),
    error(2, "an argument is refused, or the name is null", "size"),
    error(3, "no memory for the table", "errno"),
};
constexpr Phrase kFreeTable[] = {
    error(1, "the table is null"),
    error(2, "the record was never read", "index"),
};

constexpr Function kFunctions[] = {
    {"lmainte_scdb_open", Space::kSecond, 0x001, kOpen},
    {"lmainte_scdb_close", Space::kSecond, 0x002, kClose},
    {"lmainte_scdb_lock", Space::kSecond, 0x003, kLock},
    {"lmainte_scdb_unlock", Space::kSecond, 0x004, kUnlock},
    {"lmainte_scdb_find_session", Space::kSecond, 0x005, kFindSession},
    {"lmainte_scdb_check_lock_order", Space::kSecond, 0x006, kCheckLockOrder},
    {"lmainte_scdb_make_key", Space::kSecond, 0x007, kMakeKey},
    {"lmainte_scdb_get", Space::kSecond, 0x008, kGet},
    {"lmainte_scdb_lget", Space::kSecond, 0x009, kLockedGet},
    {"lmainte_scdb_put", Space::kSecond, 0x01D, kPut},
    {"lmainte_db_get_data", Space::kPlain, 0x03A, kGetData},
    {"lmainte_db_make_access_table", Space::kPlain, 0x03B, kMakeTable},
    {"lmainte_db_free_access_table", Space::kPlain, 0x03C, kFreeTable},
};

}  // namespace

Functions db_functions() {
  return kFunctions;
}

}  // namespace spbox
