// The data file of a box's databases, before LMDB uses what is in it: whether it is whole and has room.
#pragma once

#include <lmdb.h>
#include <sys/types.h>

#include <atomic>
#include <filesystem>
#include <stdexcept>
#include <string>

#include "host/box/data_pages.h"

namespace box {

inline constexpr std::size_t kMapSize = std::size_t{64} << 20U;  // address space; the file grows as records come

// The save up to which this process knows a file to be whole.
struct KnownSave {
  dev_t device = 0;
  ino_t file = 0;
  std::uint64_t number = 0;
};

class DataFile {
 public:
  // `known` outlives this.
  DataFile(std::filesystem::path folder, KnownSave &known) : folder_(std::move(folder)), known_(known) {}

  const std::filesystem::path &folder() const { return folder_; }

  // All throw where the file is not as it has to be. The caller has the gate, but for the first two.
  void check_kind(bool create) const;  // no link, not empty
  bool has_holes() const;
  void fill_holes() const;
  void examine_unopened();  // what there is of it, before LMDB sees it
  off_t check();            // that it is whole, where others may have saved. Returns its size
  void make_room(off_t size, std::size_t more) const;  // for so many pages more

  // From now on it is looked at by LMDB's descriptor.
  void opened(MDB_env *env);
  std::size_t page() const { return page_; }

  // What the next save adds its changes to, for a file without a seal.
  std::uint64_t sum_of_records() const;

  // This process has made this save.
  void saved(std::uint64_t number);

  // "databases in FOLDER: cannot WHAT: REASON"
  std::runtime_error failure(const std::string &what, const std::string &reason) const;
  std::runtime_error failure(const std::string &what, int lmdb_result) const;

 private:
  std::filesystem::path path() const { return folder_ / "data.mdb"; }
  void examine(int file);
  std::runtime_error cut_short(std::size_t size, std::uint64_t needed) const;

  std::filesystem::path folder_;
  KnownSave &known_;
  MDB_env *env_ = nullptr;
  int fd_ = -1;
  std::size_t page_ = 0;
};

// Whether this process is where a damaged file would make it crash.
bool is_in_data_file() noexcept;

class InDataFile {
 public:
  InDataFile() noexcept;
  ~InDataFile();
  InDataFile(const InDataFile &) = delete;
  InDataFile &operator=(const InDataFile &) = delete;
};

}  // namespace box
