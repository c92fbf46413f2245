#include "host/box/store.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <system_error>
#include <utility>

#include "host/box/lmdb_text.h"

namespace box {
namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;

constexpr milliseconds kBetweenTries{5};
constexpr std::size_t kMapSize = std::size_t{64} << 20U;  // address space; the file grows as records come
constexpr std::size_t kLongestKey = 510;                  // LMDB's longest, less the byte for the database
constexpr std::size_t kGrowth = std::size_t{256} << 10U;
constexpr mode_t kFileMode = 0666;  // less the umask

// A folder's identity, whatever path leads to it.
using FolderId = std::pair<dev_t, ino_t>;

FolderId id_of(const fs::path &folder) {
  struct stat status {};
  if (stat(folder.c_str(), &status) != 0) {
    throw std::runtime_error("databases in " + folder.string() + ": cannot open: " + std::strerror(errno) +
                             ". The folder is no part of a complete box.");
  }
  return {status.st_dev, status.st_ino};
}

MDB_val value_of(const void *data, std::size_t size) {
  return {size, const_cast<void *>(data)};  // LMDB only reads through the values that it is given
}

// A key of the file: the number of the database and the key of the record.
std::string file_key(std::uint32_t number, std::string_view key) {
  return static_cast<char>('0' + number) + std::string(key);
}

}  // namespace

// What was last saved, for as long as this lives. Throws where the file is not whole.
class Store::Reading {
 public:
  explicit Reading(Store &store) : gate_(store.locks_, Gate::For::kReading, store.readings_), store_(store) {
    store.check_open(gate_);
    store.check_whole();
    const int result = store.reader_ == nullptr ? mdb_txn_begin(store.env_, nullptr, MDB_RDONLY, &store.reader_)
                                                : mdb_txn_renew(store.reader_);
    if (result != 0) throw store.failure("read", result);
  }
  ~Reading() { mdb_txn_reset(store_.reader_); }
  Reading(const Reading &) = delete;
  Reading &operator=(const Reading &) = delete;

 private:
  Gate gate_;
  Store &store_;
};

std::shared_ptr<Store> Store::in(const fs::path &folder, bool create) {
  static std::map<FolderId, std::weak_ptr<Store>> open_ones;
  if (create) {
    std::error_code error;
    fs::create_directories(folder, error);
    if (error)
      throw std::runtime_error("databases in " + folder.string() + ": cannot make the folder: " + error.message());
  }
  std::weak_ptr<Store> &known = open_ones[id_of(folder)];
  std::shared_ptr<Store> store = known.lock();
  if (!store || store->foreign()) {
    store.reset(new Store(folder, create));
    known = store;
  }
  return store;
}

Store::Store(fs::path folder, bool create) : folder_(std::move(folder)), process_(getpid()) {
  try {
    open(create);
  } catch (...) {
    release();
    throw;
  }
}

Store::~Store() {
  // A child of fork leaves what its parent opened alone, closing included.
  if (!foreign()) release();
}

void Store::release() {
  if (reader_ != nullptr) mdb_txn_abort(reader_);
  if (env_ != nullptr) mdb_env_close(env_);
}

// Neither file may be a link, which would lead out of the box. LMDB takes an empty file for a new one: it is none.
void Store::check_file(bool create) const {
  struct stat status {};
  if (lstat((folder_ / "data.mdb").c_str(), &status) == 0) {
    if (!S_ISREG(status.st_mode)) throw failure("open", "data.mdb is no file");
    if (status.st_size == 0) throw failure("open", std::string("data.mdb is damaged: it is empty.") + kRemake);
  } else if (!create && fs::is_directory(folder_ / "box")) {
    throw failure("open", std::string("an older spbox made this box and kept its databases in another form. Dump it ") +
                              "with that spbox and load the dump, or make the box anew.");
  } else if (!create) {
    throw failure("open", "it holds no data.mdb");
  }
}

void Store::open(bool create) {
  check_file(create);
  if (!locks_.open(folder_ / "locks")) throw failure("open its file 'locks'", errno);
  if (int result = mdb_env_create(&env_); result != 0) throw failure("open", result);
  mdb_env_set_mapsize(env_, kMapSize);
  // The gate does what LMDB's own lock file would do. That one is mapped, and a full disk kills who writes to such a file.
  if (int result = mdb_env_open(env_, folder_.c_str(), MDB_NOLOCK | MDB_NOTLS, kFileMode); result != 0) {
    throw failure("open", result);
  }
  mdb_env_get_fd(env_, &data_file_);
  fcntl(data_file_, F_SETFD, FD_CLOEXEC);
  MDB_stat sizes{};
  mdb_env_stat(env_, &sizes);
  page_ = sizes.ms_psize;
  fill_holes();
  const Reading reading(*this);
  if (int result = mdb_dbi_open(reader_, nullptr, 0, &records_); result != 0) throw failure("open", result);
}

// The file is read through memory: what is missing of it would kill the reader. Returns its size.
off_t Store::check_whole() const {
  struct stat status {};
  if (fstat(data_file_, &status) != 0) throw failure("read", errno);
  std::size_t needed = 2 * page_;
  if (static_cast<std::size_t>(status.st_size) >= needed) {
    MDB_envinfo info{};
    mdb_env_info(env_, &info);
    needed = (info.me_last_pgno + 1) * page_;
  }
  if (static_cast<std::size_t>(status.st_size) >= needed) return status.st_size;
  throw failure("read", "data.mdb is damaged: it is cut short, has " + std::to_string(status.st_size) +
                            " bytes and should have " + std::to_string(needed) + "." + kRemake);
}

// A copy may have holes where there were zeros, and on some file systems a full disk kills who reads one.
void Store::fill_holes() const {
  struct stat status {};
  if (fstat(data_file_, &status) != 0 || status.st_blocks * 512 >= status.st_size) return;
  const Gate gate(locks_, Gate::For::kSaving, readings_);
  check_open(gate);
  if (posix_fallocate(data_file_, 0, status.st_size) != ENOSPC) return;
  throw failure("open", std::string("data.mdb is a copy with holes, and the disk has no room for them: ") +
                            std::strerror(ENOSPC));
}

// The file has its room on the disk before LMDB writes there, and is never shorter than what LMDB says of it.
void Store::make_room(off_t size, std::span<const std::uint32_t> numbers) const {
  constexpr std::size_t kOfFreePages = 32, kFreeInAPage = 128;  // LMDB's own list of them
  MDB_envinfo info{};
  mdb_env_info(env_, &info);
  const std::size_t used = info.me_last_pgno + 1;
  MDB_stat tree{};
  mdb_env_stat(env_, &tree);
  RoomForChanges room(page_);
  for (const std::uint32_t number : numbers) room.add(slots.at(number).changes);
  const std::size_t pages = used + used / kFreeInAPage + kOfFreePages + room.pages(tree);
  if (pages * page_ <= static_cast<std::size_t>(size)) return;
  const auto whole = static_cast<off_t>(std::min((pages * page_ + kGrowth - 1) / kGrowth * kGrowth, kMapSize));
  if (const int error = posix_fallocate(data_file_, 0, whole); error != 0) throw failure("save the changes", error);
}

bool Store::foreign() const {
  return process_ != getpid();
}

void Store::check_process() const {
  if (foreign()) {
    throw failure("use it", "it was opened by process " + std::to_string(process_) +
                                ", before the fork. Open it anew in this process");
  }
}

bool Store::exclude(std::uint32_t number, milliseconds patience) const {
  const int error = locks_.take(number, LockFile::Way::kAlone, patience, kBetweenTries);
  if (error != 0 && error != EAGAIN) throw failure("lock database " + std::to_string(number), error);
  return error == 0;
}

void Store::admit(std::uint32_t number) const {
  locks_.give_back(number);
}

void Store::check_record(std::string_view key, std::size_t size) const {
  const std::string what = "write '" + std::string(key) + "'";
  if (key.empty()) throw failure(what, "a record has a name");
  if (key.size() > kLongestKey) {
    throw failure(what, "its name is longer than " + std::to_string(kLongestKey) + " bytes");
  }
  if (size > kMapSize) throw failure(what, MDB_MAP_FULL);
}

std::optional<Bytes> Store::get(std::uint32_t number, std::string_view key) {
  check_record(key, 0);
  const Reading reading(*this);
  const std::string whole = file_key(number, key);
  MDB_val name = value_of(whole.data(), whole.size()), record{};
  const int result = mdb_get(reader_, records_, &name, &record);
  if (result == MDB_NOTFOUND) return std::nullopt;
  if (result != 0) throw failure("read '" + std::string(key) + "'", result);
  const auto *const bytes = static_cast<const std::uint8_t *>(record.mv_data);
  return Bytes(bytes, bytes + record.mv_size);
}

std::array<Database::Records, kStoreSize> Store::all(std::uint32_t first, std::uint32_t last) {
  std::array<Database::Records, kStoreSize> all;
  const Reading reading(*this);
  MDB_cursor *cursor = nullptr;
  if (int result = mdb_cursor_open(reader_, records_, &cursor); result != 0) throw failure("list", result);
  const std::unique_ptr<MDB_cursor, decltype(&mdb_cursor_close)> closed(cursor, mdb_cursor_close);
  const std::string begin = file_key(first, "");
  MDB_val key = value_of(begin.data(), begin.size()), record{};
  int result = mdb_cursor_get(cursor, &key, &record, MDB_SET_RANGE);
  for (; result == 0; result = mdb_cursor_get(cursor, &key, &record, MDB_NEXT)) {
    const std::string_view name(static_cast<const char *>(key.mv_data), key.mv_size);
    const auto number = static_cast<std::uint32_t>(name.front() - '0');
    if (number > last) return all;
    const auto *const bytes = static_cast<const std::uint8_t *>(record.mv_data);
    all.at(number).emplace_hint(all.at(number).end(), name.substr(1), Bytes(bytes, bytes + record.mv_size));
  }
  if (result != MDB_NOTFOUND) throw failure("list", result);
  return all;
}

void Store::put(MDB_txn *transaction, std::uint32_t number) const {
  for (const auto &[key, record] : slots.at(number).changes) {
    const std::string whole = file_key(number, key);
    MDB_val name = value_of(whole.data(), whole.size());
    MDB_val value = value_of(record ? record->data() : nullptr, record ? record->size() : 0);
    const int result =
        record ? mdb_put(transaction, records_, &name, &value, 0) : mdb_del(transaction, records_, &name, nullptr);
    if (result != 0 && (record || result != MDB_NOTFOUND)) throw failure("write '" + key + "'", result);
  }
}

void Store::save(std::span<const std::uint32_t> numbers) {
  bool changed = false;
  for (const std::uint32_t number : numbers) changed = changed || !slots.at(number).changes.empty();
  if (!changed) return;
  const Gate gate(locks_, Gate::For::kSaving, readings_);
  check_open(gate);
  make_room(check_whole(), numbers);
  MDB_txn *transaction = nullptr;
  if (int result = mdb_txn_begin(env_, nullptr, 0, &transaction); result != 0)
    throw failure("save the changes", result);
  try {
    for (const std::uint32_t number : numbers) put(transaction, number);
  } catch (...) {
    mdb_txn_abort(transaction);
    throw;
  }
  if (int result = mdb_txn_commit(transaction); result != 0) throw failure("save the changes", result);
}

void Store::check_open(const Gate &gate) const {
  if (gate.error() == 0) return;
  const char *const what = gate.is_for_saving() ? "save" : "read";
  throw gate.error() == EAGAIN ? failure(what, "another process keeps it busy") : failure(what, gate.error());
}

std::runtime_error Store::failure(const std::string &what, const std::string &reason) const {
  return std::runtime_error("databases in " + folder_.string() + ": cannot " + what + ": " + reason);
}

std::runtime_error Store::failure(const std::string &what, int lmdb_result) const {
  return failure(what, lmdb_text(lmdb_result, kMapSize));
}

}  // namespace box
