// Trace records: what a function leaves in the service processor's trace.
//
// A source module has one Trace, a file-scope static that all its functions share. A function opens a Call with its
// block: the call records the entry, and on every way out the exit. In between it records points and errors, by their
// names in the catalogue, a line each:
//
//   constexpr Block kBlock = block_of<ControlMainte>();
//   Trace trace;
//   ...
//   Call call(trace, kBlock);
//   call.point(ControlMainte::kCommand, command_id, mode);
//   if (time_limit <= 0) return call.error(ControlMainte::kNoTimeLimit), LMAINTE_FAILED;
//
// A record names the source line of its trace point, so no two events of a module stand on one line. A helper that
// serves several functions takes their points as arguments: a Point or an Error has the line at which it is written
// down.
#pragma once

#include <stdlib.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <concepts>
#include <cstdint>
#include <type_traits>

#include "include/lmainte_platform.h"
#include "trace_events/event.h"

// Where the library is built for size, one copy of such a function serves all callers. For speed, the compiler decides.
#ifdef __OPTIMIZE_SIZE__
#define LMAINTE_ONE_COPY [[gnu::noinline]]
#else
#define LMAINTE_ONE_COPY
#endif

namespace lmainte {

enum class Level : uint32_t { kProgress = 256, kError = 2053, kProcess = 32769, kSystemError = 32778 };

// An event of the catalogue.
template <class Event>
concept CatalogueEvent = std::is_enum_v<Event> && std::convertible_to<Event, trace_events::Code> &&
    std::same_as<std::underlying_type_t<Event>, trace_events::Code>;

// None of these is ever defined: their names are what the compiler says.
void this_event_is_an_error();
void this_event_is_no_error();

// A trace point in one word: a function gets it in a register.
constexpr uint32_t packed(trace_events::Code code, uint32_t line) {
  return uint32_t{code} << 16U | (line & 0xFFFFU);
}
constexpr trace_events::Code code_of(uint32_t packed_point) {
  return static_cast<trace_events::Code>(packed_point >> 16U);
}
constexpr uint32_t line_of(uint32_t packed_point) {
  return packed_point & 0xFFFFU;
}

// An event that is no error, and the source line at which it was written down.
struct Point {
  uint32_t in_one_word;

  // NOLINTNEXTLINE(google-explicit-constructor): an event becomes a point at the line where it is named
  template <CatalogueEvent Event>
  consteval Point(Event event, uint32_t line = __builtin_LINE()) : in_one_word(packed(event, line)) {
    if (trace_events::is_error(event)) this_event_is_an_error();
  }
};

// An error event, and the source line at which it was written down.
struct Error {
  uint32_t in_one_word;

  // NOLINTNEXTLINE(google-explicit-constructor): an event becomes an error at the line where it is named
  template <CatalogueEvent Event>
  consteval Error(Event event, uint32_t line = __builtin_LINE()) : in_one_word(packed(event, line)) {
    if (!trace_events::is_error(event)) this_event_is_no_error();
  }
};

// The entry and the exit of a function. The exit has no line of its own. Its record has the line of this declaration,
// which no other trace point of the module can have.
struct Block {
  trace_events::Code entry;
  trace_events::Code exit;
  uint32_t line;
};

template <class Function>
consteval Block block_of(uint32_t line = __builtin_LINE()) {
  static_assert(Function::Home::template kHas<Function>, "the function is missing in the list of its room");
  return {Function::kEntry, Function::kExit, line};
}

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
  static constexpr uint32_t kWords = 4;

  // What is built anew for each record.
  struct Content {
    uint32_t count = 0;
    uint32_t words[kWords] = {};
  };
  const Content &content() const { return content_; }
  void restore(const Content &content) { content_ = content; }

  void begin(uint32_t line) {
    // Asked first: behind a call the compiler does not know the count, and would test it for each word.
    const pid_t process = getpid();
    content_.count = 0;
    add(process);
    add(line);
  }

  // One word too many is a mistake in the library. It ends the process: a record is never cut silently.
  void add(Word word) {
    if (content_.count == kWords) abort();
    content_.words[content_.count++] = word.value;
  }

  void write(Level level, trace_events::Code code) const {
    mgb_trace_write(kModule, static_cast<uint32_t>(level), kKind, trace_events::kEventBase + code, content_.words,
                    content_.count * 4 + kHeadBytes);
  }

 private:
  static constexpr uint32_t kModule = 14;
  static constexpr uint32_t kKind = 15;
  static constexpr uint32_t kHeadBytes = 8;  // of the record in the trace, counted in its length

  Content content_;
  // A facility that takes the length for the size of the words reads this far.
  [[maybe_unused]] uint32_t guard_[kHeadBytes / 4] = {};
};

// One call of a traced function, from its entry record to its exit record.
class Call {
 public:
  [[gnu::always_inline]] Call(Trace &trace, Block block, uint32_t line = __builtin_LINE())
      : Call(trace, packed(block.entry, line), block.line) {}
  // For a helper that serves several functions: each hands in its entry, with a line of its own.
  [[gnu::always_inline]] Call(Trace &trace, Block block, Point entry)
      : Call(trace, block, line_of(entry.in_one_word)) {}
  Call(const Call &) = delete;
  Call &operator=(const Call &) = delete;
  ~Call() {
    if (exit_has_result_)
      record_point(exit_, Word(result_).value);
    else
      record_point(exit_);
  }

  // Records a point: normal progress, or at another level where the function says so.
  template <class... Words>
  requires(sizeof...(Words) <= 2) [[gnu::always_inline]] void point(Point at, Words... words) const {
    record_point(at.in_one_word, Word(words).value...);
  }
  template <class... Words>
  requires(sizeof...(Words) <= 2) [[gnu::always_inline]] void point(Level level, Point at, Words... words) const {
    record(level, at.in_one_word, Word(words).value...);
  }

  // An error that the library's own logic found.
  template <class... Words>
  requires(sizeof...(Words) <= 2) [[gnu::always_inline]] void error(Error at, Words... words) const {
    record_error(at.in_one_word, Word(words).value...);
  }
  // An error of a service call.
  template <class... Words>
  requires(sizeof...(Words) <= 2) [[gnu::always_inline]] void system_error(Error at, Words... words) const {
    record(Level::kSystemError, at.in_one_word, Word(words).value...);
  }
  // An error of a system call, whose errno is the last word.
  template <class... Words>
  requires(sizeof...(Words) <= 1) [[gnu::always_inline]] void system_call_failed(Error at, Words... words) const {
    record_errno(at.in_one_word, Word(words).value...);
  }

  // For functions whose exit record carries the result.
  int32_t returns(int32_t result) {
    exit_has_result_ = true;
    result_ = result;
    return result;
  }

 private:
  LMAINTE_ONE_COPY Call(Trace &trace, uint32_t entry, uint32_t exit_line)
      : trace_(trace), exit_(packed(static_cast<trace_events::Code>(code_of(entry) + 1), exit_line)) {
    record_point(entry);
  }

  template <class... Words>
  void record_point(uint32_t at, Words... words) const {
    record(Level::kProgress, at, words...);
  }
  template <class... Words>
  void record_error(uint32_t at, Words... words) const {
    record(Level::kError, at, words...);
  }

  template <class... Words>
  [[gnu::noinline]] void record_errno(uint32_t at, Words... words) const {
    record(Level::kSystemError, at, words..., Word(errno).value);
  }

  // A signal handler of the maintenance command may call the library in the middle of this. The handler's calls leave the
  // module's record as they found it, also when it is half built. One copy of this serves the whole library.
  template <class... Words>
  [[gnu::noinline]] void record(Level level, uint32_t at, Words... words) const {
    Trace &trace = trace_;
    const Trace::Content interrupted = trace.content();
    trace.begin(line_of(at));
    (trace.add(words), ...);
    trace.write(level, code_of(at));
    trace.restore(interrupted);
  }

  Trace &trace_;
  const uint32_t exit_;
  bool exit_has_result_ = false;
  int32_t result_ = 0;
};

// Whether an argument is given. Records this error if it is null.
[[gnu::always_inline]] inline bool is_given(const Call &call, Error not_given, const void *argument) {
  if (argument == nullptr) call.error(not_given);
  return argument != nullptr;
}

}  // namespace lmainte
