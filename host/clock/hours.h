// The time for those who wait outside the box: the box's where a keeper of this process keeps it, else the wall's.
#pragma once

#include <poll.h>

#include <chrono>
#include <filesystem>
#include <optional>
#include <span>

namespace box_time {

using std::chrono::nanoseconds;

class Keeper;

nanoseconds now();   // since any moment
nanoseconds wall();  // the wall's, always

// The same for what takes a clock.
struct Clock {
  using duration = nanoseconds;
  using rep = duration::rep;
  using period = duration::period;
  using time_point = std::chrono::time_point<Clock>;
  static constexpr bool is_steady = true;
  static time_point now() { return time_point(box_time::now()); }
};

// As poll(2), until a moment; nothing: without a limit.
int poll(std::span<pollfd> fds, std::optional<nanoseconds> until);

// The same until a moment of the wall's time; the box's time passes meanwhile.
int poll_by_wall(std::span<pollfd> fds, nanoseconds until);

// Gives the programs of a box the page of this name, where a keeper of this process keeps the time. Throws as Keeper::keep.
void keep(const std::filesystem::path &page);
bool is_keeper();  // this process has one

void set_keeper(Keeper *keeper);  // null: none; by the keeper itself

}  // namespace box_time
