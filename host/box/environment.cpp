#include "host/box/environment.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <map>
#include <system_error>
#include <thread>
#include <utility>

namespace box {
namespace {

using std::chrono::steady_clock;

constexpr std::chrono::milliseconds kBetweenTries{5};
constexpr std::size_t kMapSize = std::size_t{64} << 20U;  // address space; the file grows as records come
constexpr mode_t kFileMode = 0666;                        // less the umask

struct flock whole_file(short type) {
  struct flock lock {};
  lock.l_type = type;
  lock.l_whence = SEEK_SET;
  return lock;
}

// A folder's identity, whatever path leads to it.
using FolderId = std::pair<dev_t, ino_t>;

FolderId id_of(const std::filesystem::path &folder) {
  struct stat status {};
  if (stat(folder.c_str(), &status) != 0) {
    throw std::runtime_error("database " + folder.string() + ": cannot open: " + std::strerror(errno) +
                             ". The folder is no part of a complete box.");
  }
  return {status.st_dev, status.st_ino};
}

}  // namespace

std::shared_ptr<Environment> Environment::in(const std::filesystem::path &folder, bool create) {
  static std::map<FolderId, std::weak_ptr<Environment>> open_ones;
  if (create) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error) throw std::runtime_error("database " + folder.string() + ": cannot make the folder: " + error.message());
  }
  std::weak_ptr<Environment> &known = open_ones[id_of(folder)];
  std::shared_ptr<Environment> environment = known.lock();
  if (!environment || environment->foreign()) {
    environment.reset(new Environment(folder, create));
    known = environment;
  }
  return environment;
}

Environment::Environment(std::filesystem::path folder, bool create) : folder_(std::move(folder)), process_(getpid()) {
  try {
    open(create);
    open_holder_file();
  } catch (...) {
    release();
    throw;
  }
}

Environment::~Environment() {
  // A child of fork leaves the environment alone: only the process that opened it may use it, closing included.
  if (!foreign()) release();
}

void Environment::release() {
  changes.reset();
  if (env_ != nullptr) mdb_env_close(env_);
  if (holder_file_ >= 0) close(holder_file_);  // gives the lock back
}

void Environment::open(bool create) {
  if (!create && !std::filesystem::exists(folder_ / "data.mdb")) {
    throw failure("open", std::string("it holds no data.mdb"));
  }
  if (int result = mdb_env_create(&env_); result != 0) throw failure("open", result);
  mdb_env_set_mapsize(env_, kMapSize);
  // A read transaction that is no thread's own can be begun while another one runs.
  if (int result = mdb_env_open(env_, folder_.c_str(), MDB_NOTLS, kFileMode); result != 0)
    throw failure("open", result);
  int data_file = -1;
  if (mdb_env_get_fd(env_, &data_file) == 0) fcntl(data_file, F_SETFD, FD_CLOEXEC);
  int dead_readers = 0;
  mdb_reader_check(env_, &dead_readers);  // readers that died keep no slot and no old pages
  MDB_txn *transaction = begin(MDB_RDONLY);
  int result = mdb_dbi_open(transaction, nullptr, 0, &records_);
  mdb_txn_abort(transaction);
  if (result != 0) throw failure("open", result);
}

void Environment::open_holder_file() {
  holder_file_ = ::open((folder_ / "holder").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, kFileMode);
  if (holder_file_ < 0) throw failure("open its file 'holder'", std::string(std::strerror(errno)));
}

bool Environment::foreign() const {
  return process_ != getpid();
}

void Environment::check_process() const {
  if (foreign()) {
    throw failure("use it", "it was opened by process " + std::to_string(process_) +
                                ", before the fork. Open it anew in this process");
  }
}

bool Environment::exclude(std::chrono::milliseconds patience) const {
  // A record lock belongs to the process: a child of fork does not inherit it, and the kernel takes it back from the dead.
  const steady_clock::time_point end = steady_clock::now() + patience;
  struct flock lock = whole_file(F_WRLCK);
  while (fcntl(holder_file_, F_SETLK, &lock) != 0) {
    bool held = errno == EACCES || errno == EAGAIN;
    if ((!held && errno != EINTR) || steady_clock::now() >= end) return false;
    std::this_thread::sleep_for(kBetweenTries);
  }
  return true;
}

void Environment::admit() const {
  struct flock lock = whole_file(F_UNLCK);
  fcntl(holder_file_, F_SETLK, &lock);
}

MDB_txn *Environment::begin(unsigned flags) const {
  MDB_txn *transaction = nullptr;
  if (int result = mdb_txn_begin(env_, nullptr, flags, &transaction); result != 0) {
    throw failure((flags & MDB_RDONLY) != 0 ? "read" : "write", result);
  }
  return transaction;
}

std::runtime_error Environment::failure(const char *what, const std::string &reason) const {
  return std::runtime_error("database " + folder_.string() + ": cannot " + what + ": " + reason);
}

std::runtime_error Environment::failure(const char *what, int lmdb_result) const {
  return failure(what, std::string(mdb_strerror(lmdb_result)));
}

}  // namespace box
