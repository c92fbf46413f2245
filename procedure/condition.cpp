#include "procedure/condition.h"

namespace lmainte::procedure {

void Condition::take_out_ended(int32_t result) {
  const bool was_in_order = value_ == LMAINTE_CONDITION_UNTOUCHED || value_ == LMAINTE_CONDITION_GOOD;
  if (result == LMAINTE_FAILED && was_in_order) value_ = LMAINTE_CONDITION_IN_DOUBT;
  if (result != LMAINTE_OK) return;
  may_run_ = false;
  if (was_in_order || value_ == LMAINTE_CONDITION_IN_DOUBT) value_ = LMAINTE_CONDITION_OUT;
  if (value_ == LMAINTE_CONDITION_HALF_PASSED) value_ = LMAINTE_CONDITION_REJECTED;
}

void Condition::is_exchanged() {
  value_ = LMAINTE_CONDITION_EXCHANGED;
  reason_ = LMAINTE_OK;
}

void Condition::is_put_back() {
  value_ = LMAINTE_CONDITION_UNTOUCHED;
  may_run_ = true;
}

void Condition::bring_up_ended(int32_t result, bool is_in_operation) {
  if (is_in_operation) may_run_ = true;
  reason_ = result;
  if (result != LMAINTE_OK) value_ = is_in_operation ? LMAINTE_CONDITION_HALF_PASSED : LMAINTE_CONDITION_REJECTED;
}

}  // namespace lmainte::procedure
