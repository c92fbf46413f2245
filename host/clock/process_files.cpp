#include "host/clock/process_files.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>

// NOLINTBEGIN(cert-err34-c): the kernel writes these numbers, and each fits
namespace box_time {
namespace {

using Text = std::array<char, 1024>;

base::Descriptor open_file(pid_t process, const char *file) {
  char name[64];
  std::snprintf(name, sizeof name, "/proc/%d/%s", process, file);
  return base::Descriptor(open(name, O_RDONLY | O_CLOEXEC));
}

// False where there is no such process any more.
bool read_from(const base::Descriptor &file, Text &text) {
  const ssize_t length = file.get() < 0 ? -1 : pread(file.get(), text.data(), text.size() - 1, 0);
  if (length <= 0) return false;
  text[static_cast<std::size_t>(length)] = '\0';
  return true;
}

bool read_of_thread(pid_t process, pid_t thread, const char *file, Text &text) {
  char name[64];
  std::snprintf(name, sizeof name, "task/%d/%s", thread, file);
  return read_from(open_file(process, name), text);
}

using StatusText = std::array<char, 4096>;

bool read_status(pid_t process, pid_t thread, StatusText &text) {
  char name[64];
  std::snprintf(name, sizeof name, "task/%d/status", thread);
  const base::Descriptor file = open_file(process, name);
  const ssize_t length = file.get() < 0 ? -1 : read(file.get(), text.data(), text.size() - 1);
  if (length <= 0) return false;
  text[static_cast<std::size_t>(length)] = '\0';
  return true;
}

// pid (name) state parent ...; a name may have brackets and blanks of its own.
const char *behind_name(const Text &text) {
  const char *end = std::strrchr(text.data(), ')');
  return end != nullptr && end[1] == ' ' ? end + 2 : nullptr;
}

std::optional<ProcessFile> parsed(const Text &text) {
  const char *rest = behind_name(text);
  ProcessFile found{};
  std::array<unsigned long long, 4> ticks{};  // user, system, and both of the children
  if (rest == nullptr ||
      std::sscanf(rest, "%c %d %*d %*d %*d %*d %*u %*u %*u %*u %*u %llu %llu %llu %llu %*d %*d %ld", &found.state,
                  &found.parent, ticks.data(), &ticks[1], &ticks[2], &ticks[3], &found.threads) != 7) {
    return std::nullopt;
  }
  static const long per_second = sysconf(_SC_CLK_TCK);
  for (const auto part : ticks)
    found.processor += nanoseconds(part * (1'000'000'000U / static_cast<unsigned long>(per_second)));
  return found;
}

std::vector<int> numbers_in(const char *folder) {
  std::vector<int> found;
  const std::unique_ptr<DIR, int (*)(DIR *)> open(opendir(folder), closedir);
  if (!open) return found;
  // NOLINTNEXTLINE(concurrency-mt-unsafe): nobody else reads this folder
  while (const dirent *entry = readdir(open.get())) {
    const auto *name = static_cast<const char *>(entry->d_name);
    if (*name >= '0' && *name <= '9') found.push_back(static_cast<int>(std::strtol(name, nullptr, 10)));
  }
  return found;
}

// Numbers, each with a blank behind it, as many as there are.
void add_numbers(const base::Descriptor &file, std::vector<pid_t> &found) {
  Text part;
  pid_t number = 0;
  off_t place = 0;
  for (ssize_t size = 0; (size = file.get() < 0 ? 0 : pread(file.get(), part.data(), part.size(), place)) > 0;) {
    place += size;
    for (const char digit : std::string_view(part.data(), static_cast<std::size_t>(size))) {
      if (digit != ' ') {
        number = 10 * number + (digit - '0');
        continue;
      }
      found.push_back(number);
      number = 0;
    }
  }
}

std::string children_file(pid_t thread) {
  return "task/" + std::to_string(thread) + "/children";
}

// The calls that wait with a limit, and where it stands among their arguments.
struct Limited {
  long call;
  int argument;   // -1: it has a limit always
  bool is_count;  // a number of milliseconds, and not the address of a time
};
constexpr Limited kLimited[] = {
    {SYS_nanosleep, -1, false},
    {SYS_clock_nanosleep, -1, false},
    {SYS_ppoll, 2, false},
    {SYS_pselect6, 4, false},
    {SYS_epoll_pwait, 3, true},
    {SYS_futex, 3, false},
    {SYS_rt_sigtimedwait, 2, false},
    {SYS_semtimedop, 3, false},
    {SYS_recvmmsg, 4, false},
    {SYS_mq_timedsend, 4, false},
    {SYS_mq_timedreceive, 4, false},
    {SYS_io_getevents, 4, false},
    {SYS_restart_syscall, -1, false},  // one of these, after a stop
#ifdef SYS_epoll_pwait2
    {SYS_epoll_pwait2, 3, false},
#endif
#ifdef SYS_futex_waitv
    {SYS_futex_waitv, 3, false},
#endif
#ifdef SYS_io_pgetevents
    {SYS_io_pgetevents, 4, false},
#endif
#ifdef SYS_poll
    {SYS_poll, 2, true},
#endif
#ifdef SYS_select
    {SYS_select, 4, false},
#endif
#ifdef SYS_epoll_wait
    {SYS_epoll_wait, 3, true},
#endif
};

using Arguments = std::array<unsigned long long, 6>;

bool has_limit(const Limited &row, const Arguments &arguments) {
  if (row.call == SYS_futex) {
    const auto operation = arguments[1] & static_cast<unsigned>(FUTEX_CMD_MASK);
    if (operation != FUTEX_WAIT && operation != FUTEX_WAIT_BITSET) return false;
  }
  if (row.argument < 0) return true;
  const auto limit = arguments.at(static_cast<std::size_t>(row.argument));
  return row.is_count ? static_cast<int>(limit) > 0 : limit != 0;
}

}  // namespace

std::optional<ProcessFile> process_file(pid_t process) {
  Text text;
  return read_from(open_file(process, "stat"), text) ? parsed(text) : std::nullopt;
}

Watched::Watched(pid_t process)
    : process_(process),
      stat_(open_file(process, "stat")),
      times_(open_file(process, "schedstat")),
      children_(open_file(process, children_file(process).c_str())) {}

std::optional<ProcessFile> Watched::file() const {
  Text text;
  return read_from(stat_, text) ? parsed(text) : std::nullopt;
}

std::uint64_t Watched::times_on_processor() const {
  Text text;
  unsigned long long times = 0;
  if (read_from(times_, text) && std::sscanf(text.data(), "%*u %*u %llu", &times) == 1) return times;
  return box_time::times_on_processor(process_, process_);
}

std::optional<char> state_of_thread(pid_t process, pid_t thread) {
  Text text;
  const char *rest = read_of_thread(process, thread, "stat", text) ? behind_name(text) : nullptr;
  if (rest == nullptr) return std::nullopt;
  return *rest;
}

std::vector<pid_t> threads_of(pid_t process) {
  return numbers_in(("/proc/" + std::to_string(process) + "/task").c_str());
}

std::vector<pid_t> processes() {
  return numbers_in("/proc");
}

bool is_there(pid_t number) {
  return access(("/proc/" + std::to_string(number)).c_str(), F_OK) == 0;
}

bool lists_children() {
  static const bool lists = open_file(getpid(), children_file(getpid()).c_str()).get() >= 0;
  return lists;
}

std::vector<int> descriptors_of(pid_t process) {
  return numbers_in(("/proc/" + std::to_string(process) + "/fd").c_str());
}

std::optional<std::uint64_t> pipe_behind(pid_t process, int fd) {
  char name[64];
  std::snprintf(name, sizeof name, "/proc/%d/fd/%d", process, fd);
  std::array<char, 64> text{};
  unsigned long long number = 0;
  if (readlink(name, text.data(), text.size() - 1) <= 0 || std::sscanf(text.data(), "pipe:[%llu]", &number) != 1) {
    return std::nullopt;
  }
  return number;
}

bool is_pending(pid_t process, pid_t thread, int signal) {
  StatusText status;
  if (!read_status(process, thread == 0 ? process : thread, status)) return false;
  const char *line = std::strstr(status.data(), thread == 0 ? "\nShdPnd:" : "\nSigPnd:");
  unsigned long long pending = 0;
  if (line == nullptr || std::sscanf(std::strchr(line, ':'), ": %llx", &pending) != 1) return false;
  return (pending >> static_cast<unsigned>(signal - 1) & 1U) != 0;
}

// Where the kernel does not count it, there is another count of the same.
std::uint64_t times_on_processor(pid_t process, pid_t thread) {
  Text text;
  unsigned long long times = 0, more = 0;
  if (read_of_thread(process, thread, "schedstat", text) && std::sscanf(text.data(), "%*u %*u %llu", &times) == 1) {
    return times;
  }
  StatusText status;
  if (!read_status(process, thread, status)) return 0;
  const char *counts = std::strstr(status.data(), "\nvoluntary_ctxt_switches:");
  if (counts == nullptr ||
      std::sscanf(counts, " voluntary_ctxt_switches: %llu nonvoluntary_ctxt_switches: %llu", &times, &more) != 2) {
    return 0;
  }
  return times + more;
}

std::vector<pid_t> Watched::children() const {
  std::vector<pid_t> found;
  add_numbers(children_, found);
  const auto now = file();
  if (!now || now->threads <= 1) return found;
  for (const pid_t thread : threads_of(process_)) {
    if (thread != process_) add_numbers(open_file(process_, children_file(thread).c_str()), found);
  }
  return found;
}

Wait wait_of(pid_t process, pid_t thread) {
  Text text;
  if (!read_of_thread(process, thread, "syscall", text)) return Wait::kUnknown;
  long call = -1;
  Arguments arguments{};
  if (std::sscanf(text.data(), "%ld %llx %llx %llx %llx %llx %llx", &call, arguments.data(), &arguments[1],
                  &arguments[2], &arguments[3], &arguments[4], &arguments[5]) < 1) {
    return Wait::kGoesOn;  // "running"
  }
  for (const Limited &row : kLimited) {
    if (row.call == call && has_limit(row, arguments)) return Wait::kForWall;
  }
  return Wait::kForOthers;
}

}  // namespace box_time
// NOLINTEND(cert-err34-c)
