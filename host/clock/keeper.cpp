#include "host/clock/keeper.h"

#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <ctime>
#include <stdexcept>
#include <string>
#include <system_error>

#include "host/clock/hours.h"

namespace box_time {
namespace {

using std::chrono::microseconds;

// How long it waits between two looks: a moment as long as things happen, longer where nothing does.
constexpr nanoseconds kShortest = microseconds(30), kLongest = microseconds(2000), kIdle = microseconds(5000);

int wait_on_wall(std::span<pollfd> fds, nanoseconds length) {
  const timespec limit{length.count() / 1'000'000'000, length.count() % 1'000'000'000};
  return ppoll(fds.data(), fds.size(), &limit, nullptr);
}

std::int64_t reading(clockid_t clock) {
  timespec time{};
  clock_gettime(clock, &time);
  return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

// Who has begun or ended a wait, or set an alarm, since the page was read, was not seen at work if they rest again.
bool has_same_waits(const box_time_page &page, const box_time_page &before) {
  return page.turns == before.turns && std::memcmp(page.guests, before.guests, sizeof page.guests) == 0 &&
         std::memcmp(page.waiters, before.waiters, sizeof page.waiters) == 0 &&
         std::memcmp(page.alarms, before.alarms, sizeof page.alarms) == 0;
}

std::uint32_t process_id() {
  return static_cast<std::uint32_t>(getpid());
}

}  // namespace

Keeper::Keeper(Speed speed) : speed_(speed), pace_(speed, wall()) {
  set_keeper(this);
}

Keeper::~Keeper() {
  set_keeper(nullptr);
  leave();
}

// The page stays: somebody who has just seen that the time is kept may be about to mount it.
void Keeper::leave() {
  if (!table_) return;
  table_->tell(now(), wall(), moved_);
  table_->leave();
  table_.reset();
}

nanoseconds Keeper::ahead() const {
  return began_ + now() - nanoseconds(reading(CLOCK_REALTIME));
}

void Keeper::keep(const std::filesystem::path &page, nanoseconds ahead) {
  if (table_ && page == file_) return;
  leave();
  std::optional<Table> table = Table::make(page);
  if (!table) {
    const auto of_other = Table::open(page);
    throw std::runtime_error("the time of this box is kept already, by process " +
                             std::to_string(of_other ? of_other->read().keeper : 0) +
                             ". What runs in it meanwhile has that time, without --speed.");
  }
  box_time_page first{};
  first.keeper = process_id();
  first.speed = speed_.times;
  first.passed = pace_.passed().count();
  first.looked = wall().count();
  began_ = nanoseconds(reading(CLOCK_REALTIME)) - now() + ahead;
  first.began_realtime = began_.count();
  first.began_monotonic = reading(CLOCK_MONOTONIC) - (now() - ahead).count();
  table->begin(first);
  bells_.forget();
  moved_ = 0;
  table_ = std::move(table);
  file_ = page;
}

// Who finds something ready each time, or never waits, lets time pass, too.
int Keeper::poll(std::span<pollfd> fds, std::optional<nanoseconds> until, std::optional<nanoseconds> until_on_wall) {
  const nanoseconds longest = until ? kLongest : kIdle;
  crowd_.look_again();
  for (nanoseconds pause{0};;) {
    const int ready = wait_on_wall(fds, pause);
    const bool is_over = (until && now() >= *until) || (until_on_wall && wall() >= *until_on_wall);
    const bool passes = (ready == 0 && !is_over) || wall() - looked_ > kIdle ? look(until) : false;
    if (ready != 0 || is_over) return ready;
    pause = passes ? kShortest : std::clamp(2 * pause, kShortest, longest);
  }
}

// Whether time has passed.
bool Keeper::look(std::optional<nanoseconds> until) {
  const box_time_page page = table_ ? table_->read() : box_time_page{};
  const nanoseconds at = looked_ = wall(), before = now();
  Crowd::Look seen = crowd_.look(page, at);
  if (seen.is_quiet && table_ && !has_same_waits(table_->read(), page)) seen.is_quiet = false;
  for (const int row : seen.lost_rows) table_->free_waiter(row, page.waiters[row]);
  pace_.look({.wall = at,
              .processor = seen.processor + nanoseconds(reading(CLOCK_PROCESS_CPUTIME_ID)),
              .is_quiet = seen.is_quiet,
              .waits_on_wall = seen.waits_on_wall,
              .is_late = seen.is_late,
              .moment = next_moment(page, until)});
  if (!table_) return now() != before;
  if (now() != before) moved_ = page.turns;
  table_->tell(now(), wall(), moved_);
  bells_.ring(page, {.passed = now(), .wall = at, .is_quiet = seen.is_quiet}, crowd_, *table_);
  return now() != before;
}

std::optional<nanoseconds> Keeper::next_moment(const box_time_page &page, std::optional<nanoseconds> until) const {
  nanoseconds next = until.value_or(kNever);
  for (const box_time_waiter &waiter : page.waiters) {
    const nanoseconds deadline(waiter.deadline);
    if (waiter.thread != 0 && deadline > now()) next = std::min(next, deadline);
  }
  next = std::min(next, bells_.next(page).value_or(kNever));
  if (next == kNever) return std::nullopt;
  return next;
}

}  // namespace box_time
