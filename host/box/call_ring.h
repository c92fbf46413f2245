// What passes between commands and the platform of their box: each call of the platform with what it came to, and each start of a
// command or a control program. A ring beside the trace, appended as that is; the trace itself holds the library's records only.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "host/box/record_ring.h"

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

struct CallEntry : Call {
  std::uint64_t number = 0;  // counted from 0 since the ring was made
  std::string whole_text;    // as far as the ring keeps it
  std::size_t text_size = 0;

  bool is_cut() const { return whole_text.size() < text_size; }
};

struct CallForm {
  static constexpr std::uint64_t kMagic = 0x314C4C4143584253;  // "SBXCALL1"
  static constexpr std::uint32_t kSlots = 8192;
  static constexpr std::size_t kBodyWords = 14;
  static constexpr const char *kName = "calls";
};

class CallRing {
 public:
  static constexpr std::uint32_t kSlots = CallForm::kSlots;
  static constexpr std::size_t kLongestText = 408;  // what is longer is cut

  // Makes an empty ring in `file`, in place of what is there. Throws.
  static void create(const std::filesystem::path &file);

  // Maps the ring, for the life of the process. Uses system calls only, and keeps errno. False when the file is missing or is no ring.
  bool map(const char *file) noexcept;

  // Appends a record, as the trace does. Allocates nothing, calls nothing of the system, and keeps errno. False when not mapped.
  bool append(const Call &call) noexcept;

  // A number for a command that begins, counted from 1. 0 when not mapped.
  std::uint32_t number_of_next_command() noexcept;

  // The records, oldest first. Throws.
  static std::vector<CallEntry> read(const std::filesystem::path &file);
  static std::vector<CallEntry> read_last(const std::filesystem::path &file, std::uint32_t count);

 private:
  RecordRing<CallForm> ring_;
};

// Now, by the clock that the records have.
std::int64_t call_time() noexcept;

}  // namespace box
