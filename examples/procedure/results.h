// What the library's results mean to the operator: the reason in words, and what to do.
#pragma once

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string>

#include "lmainte.h"
#include "telling.h"

namespace procedure {

// How a procedure ends, its exit status; and how a step ends.
enum Outcome {
  kDone = 0,
  kFailed = 1,
  kGaveUp = 2,
  kRefused = 3  // of a step: not this unit, not now; the operator may choose another one
};

struct Meaning {
  int32_t result;
  bool is_fault_of_unit;  // another unit would do better
  const char *reason;     // behind "it" where it is a fault of the unit
  const char *way_out;
};

inline constexpr const char *kTryAgain =
    "Another command may be using the database: try again in a minute. If it fails again, a record is broken, and the "
    "trace names it.";
inline constexpr const char *kCheckPager = "Check that /bin/busybox is there and that /tmp has room.";

inline constexpr Meaning kMeanings[] = {
    {LMAINTE_BUSY, false, "another procedure is at work", "Let it end, then start again."},
    {LMAINTE_MODE_REFUSED, false, "the server refuses", "Let other procedures end, then start again."},
    {LMAINTE_FLAG_REFUSED, false, "the maintenance flag was refused", "Let other procedures end, then start again."},
    {LMAINTE_DETACH_FAILED, false, "the server still uses the unit", "Stop what runs on it, then start again."},
    {LMAINTE_LED_FAILED, false, "the LED was not switched", "Check that the unit is in place, then start again."},
    {LMAINTE_TEST_FAILED, true, "failed its test", "Exchange it for another one."},
    {LMAINTE_SETUP_FAILED, false, "the board could not be divided",
     "Check that no domain runs on the board and that both its units are in place, then start again."},
    {LMAINTE_CLEAR_FAILED, false, "a domain runs on the board", "Stop the domain."},
    {LMAINTE_FAN_FAILED, false, "the speed of the fans was not set", "Check the fan trays, then start again."},
    {LMAINTE_FANSPEED_FAILED, true, "does not run at its speed", "Exchange it for another one."},
    {LMAINTE_LINK_FAILED, true, "does not answer on the server's links",
     "Check that it sits firmly, then start again."},
};

inline constexpr Meaning kAnyOther = {LMAINTE_FAILED, false, "a control program is missing, crashed or took too long",
                                      "The trace says which one. Then start again."};

inline const Meaning &meaning_of(int32_t result) {
  const auto *const end = std::end(kMeanings);
  const auto *const row =
      std::find_if(std::begin(kMeanings), end, [&](const Meaning &meaning) { return meaning.result == result; });
  return row == end ? kAnyOther : *row;
}

// "it failed its test (result 208)"
inline std::string reason_of(int32_t result) {
  const Meaning &meaning = meaning_of(result);
  return text_of("%s%s (result %d)", meaning.is_fault_of_unit ? "it " : "", meaning.reason, result);
}

// Something failed that is no control program, or for a reason that the way out names.
inline Outcome failed(const std::string &what, int32_t result, const char *way_out) {
  tell("%s (result %d).\n%s", what.c_str(), result, way_out);
  return kFailed;
}

// A control program failed.
inline Outcome failed(const std::string &what, int32_t result) {
  tell("%s: %s.\n%s", what.c_str(), reason_of(result).c_str(), meaning_of(result).way_out);
  return kFailed;
}

// Whether an operation may have done its work: a program that was stopped at its time limit may have.
inline bool perhaps_done(int32_t result) {
  return result == LMAINTE_OK || result == LMAINTE_FAILED;
}

}  // namespace procedure
