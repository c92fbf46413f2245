#include "host/box/store.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <system_error>
#include <utility>

#include "host/base/process_id.h"
#include "host/box/seal.h"

namespace box {
namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;

constexpr milliseconds kLongestPause{5};
constexpr std::size_t kLongestKey = 510;  // LMDB's longest, less the byte for the database
constexpr mode_t kFileMode = 0666;        // less the umask

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

std::span<const std::uint8_t> bytes_in(const MDB_val &value) {
  return {static_cast<const std::uint8_t *>(value.mv_data), value.mv_size};
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
    store.file_.check();
    const int result = store.reader_ == nullptr ? mdb_txn_begin(store.env_, nullptr, MDB_RDONLY, &store.reader_)
                                                : mdb_txn_renew(store.reader_);
    if (result != 0) throw store.file_.failure("read", result);
  }
  ~Reading() { mdb_txn_reset(store_.reader_); }
  Reading(const Reading &) = delete;
  Reading &operator=(const Reading &) = delete;

 private:
  Gate gate_;
  Store &store_;
  InDataFile here_;
};

std::shared_ptr<Store> Store::in(const fs::path &folder, bool create) {
  struct Kept {
    std::weak_ptr<Store> store;
    KnownSave known;
  };
  static std::map<FolderId, Kept> all_kept;
  if (create) {
    std::error_code error;
    fs::create_directories(folder, error);
    if (error)
      throw std::runtime_error("databases in " + folder.string() + ": cannot make the folder: " + error.message());
  }
  Kept &kept = all_kept[id_of(folder)];
  std::shared_ptr<Store> store = kept.store.lock();
  if (!store || store->foreign()) {
    store.reset(new Store(folder, create, kept.known));
    kept.store = store;
  }
  return store;
}

Store::Store(const fs::path &folder, bool create, KnownSave &known)
    : file_(folder, known), process_(base::process_id()) {
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

void Store::open(bool create) {
  file_.check_kind(create);
  if (!locks_.open(file_.folder() / "locks")) throw file_.failure("open its file 'locks'", errno);
  if (file_.has_holes() && locks_.why_only_read() == 0) {
    const Gate gate(locks_, Gate::For::kSaving, readings_);
    check_open(gate);
    file_.fill_holes();
  }
  {
    const Gate gate(locks_, create ? Gate::For::kSaving : Gate::For::kReading, readings_);
    check_open(gate);
    file_.examine_unopened();
    open_with_lmdb();
  }
  const Reading reading(*this);
  if (int result = mdb_dbi_open(reader_, nullptr, 0, &records_); result != 0) throw file_.failure("open", result);
}

// The gate does what LMDB's own lock file would do. That one is mapped, and a full disk kills who writes to such a file.
void Store::open_with_lmdb() {
  const InDataFile here;
  if (int result = mdb_env_create(&env_); result != 0) throw file_.failure("open", result);
  mdb_env_set_mapsize(env_, kMapSize);
  const unsigned only_read = locks_.why_only_read() == 0 ? 0 : MDB_RDONLY;
  const unsigned flags = MDB_NOLOCK | MDB_NOTLS | only_read;
  if (int result = mdb_env_open(env_, file_.folder().c_str(), flags, kFileMode); result != 0) {
    throw file_.failure("open", result);
  }
  file_.opened(env_);
}

bool Store::foreign() const {
  return process_ != base::process_id();
}

void Store::check_process() const {
  if (foreign()) {
    throw file_.failure("use it", "it was opened by process " + std::to_string(process_) +
                                      ", before the fork. Open it anew in this process");
  }
}

bool Store::exclude(std::uint32_t number, milliseconds patience) const {
  const int error = locks_.take(number, LockFile::Way::kAlone, patience, kLongestPause);
  if (error != 0 && error != EAGAIN) throw file_.failure("lock database " + std::to_string(number), error);
  return error == 0;
}

void Store::admit(std::uint32_t number) const {
  locks_.give_back(number);
}

void Store::check_record(std::string_view key, std::size_t size) const {
  const auto cannot_write = [&](const auto &reason) {
    return file_.failure("write '" + std::string(key) + "'", reason);
  };
  if (key.empty()) throw cannot_write("a record has a name");
  if (key.size() > kLongestKey) {
    throw cannot_write("its name is longer than " + std::to_string(kLongestKey) + " bytes");
  }
  if (size > kMapSize) throw cannot_write(MDB_MAP_FULL);
}

std::optional<Bytes> Store::get(std::uint32_t number, std::string_view key) {
  check_record(key, 0);
  const Reading reading(*this);
  const std::string whole = file_key(number, key);
  MDB_val name = value_of(whole.data(), whole.size()), record{};
  const int result = mdb_get(reader_, records_, &name, &record);
  if (result == MDB_NOTFOUND) return std::nullopt;
  if (result != 0) throw file_.failure("read '" + std::string(key) + "'", result);
  const auto bytes = bytes_in(record);
  return Bytes(bytes.begin(), bytes.end());
}

std::array<Database::Records, kStoreSize> Store::all(std::uint32_t first, std::uint32_t last) {
  std::array<Database::Records, kStoreSize> all;
  const Reading reading(*this);
  MDB_cursor *cursor = nullptr;
  if (int result = mdb_cursor_open(reader_, records_, &cursor); result != 0) throw file_.failure("list", result);
  const std::unique_ptr<MDB_cursor, decltype(&mdb_cursor_close)> closed(cursor, mdb_cursor_close);
  const std::string begin = file_key(first, "");
  MDB_val key = value_of(begin.data(), begin.size()), record{};
  int result = mdb_cursor_get(cursor, &key, &record, MDB_SET_RANGE);
  for (; result == 0; result = mdb_cursor_get(cursor, &key, &record, MDB_NEXT)) {
    const std::string_view name(static_cast<const char *>(key.mv_data), key.mv_size);
    const auto number = static_cast<std::uint32_t>(name.front() - '0');
    if (number > last) return all;
    const auto bytes = bytes_in(record);
    all.at(number).emplace_hint(all.at(number).end(), name.substr(1), Bytes(bytes.begin(), bytes.end()));
  }
  if (result != MDB_NOTFOUND) throw file_.failure("list", result);
  return all;
}

// Returns what the changes add to the sum of the records.
std::uint64_t Store::put(MDB_txn *transaction, std::uint32_t number) const {
  std::uint64_t added = 0;
  for (const auto &[key, record] : slots.at(number).changes) {
    const std::string whole = file_key(number, key);
    MDB_val name = value_of(whole.data(), whole.size()), before{};
    if (mdb_get(transaction, records_, &name, &before) == 0) added -= sum_of(whole, bytes_in(before));
    MDB_val value = value_of(record ? record->data() : nullptr, record ? record->size() : 0);
    const int result =
        record ? mdb_put(transaction, records_, &name, &value, 0) : mdb_del(transaction, records_, &name, nullptr);
    if (result != 0 && (record || result != MDB_NOTFOUND)) throw file_.failure("write '" + key + "'", result);
    if (record) added += sum_of(whole, *record);
  }
  return added;
}

void Store::put_all(MDB_txn *transaction, std::span<const std::uint32_t> numbers) {
  MDB_val key = value_of(kSealKey.data(), kSealKey.size()), value{};
  Seal seal;
  const bool is_sealed = mdb_get(transaction, records_, &key, &value) == 0 && value.mv_size == sizeof seal;
  if (is_sealed) std::memcpy(&seal, value.mv_data, sizeof seal);
  if (!is_sealed) seal.sum = file_.sum_of_records();
  for (const std::uint32_t number : numbers) seal.sum += put(transaction, number);
  seal.save = mdb_txn_id(transaction);
  value = value_of(&seal, sizeof seal);
  if (int result = mdb_put(transaction, records_, &key, &value, 0); result != 0) {
    throw file_.failure("save the changes", result);
  }
}

void Store::make_room(off_t size, std::span<const std::uint32_t> numbers) const {
  MDB_stat tree{};
  mdb_env_stat(env_, &tree);
  RoomForChanges room(file_.page());
  for (const std::uint32_t number : numbers) room.add(slots.at(number).changes);
  room.add(kSealKey.size(), sizeof(Seal));
  file_.make_room(size, room.pages(tree));
}

void Store::save(std::span<const std::uint32_t> numbers) {
  bool changed = false;
  for (const std::uint32_t number : numbers) changed = changed || !slots.at(number).changes.empty();
  if (!changed) return;
  const Gate gate(locks_, Gate::For::kSaving, readings_);
  check_open(gate);
  const InDataFile here;
  make_room(file_.check(), numbers);
  MDB_txn *transaction = nullptr;
  if (int result = mdb_txn_begin(env_, nullptr, 0, &transaction); result != 0) {
    throw file_.failure("save the changes", result);
  }
  const std::size_t save = mdb_txn_id(transaction);
  try {
    put_all(transaction, numbers);
  } catch (...) {
    mdb_txn_abort(transaction);
    throw;
  }
  if (int result = mdb_txn_commit(transaction); result != 0) throw file_.failure("save the changes", result);
  file_.saved(save);
}

void Store::check_open(const Gate &gate) const {
  if (gate.error() == 0) return;
  const char *const what = gate.is_for_saving() ? "save" : "read";
  throw gate.error() == EAGAIN ? file_.failure(what, "another process keeps it busy")
                               : file_.failure(what, gate.error());
}

}  // namespace box
