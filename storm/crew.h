// Workers that are forked from the storm itself, some at a time in one box, each killed by the kernel at a random moment.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "host/box/place.h"
#include "storm/duties.h"
#include "storm/tally.h"

namespace storm {

class Crew {
 public:
  // These outlive it. Throws.
  Crew(const box::Place &place, const std::vector<std::string> &units, Tally &tally);
  ~Crew();
  Crew(const Crew &) = delete;
  Crew &operator=(const Crew &) = delete;

  // From now on workers come and are killed, led by a process of their own. Throws.
  void start(std::uint64_t seed);

  // Waits until the last of them is gone. Adds the events whose saving was acknowledged meanwhile, and the workers that were
  // killed while they saved some. False when something did not hold, which is told.
  bool finish(std::set<std::uint32_t> &events, std::size_t &savers);

  // The first of that many heads of events, which no worker saves.
  std::uint32_t heads_of_events(std::uint32_t count) { return told_.next_event.fetch_add(count); }

  // The highest number that was saved in all counted databases, since the box was made.
  std::uint32_t counted() const { return told_.counted; }
  void forget_counted() { told_.counted = 0; }

 private:
  [[noreturn]] void lead(std::uint64_t seed);
  [[noreturn]] void work(std::size_t number, std::uint64_t seed, pid_t leader);
  void take_end(std::size_t number, int status);
  void find(std::size_t duty, const std::string &what);

  const box::Place &place_;
  const std::vector<std::string> &units_;
  Tally &tally_;
  Told &told_;
  pid_t leader_ = -1;
};

}  // namespace storm
