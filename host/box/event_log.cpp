#include "host/box/event_log.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <type_traits>

#include "host/base/descriptor.h"
#include "host/box/own_files.h"

namespace box {
namespace {

constexpr std::uint32_t kMagic = 0x31545645;  // "EVT1" in little-endian order

struct Record {
  std::uint32_t magic;
  std::uint32_t check;
  LogEntry entry;
};
static_assert(sizeof(LogEntry) == 64 && sizeof(Record) == 72 && std::is_trivially_copyable_v<Record>);

constexpr off_t kRecordSize = sizeof(Record);

// FNV-1a: tells an entry from what a crash left of one.
std::uint32_t check_of(const LogEntry &entry) {
  std::array<std::uint8_t, sizeof entry> bytes{};
  std::memcpy(bytes.data(), &entry, sizeof entry);
  std::uint32_t check = 2166136261U;
  for (std::uint8_t byte : bytes) check = (check ^ byte) * 16777619U;
  return check;
}

template <typename Call>
auto uninterrupted(Call call) {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return result;
}

std::runtime_error log_failure(const std::filesystem::path &file, const std::string &what, const std::string &why) {
  return std::runtime_error("log " + file.string() + ": cannot " + what + ": " + why);
}

// The bytes of a log, a part at a time: a command may have made it larger than memory.
class LogBytes {
 public:
  LogBytes(int fd, const std::filesystem::path &file) : fd_(fd), file_(file) {}

  // Those behind what was taken: a whole record, or what is left at the end.
  std::span<const char> front() {
    while (!at_end_ && held_ - taken_ < sizeof(Record)) read_more();
    return std::span(part_).subspan(taken_, held_ - taken_);
  }
  void take(std::size_t size) { taken_ += size; }

 private:
  void read_more() {
    std::copy(part_.begin() + taken_, part_.begin() + held_, part_.begin());
    held_ -= taken_;
    taken_ = 0;
    const ssize_t size = uninterrupted([&] { return pread(fd_, part_.data() + held_, part_.size() - held_, next_); });
    if (size < 0) throw log_failure(file_, "read it", std::strerror(errno));
    at_end_ = size == 0;
    next_ += size;
    held_ += static_cast<std::size_t>(size);
  }

  int fd_;
  const std::filesystem::path &file_;
  std::array<char, 64 * sizeof(Record)> part_{};
  std::size_t held_ = 0, taken_ = 0;
  off_t next_ = 0;
  bool at_end_ = false;
};

// The name of a new file is durable when its folder is.
bool sync_folder_of(const std::filesystem::path &file) {
  const base::Descriptor folder(open(file.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  return folder.get() >= 0 && fsync(folder.get()) == 0;
}

// The whole record at the beginning of these bytes, wherever they lie in the file.
std::optional<LogEntry> entry_in(const char *bytes) {
  Record record{};
  std::memcpy(&record, bytes, sizeof record);
  if (record.magic != kMagic || record.check != check_of(record.entry)) return std::nullopt;
  return record.entry;
}

// Where the next record goes: over an unfinished one that a crash left behind the last whole record, or else to the end of
// the file, whatever lies there. The caller has the lock.
off_t end_of_records(int fd, off_t size) {
  std::array<char, 2 * sizeof(Record) - 1> tail{};
  const off_t kept = std::min<off_t>(size, tail.size());
  if (uninterrupted([&] { return pread(fd, tail.data(), static_cast<std::size_t>(kept), size - kept); }) != kept)
    return size;
  for (off_t unfinished = 0; unfinished < kRecordSize && unfinished + kRecordSize <= kept; ++unfinished) {
    if (entry_in(tail.data() + (kept - unfinished - kRecordSize))) return size - unfinished;
  }
  return size < kRecordSize ? 0 : size;
}

// Writes the record behind the whole records of the file, and takes it back when that fails. The caller has the lock.
bool write_whole(int fd, const Record &record, off_t end) {
  const ssize_t written = uninterrupted([&] { return pwrite(fd, &record, sizeof record, end); });
  if (written == kRecordSize && uninterrupted([&] { return fdatasync(fd); }) == 0) return true;
  const int reason = written >= 0 && written < kRecordSize ? ENOSPC : errno;
  if (ftruncate(fd, end) != 0) errno = reason;  // the check tells an unfinished record all the same
  errno = reason;
  return false;
}

bool append_record(const std::filesystem::path &file, const Record &record) {
  const base::Descriptor log(open(file.c_str(), O_RDWR | O_CREAT | kOwnFile, 0666));
  if (log.get() < 0) return false;
  // Closing the file gives the lock back, and so does dying.
  if (uninterrupted([&] { return flock(log.get(), LOCK_EX); }) != 0) return false;
  struct stat status {};
  if (fstat(log.get(), &status) != 0) return false;
  const off_t end = end_of_records(log.get(), status.st_size);
  return write_whole(log.get(), record, end) && (end != 0 || sync_folder_of(file));
}

}  // namespace

bool EventLog::append(const std::filesystem::path &file, const LogEntry &entry) noexcept {
  try {
    return append_record(file, {kMagic, check_of(entry), entry});
  } catch (...) {
    errno = ENOMEM;
    return false;
  }
}

bool EventLog::append(const std::filesystem::path &file, std::uint32_t head, Event event, pid_t process) noexcept {
  const auto since_epoch = std::chrono::system_clock::now().time_since_epoch();
  LogEntry entry{std::chrono::duration_cast<std::chrono::nanoseconds>(since_epoch).count(),
                 static_cast<std::uint32_t>(process),
                 head,
                 {}};
  std::copy(event.begin(), event.end(), entry.event.begin());
  return append(file, entry);
}

void EventLog::check(const std::filesystem::path &file) {
  const OwnFile log = open_own_file(file);
  if (log.descriptor.get() < 0 && log.error != ENOENT) throw log_failure(file, "save events", log.why_not());
}

std::vector<LogEntry> EventLog::read(const std::filesystem::path &file, Damage *damage) {
  const OwnFile log = open_own_file(file);
  if (log.descriptor.get() < 0) {
    // A new box has one, and nobody removes it but by mistake.
    throw log_failure(
        file, "read it",
        log.error == ENOENT ? "it is gone, with all that it held. The next entry makes it anew." : log.why_not());
  }
  LogBytes bytes(log.descriptor.get(), file);
  std::vector<LogEntry> entries;
  Damage found;
  bool was_whole = true;
  for (auto front = bytes.front(); !front.empty(); front = bytes.front()) {
    const auto entry = front.size() < sizeof(Record) ? std::nullopt : entry_in(front.data());
    if (entry) entries.push_back(*entry);
    bytes.take(entry ? sizeof(Record) : 1);
    found.bytes += entry ? 0 : 1;
    found.places += !entry && was_whole ? 1 : 0;
    was_whole = entry.has_value();
  }
  if (damage != nullptr) *damage = found;
  return entries;
}

}  // namespace box
