// Where the unit stands in a procedure. What is done and said at the way out follows from it.
#pragma once

#include <cstdint>

#include "include/lmainte_procedure.h"

namespace lmainte::procedure {

class Condition {
 public:
  explicit Condition(bool is_installed) : may_run_(is_installed) {}

  int32_t value() const { return value_; }  // LMAINTE_CONDITION_...
  // Why it did not pass, as an operation's result.
  int32_t reason() const { return reason_; }
  // It may be in operation: not safe to pull out.
  bool may_run() const { return may_run_; }

  // It was to be taken out of operation. A program that was stopped at its limit may have done it.
  void take_out_ended(int32_t result);
  // From now on what is in the place is another unit.
  void is_exchanged();
  // It was tested and set up, with this result. It may have come into operation before it failed.
  void bring_up_ended(int32_t result, bool is_in_operation);
  // It is in operation again, as it was found.
  void is_put_back();
  // It has all that it needed: whatever comes afterwards, nothing of it is undone.
  void is_good() { value_ = LMAINTE_CONDITION_GOOD; }

 private:
  int32_t value_ = LMAINTE_CONDITION_UNTOUCHED;
  int32_t reason_ = LMAINTE_OK;
  bool may_run_;
};

}  // namespace lmainte::procedure
