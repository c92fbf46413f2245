// How the calls of the system fail: a row for each call that a program of a box makes.
#pragma once

#include <span>

namespace failures {

constexpr int kShort = 0;  // no error: half of the bytes are read or written

struct Call {
  enum class Failing {
    kUndone,  // nothing happens
    kDone,    // it happens, and its result is lost: what a failed close has closed is closed
  };
  long number;
  const char *name;
  std::span<const int> errors;  // none where it cannot fail
  Failing failing = Failing::kUndone;
};

// Null where there is no row.
const Call *call_of(long number);

// "EIO", or "short".
const char *error_name(int error);

// Whether it cannot be so for ever: a signal comes and goes.
bool passes(int error);

}  // namespace failures
