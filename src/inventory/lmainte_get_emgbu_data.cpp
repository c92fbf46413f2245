#include "include/lmainte.h"

#include <cerrno>
#include <cstdlib>

#include "src/db/record.h"
#include "src/db/record_view.h"
#include "src/db/session_bracket.h"
#include "src/frame/trace.h"
#include "src/inventory/unit_entries.h"
#include "src/model/model_family.h"
#include "src/model/unit_range.h"
#include "src/model/unit_status.h"
#include "trace_events/inventory.h"

namespace {

using lmainte::Block;
using lmainte::BracketErrors;
using lmainte::Call;
using lmainte::Record;
using lmainte::RecordView;
using lmainte::UnitRange;
using trace_events::GetEmgbData;
using trace_events::GetEmgbDataAll;
using trace_events::GetEmgbrData;
using trace_events::GetEmgbuData;
using trace_events::MergeLocal;
using trace_events::ReadEmgbs;

lmainte::Trace trace;
constexpr Block kGetByType = lmainte::block_of<GetEmgbData>();
constexpr Block kReadUnits = lmainte::block_of<ReadEmgbs>();
constexpr Block kMergeLocal = lmainte::block_of<MergeLocal>();
constexpr Block kGetSeveral = lmainte::block_of<GetEmgbDataAll>();

constexpr uint32_t kDatabases[] = {LMAINTE_DB_CURRENT, LMAINTE_DB_LOCAL, LMAINTE_DB_FRU};
constexpr BracketErrors kSeveralErrors = {
    .not_opened = GetEmgbDataAll::kNotOpened,
    .not_locked = GetEmgbDataAll::kNotLocked,
    .not_unlocked = GetEmgbDataAll::kNotUnlocked,
    .not_closed = GetEmgbDataAll::kNotClosed,
};

constexpr size_t kLocalNumberByte = 20;
constexpr int32_t kUnitsOfAKind = 2;

// What differs between the kinds of service processor units: the words of an entry in its current record; the words of the
// local record, and the roles of an installed unit, for the unit on which the process runs and for any other unit; and the
// events of its reader.
struct Kind {
  int32_t type;
  size_t entry_words;
  size_t own_word;
  size_t other_word;
  uint32_t own_role;
  uint32_t other_role;
  Block block;
  lmainte::Point entry;
  lmainte::Error refused;
  BracketErrors bracket;
};

constexpr Kind kEmgbu = {
    .type = LMAINTE_TYPE_EMGBU,
    .entry_words = 20,
    .own_word = 0,
    .other_word = 1,
    .own_role = 0,
    .other_role = LMAINTE_EMGBU_OTHER,
    .block = lmainte::block_of<GetEmgbuData>(),
    .entry = GetEmgbuData::kEntry,
    .refused = GetEmgbuData::kRefused,
    .bracket =
        {
            .not_opened = GetEmgbuData::kNotOpened,
            .not_locked = GetEmgbuData::kNotLocked,
            .not_unlocked = GetEmgbuData::kNotUnlocked,
            .not_closed = GetEmgbuData::kNotClosed,
        },
};
constexpr Kind kEmgbr = {
    .type = LMAINTE_TYPE_EMGBR,
    .entry_words = 6,
    .own_word = 3,
    .other_word = 4,
    .own_role = LMAINTE_EMGBR_OWN,
    .other_role = LMAINTE_EMGBR_OTHER,
    .block = lmainte::block_of<GetEmgbrData>(),
    .entry = GetEmgbrData::kEntry,
    .refused = GetEmgbrData::kRefused,
    .bracket =
        {
            .not_opened = GetEmgbrData::kNotOpened,
            .not_locked = GetEmgbrData::kNotLocked,
            .not_unlocked = GetEmgbrData::kNotUnlocked,
            .not_closed = GetEmgbrData::kNotClosed,
        },
};

bool read_unit(const Call &call, const Kind &kind, int32_t model, const RecordView &current, int32_t number,
               EmgbUnitData &out) {
  if (number < 0 || number >= kUnitsOfAKind) {
    call.error(ReadEmgbs::kNoUnit, number);
    return false;
  }
  Record fru;
  if (!fru.read(LMAINTE_DB_FRU, model, kind.type, number)) {
    call.error(ReadEmgbs::kNoFruRecord, LMAINTE_FAILED, number);
    return false;
  }
  const RecordView entry = current.at(static_cast<size_t>(number) * kind.entry_words * sizeof(uint32_t));
  lmainte::fill_head(kind.type, number, entry, out);
  fru.view().copy_name(lmainte::kIdentityNameByte, out.name);
  return true;
}

bool read_units(const Kind &kind, const UnitRange &range, int32_t model, EmgbUnitData *out) {
  const Call call(trace, kReadUnits);
  Record current;
  if (!current.read(LMAINTE_DB_CURRENT, model, kind.type, 0)) {
    call.error(ReadEmgbs::kNoRecord, LMAINTE_FAILED, kind.type);
    return false;
  }
  for (int32_t i = 0; i < range.count; ++i)
    if (!read_unit(call, kind, model, current.view(), range.first + i, out[i])) return false;
  return true;
}

uint32_t fault_flags_of(uint32_t status) {
  const uint32_t faulted = (status & LMAINTE_STATUS_FAULTED) != 0 ? LMAINTE_EMGB_FAULTED : 0;
  const uint32_t degraded = (status & LMAINTE_STATUS_DEGRADED) != 0 ? LMAINTE_EMGB_DEGRADED : 0;
  return faulted | degraded;
}

// Adds what the unit on which the process runs says of itself and of the others.
bool merge_local(const Kind &kind, int32_t model, int32_t count, EmgbUnitData *out) {
  const Call call(trace, kMergeLocal);
  Record local;
  if (!local.read(LMAINTE_DB_LOCAL, model, kind.type, 0)) {
    call.error(MergeLocal::kNoRecord, LMAINTE_FAILED, kind.type);
    return false;
  }
  const uint32_t local_number = local.view().byte(kLocalNumberByte);
  for (int32_t i = 0; i < count; ++i) {
    EmgbUnitData &unit = out[i];
    const auto status = static_cast<uint32_t>(unit.status);
    const bool is_own = local_number == static_cast<uint32_t>(unit.number);
    const uint32_t role = is_own ? kind.own_role : kind.other_role;
    unit.local_word = local.view().word(is_own ? kind.own_word : kind.other_word);
    unit.fault_flags = fault_flags_of(status);
    unit.role_flag = lmainte::is_installed(status) ? role : 0;
    unit.local_number = local_number;
  }
  return true;
}

int32_t read_kind(const Kind &kind, int32_t unit, int32_t count, int32_t model, EmgbUnitData *out) {
  Call call(trace, kind.block, kind.entry);
  const bool is_kind_of_model = kind.type == LMAINTE_TYPE_EMGBU || model == LMAINTE_MODEL_QE3;
  if (count <= 0 || out == nullptr || !is_kind_of_model || !lmainte::is_model(model)) {
    call.error(kind.refused, count, model);
    return call.returns(LMAINTE_FAILED);
  }
  const UnitRange range = lmainte::range_of(unit, count);
  lmainte::SessionBracket bracket(call, kind.bracket, kDatabases, lmainte::Hold::kLocked);
  const bool good =
      bracket.run([&] { return read_units(kind, range, model, out) && merge_local(kind, model, range.count, out); });
  return call.returns(good ? LMAINTE_OK : LMAINTE_FAILED);
}

bool has_one_unit(int32_t model) {
  return lmainte::is_model(model) && !lmainte::is_high_end(model);
}

// An unknown model is asked for two units, and refused by the reader.
bool read_all(const Call &call, int32_t model, EmgbUnitData *out) {
  const int32_t count = has_one_unit(model) ? 1 : kUnitsOfAKind;
  const int32_t result = lmainte_get_emgbu_data(lmainte::kAllUnits, count, model, out);
  if (result != LMAINTE_OK) {
    call.error(GetEmgbDataAll::kEmgbusNotRead, result);
    return false;
  }
  if (model != LMAINTE_MODEL_QE3) return true;
  const int32_t second = lmainte_get_emgbr_data(lmainte::kAllUnits, kUnitsOfAKind, model, out + kUnitsOfAKind);
  if (second != LMAINTE_OK) call.error(GetEmgbDataAll::kEmgbrsNotRead, second);
  return second == LMAINTE_OK;
}

// A unit that does not exist leaves its slot as it was.
void copy_unit(const EmgbUnitData *units, int32_t count, int32_t type, int64_t number, EmgbUnitData &out) {
  for (int32_t i = 0; i < count; ++i) {
    if (units[i].type != type || units[i].number != number) continue;
    out = units[i];
    return;
  }
}

// On the model with both kinds, the units alternate. A pair is the two units of one number.
void copy_pairs(const EmgbUnitData *units, int32_t count, int32_t unit, int32_t model, EmgbUnitData *out) {
  const bool is_all = unit == lmainte::kAllUnits;
  const int64_t first = is_all ? 0 : unit;
  const int32_t wanted = is_all ? count : count / 2;
  for (int32_t k = 0; k < wanted; ++k) {
    if (model == LMAINTE_MODEL_QE3)
      copy_unit(units, count, k % 2 == 0 ? LMAINTE_TYPE_EMGBU : LMAINTE_TYPE_EMGBR, first + k / 2, out[k]);
    else
      copy_unit(units, count, LMAINTE_TYPE_EMGBU, first + k, out[k]);
  }
}

}  // namespace

int32_t lmainte_get_emgbu_data(int32_t unit, int32_t count, int32_t model, EmgbUnitData *out) {
  return read_kind(kEmgbu, unit, count, model, out);
}

int32_t lmainte_get_emgbr_data(int32_t unit, int32_t count, int32_t model, EmgbUnitData *out) {
  return read_kind(kEmgbr, unit, count, model, out);
}

int32_t lmainte_get_emgb_data(int32_t type, int32_t unit, int32_t count, int32_t model, EmgbUnitData *out) {
  const Call call(trace, kGetByType);
  if (type != LMAINTE_TYPE_EMGBU && type != LMAINTE_TYPE_EMGBR) {
    call.error(GetEmgbData::kNoType, type);
    return LMAINTE_FAILED;
  }
  const int32_t result = type == LMAINTE_TYPE_EMGBU ? lmainte_get_emgbu_data(unit, count, model, out)
                                                    : lmainte_get_emgbr_data(unit, count, model, out);
  if (result == LMAINTE_OK) return LMAINTE_OK;
  call.error(GetEmgbData::kNotRead, type, result);
  return LMAINTE_FAILED;
}

int32_t lmainte_get_emgb_data_all(int32_t model, EmgbUnitData *out) {
  const Call call(trace, kGetSeveral);
  if (out == nullptr) {
    call.error(GetEmgbDataAll::kNoResult);
    return LMAINTE_FAILED;
  }
  lmainte::SessionBracket bracket(call, kSeveralErrors, kDatabases, lmainte::Hold::kLocked);
  return bracket.run([&] { return read_all(call, model, out); }) ? LMAINTE_OK : LMAINTE_FAILED;
}

int32_t lmainte_get_emgb_data_pair(int32_t unit, int32_t model, EmgbUnitData *out) {
  const Call call(trace, kGetSeveral);
  if (out == nullptr) {
    call.error(GetEmgbDataAll::kNoResult);
    return LMAINTE_FAILED;
  }
  if (has_one_unit(model)) {
    call.error(GetEmgbDataAll::kNoPairs, model);
    return LMAINTE_FAILED;
  }
  const int32_t count = model == LMAINTE_MODEL_QE3 ? 2 * kUnitsOfAKind : kUnitsOfAKind;
  auto *units = static_cast<EmgbUnitData *>(calloc(static_cast<size_t>(count), sizeof(EmgbUnitData)));
  if (units == nullptr) {
    call.system_call_failed(GetEmgbDataAll::kNoMemory);
    return LMAINTE_FAILED;
  }
  const int32_t result = lmainte_get_emgb_data_all(model, units);
  if (result == LMAINTE_OK)
    copy_pairs(units, count, unit, model, out);
  else
    call.error(GetEmgbDataAll::kNotRead, result);
  free(units);
  return result;
}
