#include "host/clock/crowd.h"

#include <set>
#include <utility>

#include "host/clock/offspring.h"
#include "host/clock/process_files.h"

namespace box_time {
namespace {

constexpr nanoseconds kLongestSlice(BOX_TIME_LONGEST_SLICE);
// A waiter that does not look at the page for so long has left its wait by a jump out of a signal handler.
constexpr nanoseconds kLeftWithoutWord = 5 * kLongestSlice;
// Where nobody may see by which calls others wait: all of ours have looked again within this.
constexpr nanoseconds kLongestPause = kLongestSlice * 5 / 4;

// Who works for so long may have started others, whose time counts, too.
constexpr nanoseconds kLongestWithoutLook = std::chrono::milliseconds(20);

constexpr bool is_dead(char state) {
  return state == 'Z' || state == 'X';
}

// One that was stopped waits for whoever lets it go on.
constexpr bool rests(char state) {
  return state == 'S' || state == 'T' || state == 't';
}

int row_of_waiter(const box_time_page &page, pid_t thread) {
  for (int row = 0; row < BOX_TIME_WAITERS; ++row) {
    if (page.waiters[row].thread == static_cast<std::uint32_t>(thread)) return row;
  }
  return -1;
}

std::set<pid_t> newcomers_in(const box_time_page &page) {
  std::set<pid_t> found;
  for (const std::uint32_t guest : page.guests) {
    if (guest != 0) found.insert(static_cast<pid_t>(guest));
  }
  for (const box_time_waiter &waiter : page.waiters) {
    if (waiter.thread != 0) found.insert(static_cast<pid_t>(waiter.process));
  }
  return found;
}

}  // namespace

void Crowd::add_threads_of(pid_t process, const Watched &watched, const box_time_page &page, nanoseconds &processor,
                           Threads &threads) {
  const auto file = watched.file();
  if (!file) return;
  processor += file->processor;
  const bool is_one = file->threads <= 1;
  const std::vector<pid_t> ids = is_one ? std::vector<pid_t>{process} : threads_of(process);
  for (const pid_t id : ids) {
    const auto state = is_one ? file->state : state_of_thread(process, id);
    if (!state || is_dead(*state)) continue;
    const int row = row_of_waiter(page, id);
    std::uint64_t turn = 0;
    if (row >= 0) {
      turn = page.waiters[row].turn;
    } else {
      turn = is_one ? watched.times_on_processor() : times_on_processor(process, id);
    }
    threads[id] = {*state, row, turn};
  }
}

Crowd::Threads Crowd::threads(const box_time_page &page, nanoseconds &processor) const {
  Threads found;
  for (const auto &[process, watched] : members_) add_threads_of(process, watched, page, processor, found);
  return found;
}

// Who was at work a moment ago mostly still is: then nobody else need be looked at.
bool Crowd::is_at_work(nanoseconds wall) const {
  const auto worker = members_.find(worker_);
  if (worker == members_.end() || wall - seen_all_ > kLongestWithoutLook) return false;
  const auto file = worker->second.file();
  return file && !rests(file->state) && !is_dead(file->state);
}

// One that cannot be read, although it is there, may be read at the next look.
bool Crowd::takes_in(pid_t process) {
  if (process == self_.id() || members_.contains(process)) return false;
  Watched watched(process);
  if (!watched.file()) return is_there(process);
  members_.emplace(process, std::move(watched));
  return true;
}

// A process becomes a member when a member starts it or, where it came from outside, with its first word on the page.
bool Crowd::has_new_members(const box_time_page &page) {
  std::erase_if(members_, [](const auto &member) { return !member.second.file(); });
  bool is_new = false;
  for (const pid_t process : newcomers_in(page)) is_new |= takes_in(process);
  const Offspring offspring;
  std::vector<pid_t> wanted = offspring.of(self_);
  for (const auto &[process, watched] : members_) {
    const std::vector<pid_t> more = offspring.of(watched);
    wanted.insert(wanted.end(), more.begin(), more.end());
  }
  while (!wanted.empty()) {
    const pid_t process = wanted.back();
    wanted.pop_back();
    if (!takes_in(process)) continue;
    is_new = true;
    const auto member = members_.find(process);
    if (member == members_.end()) continue;
    const std::vector<pid_t> more = offspring.of(member->second);
    wanted.insert(wanted.end(), more.begin(), more.end());
  }
  return is_new;
}

// One that goes to sleep is called asleep a moment before, and goes on where it finds what it waits for; with much other work, it
// may lose the processor there. So the kernel is asked by which call it waits: it answers when the thread sleeps in truth, or goes on.
bool Crowd::sleep_in_truth() {
  bool goes_on = false;
  waits_on_wall_ = is_blind_ = false;
  for (const auto &[thread, state] : before_) {
    const Wait wait = state.row >= 0 || state.state != 'S' ? Wait::kForOthers : wait_of(thread, thread);
    goes_on |= wait == Wait::kGoesOn;
    waits_on_wall_ |= wait == Wait::kForWall;
    is_blind_ |= wait == Wait::kUnknown;
  }
  return !goes_on;
}

// Who has not had the processor since then has started nobody; and who is found now was there then.
bool Crowd::is_complete(const box_time_page &page) {
  if (is_complete_) return true;
  if (!sleep_in_truth() || has_new_members(page)) return false;
  nanoseconds unused{0};
  return is_complete_ = threads(page, unused) == before_;
}

bool Crowd::is_lost(int row, const box_time_waiter &waiter, nanoseconds wall) {
  const auto thread = static_cast<pid_t>(waiter.thread), process = static_cast<pid_t>(waiter.process);
  const auto state = state_of_thread(process, thread);
  if (!state || is_dead(*state)) return true;
  const std::uint64_t times = times_on_processor(process, thread);
  const auto known = overdue_.find(row);
  if (known == overdue_.end() || known->second.turn != waiter.turn || known->second.times != times || *state == 'R') {
    overdue_[row] = {waiter.turn, times, wall};
    return false;
  }
  return *state == 'S' && wall - known->second.since > kLeftWithoutWord;
}

void Crowd::look_after_waiters(const box_time_page &page, nanoseconds wall, Look &look) {
  for (int row = 0; row < BOX_TIME_WAITERS; ++row) {
    const box_time_waiter &waiter = page.waiters[row];
    const bool is_due = waiter.thread != 0 && waiter.deadline <= page.passed;
    const bool is_of_nobody = waiter.thread != 0 && !is_due && !is_there(static_cast<pid_t>(waiter.thread));
    if (!is_due) overdue_.erase(row);
    if (is_of_nobody || (is_due && is_lost(row, waiter, wall))) {
      look.lost_rows.push_back(row);
      continue;
    }
    if (!is_due) continue;
    const auto state = state_of_thread(static_cast<pid_t>(waiter.process), static_cast<pid_t>(waiter.thread));
    look.is_late |= state && *state != 'T' && *state != 't';
  }
}

std::optional<Open> Crowd::holder_of_pipe(std::uint64_t number) const {
  for (const auto &[process, watched] : members_) {
    for (const int fd : descriptors_of(process)) {
      if (pipe_behind(process, fd) == number) return Open{process, fd};
    }
  }
  return std::nullopt;
}

Crowd::Look Crowd::look(const box_time_page &page, nanoseconds wall) {
  Look look;
  look.processor = processor_;
  look_after_waiters(page, wall, look);
  if (is_at_work(wall)) return look;
  seen_all_ = wall;
  look.processor = nanoseconds(0);
  Threads now = threads(page, look.processor);
  processor_ = look.processor;
  const bool has_changed = now != before_;
  if (has_changed) {
    before_ = std::move(now);
    quiet_since_ = wall;
    is_complete_ = false;
  }
  worker_ = 0;
  for (const auto &[thread, state] : before_) {
    if (!rests(state.state)) worker_ = thread;
  }
  if (has_changed || look.is_late || worker_ != 0 || !is_complete(page)) return look;
  look.is_quiet = !is_blind_ || wall - quiet_since_ > kLongestPause;
  look.waits_on_wall = waits_on_wall_;
  return look;
}

}  // namespace box_time
