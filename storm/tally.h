// What the lanes of a storm count, in memory that they share with the process that started them.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>

namespace storm {

constexpr std::size_t kMostActors = 32;  // and duties of workers, which come behind them

struct Tally {
  struct Row {
    std::atomic<std::uint64_t> ended, killed;
  };
  Row rows[kMostActors];
  std::atomic<std::uint64_t> rounds, events, findings;
  std::atomic<bool> stop;

  // Tells of something that does not hold, in one write.
  void find(const std::string &sentence);

  std::uint64_t killed() const;
};

}  // namespace storm
