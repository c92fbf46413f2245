// What the library's results mean to the operator: the reason in words, and what to do.
#pragma once

#include <cstdint>
#include <string_view>

#include "procedure/text.h"

namespace lmainte::procedure {

struct Meaning {
  int32_t result;
  bool is_fault_of_unit;  // another unit would do better
  const char *reason;     // behind "it" where it is a fault of the unit
  const char *way_out;
};

const Meaning &meaning_of(int32_t result);

// "it failed its test (result 208)"
Text reason_of(int32_t result);

// Ways out that several failures share, in the operator's language.
const char *try_again();
const char *check_pager();
const char *check_log();

// Tells that something failed that is no control program, or for a reason that the way out names. Returns the step's outcome.
int32_t failed(std::string_view what, int32_t result, const char *way_out);

// Tells that a control program failed.
int32_t failed(std::string_view what, int32_t result);

// Whether an operation may have done its work: a program that was stopped at its time limit may have.
bool perhaps_done(int32_t result);

}  // namespace lmainte::procedure
