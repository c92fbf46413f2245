// How a box's time passes: what the keeper sees goes in, the time comes out.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace box_time {

using std::chrono::nanoseconds;

// How fast: so many times as on the wall, or full: it passes when nobody works, to the next moment for which somebody waits.
struct Speed {
  static constexpr std::uint32_t kFull = 0, kMost = 1000;

  std::uint32_t times = kFull;

  bool is_full() const { return times == kFull; }
};

// "full", or a number from 1 to 1000.
std::optional<Speed> speed_of(const std::string &word);

// What the keeper sees at a look.
struct Sight {
  nanoseconds wall{0};                // any clock that only rises
  nanoseconds processor{0};           // the time that the processes have used until now
  bool is_quiet = false;              // everybody waits: for a moment of the box's time, or for somebody else
  bool waits_on_wall = false;         // it is quiet, but somebody waits for a moment of the wall's time
  bool is_late = false;               // somebody whose moment has come does not know it yet
  std::optional<nanoseconds> moment;  // the next one for which somebody waits
};

class Pace {
 public:
  // Who works for longer than this, of the processor's time, no longer keeps the time from passing.
  static constexpr nanoseconds kLongestWork = std::chrono::milliseconds(200);

  Pace(Speed speed, nanoseconds wall) : speed_(speed), wall_(wall) {}

  // Longer than this, nobody knows what has happened since the last look.
  static constexpr nanoseconds kLongestSight = std::chrono::milliseconds(20);

  // The box's time from now on, since the beginning. It never passes a moment without standing there once.
  nanoseconds look(const Sight &sight);

  nanoseconds passed() const { return passed_; }

 private:
  nanoseconds flow(const Sight &sight, nanoseconds on_wall, nanoseconds of_processor);
  void pass(nanoseconds time, const Sight &sight);

  Speed speed_;
  nanoseconds wall_, processor_{0}, passed_{0};
  nanoseconds worked_{0};  // since it was quiet last, or since a moment has come
  bool is_held_ = false;   // at a moment that has come, until all that follows from it is done
};

}  // namespace box_time
