#include "bench/box_rows.h"

#include <fcntl.h>
#include <lmdb.h>
#include <sqlite3.h>
#include <unistd.h>

#include <memory>
#include <string>

#include "bench/require.h"
#include "host/base/descriptor.h"
#include "host/box/database.h"

namespace {

namespace fs = std::filesystem;
using bench::require;

const std::string kKey = "fru_cmu_info_00";
const box::Bytes kRecord(8192, 0x8F);

// A record in the box's databases.
class BoxRecord {
 public:
  explicit BoxRecord(const fs::path &folder) : database_({folder, 4}, true) { write(); }

  void read() {
    require(database_.lock(), "lock");
    require(database_.get(kKey)->size() == kRecord.size(), "read");
    require(database_.unlock(), "unlock");
  }
  void write() {
    require(database_.lock(), "lock");
    database_.put(kKey, kRecord);
    require(database_.unlock(), "write");
  }

 private:
  box::Database database_;
};

// The same record in bare LMDB. A transaction that may write has LMDB's lock.
class LmdbRecord {
 public:
  explicit LmdbRecord(const fs::path &folder) {
    fs::create_directories(folder);
    require(mdb_env_create(&env_) == 0 && mdb_env_open(env_, folder.c_str(), 0, 0666) == 0, "open LMDB");
    begin();
    require(mdb_dbi_open(transaction_, nullptr, 0, &records_) == 0, "open LMDB");
    require(mdb_txn_commit(transaction_) == 0, "open LMDB");
    write();
  }
  ~LmdbRecord() { mdb_env_close(env_); }
  LmdbRecord(const LmdbRecord &) = delete;
  LmdbRecord &operator=(const LmdbRecord &) = delete;

  void read() {
    begin();
    MDB_val key = key_of(), value{};
    require(mdb_get(transaction_, records_, &key, &value) == 0, "read from LMDB");
    const auto *bytes = static_cast<const std::uint8_t *>(value.mv_data);
    const box::Bytes copy(bytes, bytes + value.mv_size);
    require(copy.size() == kRecord.size(), "read from LMDB");
    mdb_txn_abort(transaction_);
  }
  void write() {
    begin();
    MDB_val key = key_of(), value{kRecord.size(), const_cast<std::uint8_t *>(kRecord.data())};
    require(mdb_put(transaction_, records_, &key, &value, 0) == 0, "write to LMDB");
    require(mdb_txn_commit(transaction_) == 0, "write to LMDB");
  }

 private:
  static MDB_val key_of() { return {kKey.size(), const_cast<char *>(kKey.data())}; }
  void begin() { require(mdb_txn_begin(env_, nullptr, 0, &transaction_) == 0, "begin with LMDB"); }

  MDB_env *env_ = nullptr;
  MDB_txn *transaction_ = nullptr;
  MDB_dbi records_ = 0;
};

// The same record in SQLite, by statements that are prepared once.
class SqliteRecord {
 public:
  explicit SqliteRecord(const fs::path &file)
      : database_(opened(file)),
        begin_(prepare("begin immediate")),
        commit_(prepare("commit")),
        select_(prepare("select bytes from records where name = ?")),
        put_(prepare("insert or replace into records values (?, ?)")) {
    write();
  }
  ~SqliteRecord() {
    for (sqlite3_stmt *statement : {begin_, commit_, select_, put_}) sqlite3_finalize(statement);
    sqlite3_close(database_);
  }
  SqliteRecord(const SqliteRecord &) = delete;
  SqliteRecord &operator=(const SqliteRecord &) = delete;

  void read() {
    run(begin_);
    name(select_);
    require(sqlite3_step(select_) == SQLITE_ROW, "read from SQLite");
    const auto *bytes = static_cast<const std::uint8_t *>(sqlite3_column_blob(select_, 0));
    const box::Bytes copy(bytes, bytes + sqlite3_column_bytes(select_, 0));
    require(copy.size() == kRecord.size(), "read from SQLite");
    sqlite3_reset(select_);
    run(commit_);
  }
  void write() {
    run(begin_);
    name(put_);
    sqlite3_bind_blob(put_, 2, kRecord.data(), static_cast<int>(kRecord.size()), SQLITE_STATIC);
    run(put_);
    run(commit_);
  }

 private:
  static sqlite3 *opened(const fs::path &file) {
    sqlite3 *database = nullptr;
    require(sqlite3_open(file.c_str(), &database) == SQLITE_OK, "open SQLite");
    const char *const table = "create table records (name text primary key, bytes blob) without rowid";
    require(sqlite3_exec(database, table, nullptr, nullptr, nullptr) == SQLITE_OK, "make a table in SQLite");
    return database;
  }
  sqlite3_stmt *prepare(const char *text) {
    sqlite3_stmt *statement = nullptr;
    require(sqlite3_prepare_v2(database_, text, -1, &statement, nullptr) == SQLITE_OK, text);
    return statement;
  }
  static void name(sqlite3_stmt *statement) {
    sqlite3_bind_text(statement, 1, kKey.data(), static_cast<int>(kKey.size()), SQLITE_STATIC);
  }
  static void run(sqlite3_stmt *statement) {
    require(sqlite3_step(statement) == SQLITE_DONE, "run a statement of SQLite");
    sqlite3_reset(statement);
  }

  sqlite3 *database_;
  sqlite3_stmt *begin_, *commit_, *select_, *put_;
};

// A lock of the kernel, which a process that dies gives back.
class ByteLock {
 public:
  explicit ByteLock(const fs::path &file) : file_(open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666)) {}

  void set(short type) const {
    struct flock lock {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_len = 1;
    require(fcntl(file_.get(), F_SETLK, &lock) == 0, "lock a byte");
  }

 private:
  base::Descriptor file_;
};

}  // namespace

std::vector<bench::Row> bench::box_rows(const BoxFolder &folder) {
  const auto ours = std::make_shared<BoxRecord>(folder.path() / "box");
  const auto lmdb = std::make_shared<LmdbRecord>(folder.path() / "lmdb");
  const auto sqlite = std::make_shared<SqliteRecord>(folder.path() / "sqlite");
  const auto byte = std::make_shared<ByteLock>(folder.path() / "byte");
  const auto read = [ours] { ours->read(); };
  const auto write = [ours] { ours->write(); };
  const auto read_locked = [lmdb, byte] {
    byte->set(F_WRLCK);
    lmdb->read();
    byte->set(F_UNLCK);
  };
  return {
      {"read 8 KiB under lock (floor: LMDB)", [lmdb] { lmdb->read(); }, read},
      {"read 8 KiB under lock (floor: fcntl, LMDB)", read_locked, read},
      {"read 8 KiB under lock (floor: SQLite)", [sqlite] { sqlite->read(); }, read},
      {"write 8 KiB under lock (floor: LMDB)", [lmdb] { lmdb->write(); }, write},
      {"write 8 KiB under lock (floor: SQLite)", [sqlite] { sqlite->write(); }, write},
  };
}
