// A platform in memory: records as a client hands them over, files of zeros, and a trace that keeps the last record.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace bench {

// What a call of the library asked of the platform. Its floor makes the same calls, and nothing else.
struct Requests {
  struct Read {
    std::uint32_t db_id;
    std::string key;
  };
  std::vector<Read> reads;
  std::uint64_t sessions = 0;  // opens, locks, unlocks and closes
  std::uint64_t records = 0;   // of the trace
};

// Stores a run of records, as many as `count`, by the pattern of their names. Every byte is such that units are installed,
// neither faulted nor degraded, and have a name.
void put(std::uint32_t db_id, const char *pattern, int count, std::size_t size);

void clear();

// Runs a call once and tells what it asked for.
Requests watch(void (*call)());

// How long a floor keeps the records that it reads.
enum class Kept { kForAMoment, kUntilTheEnd };

// Makes the requests with nothing in between: the platform's calls, a free for each record, and for each trace record the
// process id, taken afresh, and the write.
void replay(const Requests &requests, Kept kept = Kept::kForAMoment);

}  // namespace bench
