#include "host/clock/bells.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <string>

namespace box_time {
namespace {

// One that nobody has open any more rings on until then.
constexpr nanoseconds kLookForHolders = std::chrono::milliseconds(50);

pid_t owner_of(const box_time_alarm &alarm) {
  return static_cast<pid_t>(alarm.process);
}

// Another descriptor of the pipe of this number; none where theirs is something else.
base::Descriptor copy_of(Open theirs, std::uint64_t number) {
  const std::string name = "/proc/" + std::to_string(theirs.process) + "/fd/" + std::to_string(theirs.fd);
  base::Descriptor copy(open(name.c_str(), O_RDWR | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  struct stat status {};
  const bool is_theirs = copy.get() >= 0 && fstat(copy.get(), &status) == 0 && S_ISFIFO(status.st_mode);
  if (!is_theirs || status.st_ino != number) return {};
  return copy;
}

// Who reads gets how often it rang since they read last. It is full where somebody in the box has written there.
void add_one(const base::Descriptor &pipe) {
  std::uint64_t times = 0;
  if (read(pipe.get(), &times, sizeof times) != static_cast<ssize_t>(sizeof times)) times = 0;
  ++times;
  [[maybe_unused]] const ssize_t written = write(pipe.get(), &times, sizeof times);
}

// As the kernel sends it.
void send_signal(const box_time_alarm &timer) {
  siginfo_t info{};
  info.si_signo = static_cast<int>(timer.signal);
  info.si_code = SI_TIMER;
  info.si_timerid = static_cast<int>(timer.number);
  info.si_value.sival_ptr = reinterpret_cast<void *>(timer.value);  // NOLINT: theirs, and never followed here
  if (timer.target == 0) {
    syscall(SYS_rt_sigqueueinfo, owner_of(timer), info.si_signo, &info);
  } else {
    syscall(SYS_rt_tgsigqueueinfo, owner_of(timer), timer.target, info.si_signo, &info);
  }
}

}  // namespace

void Bells::forget() {
  rung_.clear();
  copies_.clear();
}

// A timer without a signal is asked for what is left, and rings for nobody.
std::optional<nanoseconds> Bells::next_of(int row, const box_time_alarm &alarm) const {
  const bool is_heard = alarm.kind != BOX_TIME_TIMER || alarm.signal != 0;
  if (alarm.process == 0 || alarm.process == BOX_TIME_NOBODY_YET || alarm.deadline == BOX_TIME_NEVER || !is_heard) {
    return std::nullopt;
  }
  const auto rung = rung_.find(row);
  if (rung == rung_.end() || rung->second.turn != alarm.turn) return nanoseconds(alarm.deadline);
  if (rung->second.next == kNever) return std::nullopt;
  return rung->second.next;
}

std::optional<nanoseconds> Bells::next(const box_time_page &page) const {
  nanoseconds next = kNever;
  for (int row = 0; row < BOX_TIME_ALARMS; ++row) {
    next = std::min(next, next_of(row, page.alarms[row]).value_or(kNever));
  }
  if (next == kNever) return std::nullopt;
  return next;
}

// A descriptor may have come to others, and be closed where it was made. Who has it may still be unknown while somebody works.
bool Bells::is_of_nobody(int row, const box_time_alarm &alarm, Now now, const Crowd &crowd) {
  if (alarm.kind != BOX_TIME_DESCRIPTOR) return kill(owner_of(alarm), 0) != 0 && errno == ESRCH;
  const auto copy = copies_.find(row);
  const bool is_known = copy != copies_.end() && copy->second.number == alarm.number;
  if (is_known && now.wall - copy->second.looked < kLookForHolders) return false;
  const std::optional<Open> holder = crowd.holder_of_pipe(alarm.number);
  if (!holder) return now.is_quiet;
  if (is_known) {
    copy->second.looked = now.wall;
  } else {
    copies_[row] = {alarm.number, copy_of(*holder, alarm.number), now.wall};
  }
  return copies_[row].descriptor.get() < 0;
}

void Bells::ring(const box_time_page &page, Now now, const Crowd &crowd, const Table &table) {
  for (int row = 0; row < BOX_TIME_ALARMS; ++row) {
    const box_time_alarm &alarm = page.alarms[row];
    const bool is_taken = alarm.process != 0 && alarm.process != BOX_TIME_NOBODY_YET;
    const bool is_gone = is_taken && is_of_nobody(row, alarm, now, crowd);
    if (is_gone) table.free_alarm(row);
    if (is_gone || !is_taken) copies_.erase(row);
    const auto moment = is_gone ? std::nullopt : next_of(row, alarm);
    if (moment && *moment <= now.passed) ring_once(row, alarm, *moment, crowd, table);
  }
}

// Only to processes of the box: a row may hold any number.
void Bells::ring_once(int row, const box_time_alarm &alarm, nanoseconds moment, const Crowd &crowd,
                      const Table &table) {
  if (alarm.kind == BOX_TIME_DESCRIPTOR && !copies_.contains(row)) return;  // at the next look
  const nanoseconds interval(alarm.interval);
  const bool again = rung_.contains(row) && rung_[row].turn == alarm.turn;
  if (!again) rung_[row] = {alarm.turn, {}, 0};
  rung_[row].next = interval.count() > 0 ? moment + interval : kNever;
  if (alarm.kind == BOX_TIME_DESCRIPTOR) {
    add_one(copies_[row].descriptor);
  } else if (crowd.has(owner_of(alarm))) {
    if (alarm.kind == BOX_TIME_TIMER) send(row, alarm, again, table);
    if (alarm.kind == BOX_TIME_ALARM) kill(owner_of(alarm), SIGALRM);
  }
}

// One signal at a time: what rings before it was taken is counted.
void Bells::send(int row, const box_time_alarm &timer, bool again, const Table &table) {
  if (timer.signal < 1 || timer.signal >= NSIG) return;
  std::uint64_t &overruns = rung_[row].overruns;
  const bool is_overrun =
      again && is_pending(owner_of(timer), static_cast<pid_t>(timer.target), static_cast<int>(timer.signal));
  if (is_overrun || overruns != 0) {
    overruns = is_overrun ? overruns + 1 : 0;
    table.write_overruns(row, overruns);
  }
  if (!is_overrun) send_signal(timer);
}

}  // namespace box_time
