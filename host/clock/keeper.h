// Keeps the time of a box while its process waits: then it looks at what all others do, and lets time pass.
#pragma once

#include <poll.h>
#include <sys/types.h>

#include <filesystem>
#include <optional>
#include <span>

#include "host/clock/bells.h"
#include "host/clock/crowd.h"
#include "host/clock/pace.h"
#include "host/clock/table.h"

namespace box_time {

// One at a time in a process. From its beginning to its end, box_time::now and box_time::poll (hours.h) are of its time.
class Keeper {
 public:
  explicit Keeper(Speed speed);
  ~Keeper();
  Keeper(const Keeper &) = delete;
  Keeper &operator=(const Keeper &) = delete;

  // Gives the programs of a box their page, of this name, until the end; again for another box. Its time begins so far ahead of the
  // wall's. Throws std::runtime_error where somebody else keeps the time of this box.
  void keep(const std::filesystem::path &page, nanoseconds ahead = nanoseconds(0));

  // How far the time of the box is ahead of the wall's.
  nanoseconds ahead() const;

  nanoseconds now() const { return pace_.passed(); }

  // As poll(2), until a moment of the box's time and one of the wall's; nothing: without a limit.
  int poll(std::span<pollfd> fds, std::optional<nanoseconds> until, std::optional<nanoseconds> until_on_wall = {});

 private:
  bool look(std::optional<nanoseconds> until);
  std::optional<nanoseconds> next_moment(const box_time_page &page, std::optional<nanoseconds> until) const;
  void leave();

  Speed speed_;
  nanoseconds looked_{0};  // on the wall
  nanoseconds began_{0};   // the time of the day at which the box's time began
  Pace pace_;
  Crowd crowd_;
  Bells bells_;
  std::uint64_t moved_ = 0;
  std::filesystem::path file_;
  std::optional<Table> table_;
};

}  // namespace box_time
