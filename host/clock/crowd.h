// The processes whose work the time waits for: those that the keeper has started, those of its guests, and all that these have
// started. They are looked at through /proc.
#pragma once

#include <sys/types.h>
#include <unistd.h>

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "host/clock/pace.h"
#include "host/clock/page.h"
#include "host/clock/process_files.h"

namespace box_time {

// A descriptor of another process.
struct Open {
  pid_t process;
  int fd;
};

class Crowd {
 public:
  struct Look {
    bool is_quiet = false;
    bool waits_on_wall = false;
    bool is_late = false;
    nanoseconds processor{0};
    std::vector<int> lost_rows;  // of waiters that are dead, or left their wait without a word
  };

  // `page` is what was read just before.
  Look look(const box_time_page &page, nanoseconds wall);

  // The keeper's process has worked, and may have started others.
  void look_again() { is_complete_ = false; }

  bool has(pid_t process) const { return members_.contains(process); }

  // One that has the pipe of this number open.
  std::optional<Open> holder_of_pipe(std::uint64_t number) const;

 private:
  struct Thread {
    char state;
    int row;             // of the page; -1 where it does not wait there
    std::uint64_t turn;  // its wait or, where it has none, how often it has had the processor
    bool operator==(const Thread &) const = default;
  };
  using Threads = std::map<pid_t, Thread>;
  struct Overdue {
    std::uint64_t turn, times;
    nanoseconds since;
  };

  Threads threads(const box_time_page &page, nanoseconds &processor) const;
  static void add_threads_of(pid_t process, const Watched &watched, const box_time_page &page, nanoseconds &processor,
                             Threads &threads);
  bool is_at_work(nanoseconds wall) const;
  bool sleep_in_truth();
  bool is_complete(const box_time_page &page);
  bool has_new_members(const box_time_page &page);
  bool takes_in(pid_t process);
  void look_after_waiters(const box_time_page &page, nanoseconds wall, Look &look);
  bool is_lost(int row, const box_time_waiter &waiter, nanoseconds wall);

  Watched self_{getpid()};
  std::map<pid_t, Watched> members_;
  Threads before_;
  // A thread that was at work at the last look, 0: none. The first one of its process is seen again at once.
  pid_t worker_ = 0;
  nanoseconds seen_all_{0}, processor_{0};
  nanoseconds quiet_since_{0};
  bool is_complete_ = false;  // nobody has joined since before_
  bool waits_on_wall_ = false, is_blind_ = false;
  std::map<int, Overdue> overdue_;
};

}  // namespace box_time
