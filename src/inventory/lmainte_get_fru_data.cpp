#include "include/lmainte.h"

#include <cstddef>

#include <unistd.h>

#include "src/db/record_view.h"
#include "src/db/session_bracket.h"
#include "src/frame/trace.h"
#include "src/model/model_family.h"
#include "src/model/unit_status.h"

namespace {

using lmainte::Block;
using lmainte::Call;

lmainte::Trace trace;
constexpr Block kGetFruData = lmainte::plain_block(0x06A);
constexpr Block kCheckInstall = lmainte::plain_block(0x06B);
constexpr Block kAwait = lmainte::plain_block(0x06C);
constexpr Block kTestState = lmainte::plain_block(0x06D);

using Getter = int32_t (*)(int32_t index, int32_t count, int32_t model, void *out);

// The getter of each type of unit; a getter that is null says that the type is known and not served here.
struct TypeRow {
  int32_t type;
  Getter getter;
  size_t status_offset;
};

template <class Unit, int32_t (*Get)(int32_t, int32_t, int32_t, Unit *)>
int32_t get(int32_t index, int32_t count, int32_t model, void *out) {
  return Get(index, count, model, static_cast<Unit *>(out));
}

constexpr Getter kGetBoard = get<SbData, lmainte_get_sb_data>;
constexpr Getter kGetPsu = get<PsuData, lmainte_get_psu_data>;
constexpr Getter kGetFantray = get<FantrayData, lmainte_get_fantray_data>;
constexpr Getter kGetDdc = get<BpUnitData, lmainte_get_ddca_data>;

constexpr TypeRow kTypes[] = {
    {LMAINTE_TYPE_CMU, kGetBoard, offsetof(SbData, cmu.status)},
    {LMAINTE_TYPE_IOU, kGetBoard, offsetof(SbData, iou.status)},
    {LMAINTE_TYPE_PSU, kGetPsu, offsetof(PsuData, status)},
    {LMAINTE_TYPE_PSU_2, kGetPsu, offsetof(PsuData, status)},
    {LMAINTE_TYPE_FANTRAY_2, kGetFantray, offsetof(FantrayData, status)},
    {LMAINTE_TYPE_FANTRAY_3, kGetFantray, offsetof(FantrayData, status)},
    {LMAINTE_TYPE_FANTRAY, kGetFantray, offsetof(FantrayData, status)},
    {LMAINTE_TYPE_DDC, kGetDdc, offsetof(BpUnitData, status)},
    {LMAINTE_TYPE_EMGBU, nullptr, 0},
    {LMAINTE_TYPE_EMGBR, nullptr, 0},
};

const TypeRow *row_of(int32_t type) {
  for (const TypeRow &row : kTypes)
    if (row.type == type) return &row;
  return nullptr;
}

// How long a type of unit is waited for; a type without a row takes the default.
struct Timing {
  int32_t type;
  int32_t passes;
  unsigned interval;
};

constexpr Timing kTimings[] = {{0, 5, 1}};
constexpr unsigned kSecondsBefore = 5;
constexpr int32_t kConfirmations = 3;

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
  const TypeRow *row = row_of(check.type);
  if (row == nullptr || row->getter == nullptr) {
    call.error(1, check.type);
    return LMAINTE_FAILED;
  }
  const uint32_t status = lmainte::RecordView(check.record).at(row->status_offset).word(0);
  return lmainte::is_installed(status) == expects_installed(check.expectation) ? LMAINTE_OK : LMAINTE_NOT_REACHED;
}

int32_t read_and_test(const Call &call, const Check &check) {
  const int32_t result = lmainte_get_fru_data(check.type, check.index, 1, check.model, check.record);
  if (result == LMAINTE_OK) return test_state(check);
  call.error(1, result);
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
  int32_t confirmations = 0;
  for (int32_t pass = 0; pass < timing.passes; ++pass) {
    const int32_t result = read_and_test(call, check);
    if (result != LMAINTE_OK) return result;
    if (++confirmations > kConfirmations) return LMAINTE_OK;
    sleep(timing.interval);
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
  if (result == LMAINTE_NOT_REACHED) call.error(2, result);
  return result;
}

}  // namespace

int32_t lmainte_get_fru_data(int32_t type, int32_t index, int32_t count, int32_t model, void *out) {
  const Call call(trace, kGetFruData);
  if (count == 0 || out == nullptr) {
    call.error(1, count);
    return LMAINTE_FAILED;
  }
  if (!lmainte::is_model(model)) {
    call.error(2, model);
    return LMAINTE_FAILED;
  }
  const TypeRow *row = row_of(type);
  if (row == nullptr) {
    call.error(3, type);
    return LMAINTE_FAILED;
  }
  if (row->getter == nullptr) return LMAINTE_FAILED;
  const int32_t result = row->getter(index, count, model, out);
  if (result == LMAINTE_OK) return LMAINTE_OK;
  call.error(4, result);
  return LMAINTE_FAILED;
}

int32_t lmainte_chk_fru_install(uint32_t expectation, int32_t type, int32_t index, int32_t model, void *record) {
  const Call call(trace, kCheckInstall);
  if (index == -1 || record == nullptr || !lmainte::is_model(model)) {
    call.error(1, index, model);
    return LMAINTE_FAILED;
  }
  const uint32_t databases[] = {LMAINTE_DB_SETUP, LMAINTE_DB_CURRENT, LMAINTE_DB_LOCAL, LMAINTE_DB_FRU};
  const lmainte::BracketEvents events = {.open = 2, .lock = 3, .unlock = 4, .close = 5, .database_first = true};
  int32_t result = LMAINTE_FAILED;
  lmainte::SessionBracket bracket(call, events, databases, lmainte::Hold::kOpen);
  const bool released = bracket.run([&] {
    result = await_state({expectation, type, index, model, record});
    return true;
  });
  return released ? result : LMAINTE_FAILED;
}
