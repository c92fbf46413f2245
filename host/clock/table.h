// The page of a box's time as the keeper reads it: from a file that programs in the box may spoil, and so never mapped.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <set>

#include "host/base/descriptor.h"
#include "host/clock/pace.h"
#include "host/clock/page.h"

namespace box_time {

// A name in a place where somebody else may have put a link or a pipe.
class Table {
 public:
  // A new page of this name, whose first byte is the caller's; nothing where another one keeps the time. The page of an earlier
  // keeper stays as it was for those who look at it, but has no name any more. Throws std::system_error.
  static std::optional<Table> make(const std::filesystem::path &file);
  static std::optional<Table> open(const std::filesystem::path &file);  // nothing where there is none

  box_time_page read() const;  // zeros where the file was cut short

  // The keeper's part.
  void begin(const box_time_page &first) const;
  void tell(nanoseconds passed, nanoseconds wall, std::uint64_t moved) const;
  void leave() const;                                             // nobody keeps the time any more
  void free_waiter(int row, const box_time_waiter &known) const;  // unless somebody else has the row meanwhile
  void free_alarm(int row) const;
  void write_overruns(int row, std::uint64_t times) const;

  // A guest's part.
  void write_guest(int row, pid_t process) const;
  void write_waiter(int row, const box_time_waiter &waiter) const;

  // Who has the byte of this number holds it until their end. The first is the keeper's, the others are the guests'.
  bool take(int byte) const;
  bool is_taken(int byte) const;

 private:
  explicit Table(base::Descriptor &&file) : file_(std::move(file)) {}
  static Table made(const std::filesystem::path &file);
  static Table sized(Table table, const std::filesystem::path &file);
  bool is_at(const std::filesystem::path &file) const;
  bool was_used() const;
  void write(const void *what, std::size_t size, std::size_t where) const;

  base::Descriptor file_;
};

inline constexpr nanoseconds kNever(BOX_TIME_NEVER);
inline constexpr int kKeepersByte = 0, kFirstGuestsByte = 1;

}  // namespace box_time
