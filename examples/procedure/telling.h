// What a procedure tells the operator, what it asks, and how it and its steps end.
#pragma once

#include <sys/statvfs.h>

#include <cstdint>
#include <cstdio>
#include <string>

#include "../graceful.h"
#include "lmainte.h"
#include "lmainte_host.h"

namespace procedure {

// The library shows what it could write: a list that /tmp had no room for is cut short, and nobody knows.
inline bool has_room_for_lists() {
  constexpr uint64_t kRoom = 65536;
  struct statvfs tmp {};
  return statvfs("/tmp", &tmp) == 0 && uint64_t{tmp.f_bavail} * tmp.f_frsize >= kRoom;
}

// How a procedure ends, its exit status; and how a step ends.
enum Outcome {
  kDone = 0,
  kFailed = 1,
  kGaveUp = 2,
  kRefused = 3  // of a step: not this unit, not now; the operator may choose another one
};

inline constexpr const char *kTryAgain =
    "Another command may hold the database: try again in a minute.\nIf it fails again, a record is broken: the trace "
    "names it.";
inline constexpr const char *kCheckPager = "Check that /bin/busybox is there and that /tmp has room.";

inline Outcome failed(const std::string &what, int32_t result, const char *way_out) {
  std::printf("%s (result %d).\n%s\n", what.c_str(), result, way_out);
  return kFailed;
}

// Whether an operation may have done its work: a program that was stopped at its time limit may have.
inline bool perhaps_done(int32_t result) {
  return result == LMAINTE_OK || result == LMAINTE_FAILED;
}

// What to do after an operation has failed.
inline const char *way_out_of(int32_t result) {
  switch (result) {
    case LMAINTE_BUSY:
    case LMAINTE_MODE_REFUSED:
    case LMAINTE_FLAG_REFUSED:
      return "Another procedure is at work. Let it end, then start again.";
    case LMAINTE_LED_FAILED:
      return "The unit does not answer. Check that it is in place, then start again.";
    case LMAINTE_DETACH_FAILED:
      return "The server still uses the unit: stop what runs on it, then start again.";
    case LMAINTE_FAN_FAILED:
      return "The fans' speed could not be set. Look at the fan trays, then start again.";
    case LMAINTE_SETUP_FAILED:
      return "A domain runs on the board, or its other unit is missing.\nMend that, then start again.";
    case LMAINTE_LINK_FAILED:
      return "The board does not answer. Look at its seat, then start again.";
    default:
      return "The control program is missing, failed or took too long; the trace says which.\nThen start again.";
  }
}

// The operator typed q, the input ended, a signal came, or the terminal failed.
inline Outcome not_chosen(int32_t result) {
  if (graceful::signal() == 0 && result < 0)
    return failed("The question could not be asked", result, "Start the procedure on the operator's terminal.");
  std::puts(graceful::signal() != 0 ? "Interrupted." : "Given up.");
  return kGaveUp;
}

// Asks for one of count choices: kDone with the operator's, or the way out.
template <class... Values>
Outcome ask(int32_t count, int32_t &choice, const char *format, Values... values) {
  const int32_t result = lmainte_ask_select(count, &choice, format, values...);
  return result == LMAINTE_HOST_CHOSEN && graceful::signal() == 0 ? kDone : not_chosen(result);
}

template <class... Values>
Outcome confirm(const char *format, Values... values) {
  int32_t choice = 0;
  return ask(1, choice, format, values...);
}

// Ctrl-C does not reach the control program, nor cut the library's waiting short; it is heeded at the next question.
template <class Operation>
int32_t undisturbed(Operation operation) {
  const graceful::Undisturbed undisturbed;
  return operation();
}

// The same, under a line that shows that time passes, but no longer than the operation may take: the child that draws it
// outlives a command that is killed.
template <class Operation>
int32_t with_progress(const std::string &message, int32_t longest, Operation operation) {
  const graceful::Undisturbed undisturbed;
  const DotParam line = {1, message.c_str(), longest};
  const int32_t child = lmainte_dot_start(&line);
  const int32_t result = operation();
  if (child > 0) lmainte_dot_end(child);
  return result;
}

}  // namespace procedure
