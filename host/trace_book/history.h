// What happened in a box, in its order: the library's records and the platform's calls as one, with the runs of commands to which
// they belong and the calls of functions in which they stand.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/box/call_ring.h"
#include "host/box/place.h"
#include "host/box/trace_ring.h"
#include "host/trace_book/trace_book.h"

namespace trace_book {

inline constexpr std::size_t kNoRun = SIZE_MAX;

// One record of the library or one call of the platform.
struct Moment {
  bool is_of_library = false;
  std::uint64_t number = 0;  // of the record among those of its ring
  std::int64_t time_ns = 0;
  pid_t pid = 0;
  std::size_t run = kNoRun;  // among runs()
  std::size_t depth = 0;     // functions of the library around it
  std::string level;         // "progress", or who is called: "database", "program", "operator"
  std::string function;
  std::string text;

  bool is_error = false;
  std::string unit_name;  // where it asks for one and gets it
  // It says nothing that holds: a record of the library for a read that failed in the other of two ways.
  bool is_void = false;
  // The beginning of what lasts, with how long it did, where it has ended; and its end, which the beginning has told.
  bool is_begin = false, is_end = false;
  std::optional<std::int64_t> duration_ns;
  std::string outcome;  // "exit status 206"
};

struct Run {
  std::uint32_t number = 0;  // in the box, from 1 on
  std::string words;         // as it was called
  pid_t pid = 0;
  std::int64_t begin_ns = 0;
  std::optional<std::int64_t> end_ns;
  int status = 0;  // where it has ended by itself

  std::string name() const;
};

class History {
 public:
  // Units stand by their location where the model is known.
  History(const std::vector<box::TraceEntry> &records, const std::vector<box::CallEntry> &calls, std::uint32_t model);

  const std::vector<Moment> &moments() const { return moments_; }
  const std::vector<Run> &runs() const { return runs_; }

 private:
  std::vector<Moment> moments_;
  std::vector<Run> runs_;
};

// A line of what is told: a moment, or several that say the same of one unit after the other.
struct Told {
  const Moment *moment;
  std::string text;
  std::optional<std::int64_t> duration_ns;
};

// A list asks for the name of each of its units: what a process asks for without a pause is told at once, or one by one.
enum class UnitNames { kTogether, kEach };
std::vector<Told> told(const std::vector<const Moment *> &moments, UnitNames names);

// In one line, for a page: the seconds since then, and what happened, further in the deeper it is.
std::string line_since(std::int64_t begin_ns, const Told &line);

}  // namespace trace_book
