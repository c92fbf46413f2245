#include "host/box/data_file.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>

#include "host/base/descriptor.h"
#include "host/box/lmdb_text.h"
#include "host/box/own_files.h"

namespace box {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kGrowth = std::size_t{256} << 10U, kLeastFile = 8192;

constinit std::atomic<int> in_data_file = 0;

// A file in memory, to be read.
class FileInMemory {
 public:
  FileInMemory(int file, std::size_t size)
      : size_(size), memory_(mmap(nullptr, size, PROT_READ, MAP_SHARED, file, 0)), error_(errno) {}
  ~FileInMemory() {
    if (memory_ != MAP_FAILED) munmap(memory_, size_);
  }
  FileInMemory(const FileInMemory &) = delete;
  FileInMemory &operator=(const FileInMemory &) = delete;

  int error() const { return memory_ == MAP_FAILED ? error_ : 0; }
  FileBytes bytes() const { return {static_cast<const std::uint8_t *>(memory_), size_}; }

 private:
  std::size_t size_;
  void *memory_;
  int error_;
};

}  // namespace

bool is_in_data_file() noexcept {
  return in_data_file > 0;
}

InDataFile::InDataFile() noexcept {
  ++in_data_file;
}

InDataFile::~InDataFile() {
  --in_data_file;
}

// The file may not be a link, which would lead out of the box. LMDB takes an empty file for a new one: it is none.
void DataFile::check_kind(bool create) const {
  struct stat status {};
  if (lstat(path().c_str(), &status) == 0) {
    if (!S_ISREG(status.st_mode)) throw failure("open", "data.mdb is no file");
    if (status.st_size == 0) throw failure("open", damaged("it is empty."));
  } else if (!create && fs::is_directory(folder_ / "box")) {
    throw failure("open", std::string("an older spbox made this box and kept its databases in another form. Dump it ") +
                              "with that spbox and load the dump, or make the box anew.");
  } else if (!create) {
    throw failure("open", "it holds no data.mdb");
  }
}

bool DataFile::has_holes() const {
  struct stat status {};
  return stat(path().c_str(), &status) == 0 && status.st_blocks * 512 < status.st_size;
}

// A copy may have holes where there were zeros, and on some file systems a full disk kills who reads one.
void DataFile::fill_holes() const {
  const base::Descriptor file(open(path().c_str(), O_RDWR | kOwnFile));
  struct stat status {};
  if (file.get() < 0 || fstat(file.get(), &status) != 0) return;
  if (posix_fallocate(file.get(), 0, status.st_size) != ENOSPC) return;
  throw failure("open", std::string("data.mdb is a copy with holes, and the disk has no room for them: ") +
                            std::strerror(ENOSPC));
}

void DataFile::examine_unopened() {
  const base::Descriptor file(open(path().c_str(), O_RDONLY | kOwnFile));
  if (file.get() >= 0) return examine(file.get());
  if (errno != ENOENT) throw failure("open", errno);
  known_ = {};
}

void DataFile::examine(int file) {
  struct stat status {};
  if (fstat(file, &status) != 0) throw failure("read", errno);
  const auto size = static_cast<std::size_t>(status.st_size);
  if (size == 0) throw cut_short(size, kLeastFile);
  const InDataFile here;
  const FileInMemory memory(file, size);
  if (memory.error() != 0) throw failure("read", memory.error());
  try {
    const Heads heads = heads_of(memory.bytes());
    if (heads.last_page >= size / heads.page) throw cut_short(size, (heads.last_page + 1) * heads.page);
    const bool is_known =
        known_.device == status.st_dev && known_.file == status.st_ino && known_.number == heads.last_save;
    if (!is_known) box::examine(memory.bytes(), heads);
    known_ = {status.st_dev, status.st_ino, heads.last_save};
  } catch (const Damage &damage) {
    throw failure("read", damaged(damage.what()));
  }
}

void DataFile::opened(MDB_env *env) {
  env_ = env;
  mdb_env_get_fd(env, &fd_);
  fcntl(fd_, F_SETFD, FD_CLOEXEC);
  MDB_stat sizes{};
  mdb_env_stat(env, &sizes);
  page_ = sizes.ms_psize;
  struct stat status {};
  if (fstat(fd_, &status) == 0) known_ = {status.st_dev, status.st_ino, known_.number};
}

// The file is read through memory: what is missing of it would kill the reader.
off_t DataFile::check() {
  const off_t end = lseek(fd_, 0, SEEK_END);  // the size, in half the time of fstat
  if (end < 0) throw failure("read", errno);
  const auto size = static_cast<std::size_t>(end);
  if (size < 2 * page_) throw cut_short(size, 2 * page_);
  MDB_envinfo info{};
  mdb_env_info(env_, &info);
  if (info.me_last_pgno >= size / page_) throw cut_short(size, (info.me_last_pgno + 1) * page_);
  if (info.me_last_txnid != known_.number) examine(fd_);
  return end;
}

std::runtime_error DataFile::cut_short(std::size_t size, std::uint64_t needed) const {
  return failure("read", damaged("it is cut short, has " + std::to_string(size) + " bytes and should have " +
                                 std::to_string(needed) + "."));
}

// The file has its room on the disk before LMDB writes there, and is never shorter than what LMDB says of it.
void DataFile::make_room(off_t size, std::size_t more) const {
  constexpr std::size_t kOfFreePages = 32, kFreeInAPage = 128;  // LMDB's own list of them
  MDB_envinfo info{};
  mdb_env_info(env_, &info);
  const std::size_t used = info.me_last_pgno + 1;
  const std::size_t pages = used + used / kFreeInAPage + kOfFreePages + more;
  if (pages * page_ <= static_cast<std::size_t>(size)) return;
  const auto whole = static_cast<off_t>(std::min((pages * page_ + kGrowth - 1) / kGrowth * kGrowth, kMapSize));
  if (const int error = posix_fallocate(fd_, 0, whole); error != 0) throw failure("save the changes", error);
}

std::uint64_t DataFile::sum_of_records() const {
  struct stat status {};
  if (fstat(fd_, &status) != 0) throw failure("read", errno);
  const FileInMemory memory(fd_, static_cast<std::size_t>(status.st_size));
  if (memory.error() != 0) throw failure("read", memory.error());
  return box::examine(memory.bytes(), heads_of(memory.bytes())).sum;
}

void DataFile::saved(std::uint64_t number) {
  note_last_save(fd_, number);
  known_.number = number;
}

std::runtime_error DataFile::failure(const std::string &what, const std::string &reason) const {
  return std::runtime_error("databases in " + folder_.string() + ": cannot " + what + ": " + reason);
}

std::runtime_error DataFile::failure(const std::string &what, int lmdb_result) const {
  return failure(what, lmdb_text(lmdb_result, kMapSize));
}

}  // namespace box
