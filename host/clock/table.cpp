#include "host/clock/table.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <system_error>
#include <utility>

#include "host/base/byte_lock.h"

namespace box_time {
namespace {

constexpr int kOwn = O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;

base::Descriptor opened(const std::filesystem::path &file, int more) {
  base::Descriptor page(::open(file.c_str(), kOwn | more, 0666));
  struct stat status {};
  if (page.get() >= 0 && fstat(page.get(), &status) == 0 && !S_ISREG(status.st_mode)) {
    page.reset();
    errno = EINVAL;
  }
  return page;
}

std::size_t at_waiter(int row) {
  return offsetof(box_time_page, waiters) + static_cast<std::size_t>(row) * sizeof(box_time_waiter);
}

std::size_t at_alarm(int row) {
  return offsetof(box_time_page, alarms) + static_cast<std::size_t>(row) * sizeof(box_time_alarm);
}

}  // namespace

// The holder of the old page's byte alone puts a new one in its place. Who waited for the byte holds that of a page without a
// name then, and begins again.
std::optional<Table> Table::make(const std::filesystem::path &file) {
  for (;;) {
    Table table = made(file);
    if (!table.take(kKeepersByte)) return std::nullopt;
    if (!table.is_at(file)) continue;
    if (!table.was_used()) return sized(std::move(table), file);
    const std::filesystem::path next = file.string() + ".next";
    Table fresh = sized(made(next), next);
    if (!fresh.take(kKeepersByte)) return std::nullopt;
    std::filesystem::rename(next, file);
    return fresh;
  }
}

Table Table::made(const std::filesystem::path &file) {
  base::Descriptor page = opened(file, O_CREAT);
  if (page.get() < 0) throw std::system_error(errno, std::generic_category(), file.string());
  return Table(std::move(page));
}

Table Table::sized(Table table, const std::filesystem::path &file) {
  if (ftruncate(table.file_.get(), sizeof(box_time_page)) == 0) return table;
  throw std::system_error(errno, std::generic_category(), file.string());
}

bool Table::is_at(const std::filesystem::path &file) const {
  struct stat own {
  }, named{};
  return fstat(file_.get(), &own) == 0 && lstat(file.c_str(), &named) == 0 && own.st_dev == named.st_dev &&
         own.st_ino == named.st_ino;
}

bool Table::was_used() const {
  struct stat status {};
  return fstat(file_.get(), &status) != 0 || status.st_size != 0;
}

std::optional<Table> Table::open(const std::filesystem::path &file) {
  base::Descriptor page = opened(file, 0);
  if (page.get() < 0) return std::nullopt;
  return Table(std::move(page));
}

box_time_page Table::read() const {
  box_time_page page{};
  if (pread(file_.get(), &page, sizeof page, 0) != static_cast<ssize_t>(sizeof page)) return {};
  return page;
}

// What cannot be written is a box without time: the programs in it see that their keeper is silent.
void Table::write(const void *what, std::size_t size, std::size_t where) const {
  [[maybe_unused]] const ssize_t written = pwrite(file_.get(), what, size, static_cast<off_t>(where));
}

void Table::begin(const box_time_page &first) const {
  write(&first, sizeof first, 0);
}

void Table::tell(nanoseconds passed, nanoseconds wall, std::uint64_t moved) const {
  const struct {
    std::int64_t passed, looked;
    std::uint64_t moved;
  } times = {passed.count(), wall.count(), moved};
  static_assert(offsetof(box_time_page, looked) == offsetof(box_time_page, passed) + sizeof times.passed);
  static_assert(offsetof(box_time_page, moved) == offsetof(box_time_page, looked) + sizeof times.looked);
  write(&times, sizeof times, offsetof(box_time_page, passed));
}

void Table::leave() const {
  const std::uint32_t nobody = 0;
  write(&nobody, sizeof nobody, offsetof(box_time_page, keeper));
}

void Table::free_waiter(int row, const box_time_waiter &known) const {
  const box_time_waiter now = read().waiters[row];
  if (now.thread != known.thread || now.turn != known.turn) return;
  const std::uint32_t nobody = 0;
  write(&nobody, sizeof nobody, at_waiter(row) + offsetof(box_time_waiter, thread));
}

void Table::free_alarm(int row) const {
  const std::uint32_t nobody = 0;
  write(&nobody, sizeof nobody, at_alarm(row) + offsetof(box_time_alarm, process));
}

void Table::write_overruns(int row, std::uint64_t times) const {
  write(&times, sizeof times, at_alarm(row) + offsetof(box_time_alarm, overruns));
}

void Table::write_guest(int row, pid_t process) const {
  const auto guest = static_cast<std::uint32_t>(process);
  write(&guest, sizeof guest, offsetof(box_time_page, guests) + static_cast<std::size_t>(row) * sizeof guest);
}

void Table::write_waiter(int row, const box_time_waiter &waiter) const {
  write(&waiter, sizeof waiter, at_waiter(row));
}

bool Table::take(int byte) const {
  struct flock lock = base::byte_lock(F_WRLCK, byte);
  return fcntl(file_.get(), F_OFD_SETLK, &lock) == 0;
}

bool Table::is_taken(int byte) const {
  struct flock lock = base::byte_lock(F_WRLCK, byte);
  return fcntl(file_.get(), F_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

}  // namespace box_time
