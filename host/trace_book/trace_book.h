// What the library's trace records say, in words.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/box/trace_ring.h"

namespace trace_book {

// What the words of a record are: the process that wrote it, its line of the source, and up to two values.
inline constexpr std::uint32_t kPidWord = 0, kLineWord = 1, kFirstValueWord = 2, kSecondValueWord = 3;

struct TraceValue {
  std::string meaning;  // "time limit"
  std::string text;     // "10", "-1 (no such process)"
  std::uint32_t word;
};

struct TraceLine {
  std::uint32_t pid;     // of the process that wrote the record
  std::uint32_t line;    // of the source, where the trace point stands
  std::string function;  // "lmainte_exec", with an internal step behind it where the record is of one
  std::string name;      // the event's in the catalogue: "entry", "exit", "started"; empty for an unknown one
  std::string event;     // in words: "a child was started"
  std::string level;     // "progress", "error", "process", "system error"
  std::vector<TraceValue> values;
  bool is_known;  // false for an event that no function of the library writes
  bool is_error;  // by the event's number: some points are recorded at the level of errors and are none
};

TraceLine words_of(const box::TraceEntry &entry);

}  // namespace trace_book
