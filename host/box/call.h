// A call of the platform, as it is kept.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace box {

// What was called, or happened. `text`, `first` and `second` are a record's; what is not named is empty or 0.
enum class CallKind : std::uint32_t {
  kMore,          // the text of a record goes on here: nobody is given one of these
  kBegin,         // a command begins. Text: its words; first: its parent; second: its number in the box
  kEnd,           // it ends. Result: its exit status
  kProgram,       // a control program starts. Text: its words; first: its parent
  kProgramEnd,    // it ends by itself. Text: its name; result: its exit status
  kOpen,          // of a database. First: its number, also of the next five
  kLock,          //
  kRead,          // text: the record's name; second: its bytes
  kWrite,         // the same
  kUnlock,        //
  kClose,         //
  kQuestion,      // the operator is asked. Text: the prompt; first: how many choices there are
  kAnswer,        // text: the line that was typed; first: the choice
  kLog,           // an event for the log. Text: its bytes; first: its head
  kName,          // the name of a unit. Text: the name; first and second: the unit's id
  kFileOpen,      // text: the path; of the next three first is the descriptor, second the bytes that were asked for
  kFileRead,      //
  kFileWrite,     //
  kFileClose,     //
  kSend,          // to the daemon. First: the daemon's number; second: the request
  kReceive,       // the same of a reply
  kWaitForReply,  // result: how many daemons have said something
};
inline constexpr std::uint32_t kCallKinds = static_cast<std::uint32_t>(CallKind::kWaitForReply) + 1;

// The result of an answer that is none: the operator is asked again.
inline constexpr std::int32_t kNoAnswer = -2;

struct Call {
  CallKind kind{};
  pid_t pid = 0;
  std::int64_t time_ns = 0;  // when it began, by the wall clock
  std::uint64_t duration_ns = 0;
  std::uint64_t position = 0;  // how many records of the trace came before it
  std::int32_t result = 0;
  std::uint32_t first = 0, second = 0;
  bool deviated = false;  // it went as `spbox deviate` had said
  std::string_view text;  // any bytes
};

inline constexpr std::size_t kLongestCallText = 408;  // what is longer is cut

}  // namespace box
