// One box in the storm: rounds in which some work there and are killed, and then a look at what must hold.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "host/terminal/background_program.h"
#include "storm/actors.h"
#include "storm/crew.h"
#include "storm/laws.h"
#include "storm/orphans.h"
#include "storm/tally.h"

namespace storm {

using Clock = std::chrono::steady_clock;

class Lane {
 public:
  // Makes a box in the folder, which is there and empty. Throws.
  Lane(const std::filesystem::path &folder, std::uint64_t seed, Tally &tally);

  // Until the time is over, so many were killed in all boxes, somebody asks to stop, or something does not hold. False in the
  // last case.
  bool go(Clock::time_point end, std::uint64_t most_killed);

 private:
  struct Worker {
    std::size_t actor;
    terminal::BackgroundProgram program;
    Clock::time_point started;
    Clock::duration until_killed;
  };

  void start(std::size_t actor);
  void start_some();
  void kill_in_time();
  void take_end(Worker &worker);
  void take_events(const std::string &output);
  void look(bool thoroughly);
  void look_for_orphans(Orphans which);
  void look_at_plays();
  void found(const std::string &what);

  Random random_;
  Tally &tally_;
  Subject subject_;
  box::Place place_;
  std::vector<std::string> units_;
  Laws laws_;
  Crew crew_;
  std::array<Clock::duration, kMostActors> usual_{};  // how long an actor works that is not killed
  std::vector<Worker> workers_;                       // of this round
  std::string story_;                                 // who was killed in this round
  std::set<std::uint32_t> events_;                    // that must be in the log
  std::size_t savers_ = 0;                            // that were killed in this round
  bool is_sound_ = true, plays_were_killed_ = false;
};

}  // namespace storm
