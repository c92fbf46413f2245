#include "include/lmainte.h"

#include <unistd.h>

#include "src/db/session_bracket.h"
#include "src/frame/trace.h"
#include "src/inventory/unit_readers.h"
#include "src/model/model_family.h"
#include "src/model/unit_range.h"
#include "src/model/unit_status.h"
#include "trace_events/inventory.h"

namespace {

using lmainte::Block;
using lmainte::Call;
using lmainte::UnitReader;
using trace_events::AwaitState;
using trace_events::ChkFruInstall;
using trace_events::TestState;

lmainte::Trace trace;
constexpr Block kCheckInstall = lmainte::block_of<ChkFruInstall>();
constexpr Block kAwait = lmainte::block_of<AwaitState>();
constexpr Block kTestState = lmainte::block_of<TestState>();

constexpr lmainte::BracketErrors kBracketErrors = {
    .not_opened = ChkFruInstall::kNotOpened,
    .not_locked = ChkFruInstall::kNotLocked,
    .not_unlocked = ChkFruInstall::kNotUnlocked,
    .not_closed = ChkFruInstall::kNotClosed,
    .database_first = true,
};

// How long a type of unit is waited for; a type without a row takes the default.
struct Timing {
  int32_t type;
  int32_t passes;
  unsigned interval;
};

constexpr Timing kTimings[] = {{0, 5, 1}};
constexpr unsigned kSecondsBefore = 5;
constexpr int32_t kConfirmations = 4;

const Timing &timing_of(int32_t type) {
  const Timing *timing = kTimings;
  while (timing->type != 0 && timing->type != type) ++timing;
  return *timing;
}

// What the operator is expected to have done: 0 and 1 mean inserted, all else pulled.
bool expects_installed(uint32_t expectation) {
  return expectation <= 1;
}

struct Check {
  uint32_t expectation;
  int32_t type;
  int32_t index;
  int32_t model;
  void *record;
};

int32_t test_state(const Check &check) {
  const Call call(trace, kTestState);
  const UnitReader *reader = lmainte::reader_of(check.type);
  if (reader == nullptr) {
    call.error(TestState::kNoType, check.type);
    return LMAINTE_FAILED;
  }
  const uint32_t status = reader->head(check.record, 0).status;
  return lmainte::is_installed(status) == expects_installed(check.expectation) ? LMAINTE_OK : LMAINTE_NOT_REACHED;
}

int32_t read_and_test(const Call &call, const Check &check) {
  const int32_t result = lmainte_get_fru_data(check.type, check.index, 1, check.model, check.record);
  if (result == LMAINTE_OK) return test_state(check);
  call.error(AwaitState::kNotRead, result);
  return LMAINTE_FAILED;
}

int32_t reach(const Call &call, const Check &check, const Timing &timing) {
  for (int32_t pass = 0; pass < timing.passes; ++pass) {
    const int32_t result = read_and_test(call, check);
    if (result != LMAINTE_NOT_REACHED) return result;
    sleep(timing.interval);
  }
  return LMAINTE_NOT_REACHED;
}

int32_t hold(const Call &call, const Check &check, const Timing &timing) {
  const int32_t passes = timing.passes < kConfirmations ? timing.passes : kConfirmations;
  for (int32_t pass = 1; pass <= passes; ++pass) {
    const int32_t result = read_and_test(call, check);
    if (result != LMAINTE_OK) return result;
    if (pass < kConfirmations) sleep(timing.interval);
  }
  return LMAINTE_OK;
}

// Waits until the unit shows the expected state, then until it has kept it for a while.
int32_t await_state(const Check &check) {
  const Call call(trace, kAwait);
  const Timing &timing = timing_of(check.type);
  sleep(kSecondsBefore);
  int32_t result = reach(call, check, timing);
  if (result == LMAINTE_OK) result = hold(call, check, timing);
  if (result == LMAINTE_NOT_REACHED) call.error(AwaitState::kNotReached, result);
  return result;
}

}  // namespace

int32_t lmainte_chk_fru_install(uint32_t expectation, int32_t type, int32_t index, int32_t model, void *record) {
  const Call call(trace, kCheckInstall);
  if (index == lmainte::kAllUnits || record == nullptr || !lmainte::is_model(model)) {
    call.error(ChkFruInstall::kRefused, index, model);
    return LMAINTE_FAILED;
  }
  const uint32_t databases[] = {LMAINTE_DB_SETUP, LMAINTE_DB_CURRENT, LMAINTE_DB_LOCAL, LMAINTE_DB_FRU};
  int32_t result = LMAINTE_FAILED;
  lmainte::SessionBracket bracket(call, kBracketErrors, databases, lmainte::Hold::kOpen);
  const bool released = bracket.run([&] {
    result = await_state({expectation, type, index, model, record});
    return true;
  });
  return released ? result : LMAINTE_FAILED;
}
