// What a worker does that is forked from the storm itself: a row for each kind of work. It calls the code of the box and of its
// programs directly, so it costs a hundredth of a program that is started.
#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "host/box/place.h"
#include "storm/actors.h"

namespace storm {

// What workers tell, in memory that outlives them.
struct Told {
  static constexpr std::uint32_t kMostEvents = 1U << 16U;
  std::atomic<std::uint32_t> next_event = 1;
  std::atomic<std::uint32_t> events;  // whose saving was acknowledged
  std::array<std::atomic<std::uint32_t>, kMostEvents>
      heads;                           // of these events; 0 where a worker died before it said more
  std::atomic<std::uint32_t> counted;  // the highest number that was saved in all counted databases
  std::atomic<std::uint32_t> savers;   // workers that saved events and were killed
  std::atomic<std::uint32_t> findings;

  void acknowledge(std::uint32_t head);
};

struct Hand {
  const box::Place &place;
  const std::vector<std::string> &units;
  Told &told;
  Random random;
};

struct Duty {
  const char *name;
  unsigned weight;                    // how often, among all
  std::chrono::microseconds longest;  // a worker lives no longer
  // Does the work once. False when the process can do no more. Throws box::BoxError where the box says why not, and anything
  // else where something does not hold.
  bool (*once)(Hand &hand);
};

std::span<const Duty> duties();

bool saves_events(const Duty &duty);

// One number, which workers count up in several databases at once.
inline constexpr std::uint32_t kCountedDatabases[] = {0, 3, 5};
inline constexpr char kCountedRecord[] = "storm";

// As it stands in these records of all databases: 0 where there is none yet. Throws where they differ.
std::uint32_t counted_in(const box::Place &place);

// The records that workers put into the trace have this module, and words that fit together.
inline constexpr std::uint32_t kModuleOfStorm = 0x53;

}  // namespace storm
