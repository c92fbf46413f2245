// What of a box's history somebody has asked `spbox trace` for.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "host/spbox/standard_output.h"
#include "host/spbox/verb.h"
#include "host/trace_book/history.h"

namespace spbox {

// What holds the history, in sentences.
struct Holder {
  std::string title = "The trace", name = "the box", remembers = "remembers";
  std::string is_empty = "The trace is empty: the library has recorded nothing in this box yet.";
};

struct TraceOptions {
  Holder holder;
  std::filesystem::path box;
  std::size_t last = 0;  // 0: all
  pid_t pid = 0;         // 0: of all
  bool errors = false, calls = false, follow = false;
  std::string run, function, since;
  bool each_name = false;
  std::set<pid_t> inside;  // who is in the box
  Window window;           // where it is printed

  trace_book::UnitNames names() const {
    return each_name ? trace_book::UnitNames::kEach : trace_book::UnitNames::kTogether;
  }
};

// What a moment looks like where there are colours: an error, what somebody does, what a program does.
Ink ink_of(const trace_book::Moment &moment);

// The options --last, --errors, --run, --pid and --function.
std::vector<Word> choosing_words(TraceOptions &options);

// Throws UsageError.
void check(const TraceOptions &options);

// Now, or the time of the newest record: the box's time may be ahead of the workstation's.
std::int64_t newest_time(const trace_book::History &history);

// Which moments of a history are asked for. Throws BoxError where there is no such run.
class Wanted {
 public:
  Wanted(const TraceOptions &options, const trace_book::History &history);

  bool has(const trace_book::Moment &moment) const;

 private:
  const TraceOptions &options_;
  std::optional<std::size_t> run_;
  std::int64_t begin_ = INT64_MIN;
};

}  // namespace spbox
