// Trace records: what a function leaves in the service processor's trace, and the events' numbers.
//
// A source module has one Trace, a file-scope static that all its functions share. A function opens a Call with its
// block: the call records the entry, and on every way out the exit. In between it records points and errors, a line
// each:
//
//   constexpr Block kBlock = plain_block(0x02F);
//   Trace trace;
//   ...
//   Call call(trace, kBlock);
//   call.point(2, command_id, mode);
//   if (time_limit <= 0) return call.error(1), LMAINTE_FAILED;
#pragma once

#include <stdlib.h>
#include <sys/types.h>
#include <unistd.h>

#include <cstdint>

#include "include/lmainte_platform.h"

namespace lmainte {

enum class Level : uint32_t { kProgress = 256, kError = 2053, kProcess = 32769, kSystemError = 32778 };

// The numbers of one function's events. Its line is that of the declaration, and is the line of the exit record: the
// exit has no line of its own, and no other trace point of the module can have this one.
struct Block {
  uint32_t base;
  uint32_t error_offset;
  uint32_t line;

  constexpr uint32_t point(uint32_t number) const { return base + number; }
  constexpr uint32_t error(uint32_t number) const { return base + error_offset + number; }
};

inline constexpr uint32_t kEventBase = 0x110C0000;
inline constexpr uint32_t kSecondSpace = 0x8000;

// `first` is the entry point of a function that shares its block with another one; the exit follows it.
constexpr Block plain_block(uint32_t number, uint32_t first = 0, uint32_t line = __builtin_LINE()) {
  return {kEventBase + number * 16 + first, 0x1000, line};
}
constexpr Block second_block(uint32_t number, uint32_t first = 0, uint32_t line = __builtin_LINE()) {
  return {kEventBase + kSecondSpace + number * 16 + first, 0x3000, line};
}

// A point's number within the block, with the source line at which it stands.
struct Point {
  uint32_t number;
  uint32_t line;

  // NOLINTNEXTLINE(google-explicit-constructor): a number at a trace point becomes a point there
  constexpr Point(uint32_t number_, uint32_t line_ = __builtin_LINE()) : number(number_), line(line_) {}
};

// One value of a record: 32 bits, whatever type it came from. A character is taken without its sign.
struct Word {
  uint32_t value;

  // NOLINTBEGIN(google-explicit-constructor): values are handed over as they are
  constexpr Word(uint32_t v) : value(v) {}
  constexpr Word(int32_t v) : value(static_cast<uint32_t>(v)) {}
  constexpr Word(unsigned char v) : value(v) {}
  // NOLINTEND(google-explicit-constructor)
};

class Trace {
 public:
  void begin(uint32_t line) {
    count_ = 1;
    words_[0] = static_cast<uint32_t>(getpid());
    add(line);
  }

  // A word too many is a mistake in the library that must not pass as a record silently cut.
  void add(Word word) {
    if (count_ == kWords) abort();
    words_[count_++] = word.value;
  }

  void write(Level level, uint32_t event) const {
    mgb_trace_write(kModule, static_cast<uint32_t>(level), kKind, event, words_, count_ * 4 + kHeadBytes);
  }

 private:
  static constexpr uint32_t kModule = 14;
  static constexpr uint32_t kKind = 15;
  static constexpr uint32_t kWords = 4;
  static constexpr uint32_t kHeadBytes = 8;  // of the record in the trace, counted in its length

  uint32_t count_ = 0;
  uint32_t words_[kWords] = {};
  // A facility that takes the length for the size of the words reads this far.
  [[maybe_unused]] uint32_t guard_[kHeadBytes / 4] = {};
};

// One call of a traced function, from its entry record to its exit record.
class Call {
 public:
  Call(Trace &trace, const Block &block, uint32_t line = __builtin_LINE()) : trace_(trace), block_(block) {
    record(Level::kProgress, block.point(0), line);
  }
  Call(const Call &) = delete;
  Call &operator=(const Call &) = delete;
  ~Call() {
    if (exit_has_result_)
      record(Level::kProgress, block_.point(1), block_.line, Word(result_));
    else
      record(Level::kProgress, block_.point(1), block_.line);
  }

  // Records at a point of the block: normal progress, or at another level where the function says so.
  template <class... Words>
  requires(sizeof...(Words) <= 2) void point(Point at, Words... words) const {
    record(Level::kProgress, block_.point(at.number), at.line, Word(words)...);
  }
  template <class... Words>
  requires(sizeof...(Words) <= 2) void point(Level level, Point at, Words... words) const {
    record(level, block_.point(at.number), at.line, Word(words)...);
  }

  // An error that the library's own logic found, and one of a system or service call.
  template <class... Words>
  requires(sizeof...(Words) <= 2) void error(Point at, Words... words) const {
    record(Level::kError, block_.error(at.number), at.line, Word(words)...);
  }
  template <class... Words>
  requires(sizeof...(Words) <= 2) void system_error(Point at, Words... words) const {
    record(Level::kSystemError, block_.error(at.number), at.line, Word(words)...);
  }

  // For functions whose exit record carries the result.
  int32_t returns(int32_t result) {
    exit_has_result_ = true;
    result_ = result;
    return result;
  }

 private:
  // A signal handler of the maintenance command may call the library in the middle of this: what it finds half built in
  // the module's record it leaves so.
  template <class... Words>
  void record(Level level, uint32_t event, uint32_t line, Words... words) const {
    const Trace interrupted = trace_;
    trace_.begin(line);
    (trace_.add(words), ...);
    trace_.write(level, event);
    trace_ = interrupted;
  }

  Trace &trace_;
  const Block &block_;
  bool exit_has_result_ = false;
  int32_t result_ = 0;
};

}  // namespace lmainte
