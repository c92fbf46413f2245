#include "include/lmainte.h"

#include "src/db/access_table.h"
#include "src/frame/trace.h"
#include "src/inventory/unit_entries.h"
#include "src/model/model_family.h"
#include "src/model/unit_range.h"
#include "src/model/unit_status.h"
#include "trace_events/inventory.h"

namespace {

using lmainte::AccessTable;
using lmainte::Block;
using lmainte::Call;
using lmainte::FlaggedEntries;
using lmainte::RecordView;
using lmainte::UnitRange;
using trace_events::GetFantrayData;
using trace_events::ReadFantrays;

lmainte::Trace trace;
constexpr Block kGetFantrayData = lmainte::block_of<GetFantrayData>();
constexpr Block kRead = lmainte::block_of<ReadFantrays>();

// The current record holds thirty-two entries, each with the tray's own words and those of three fans.
constexpr int32_t kEntrySize = 216;
constexpr size_t kFanStatusByte = 32;
constexpr size_t kFanFlagByte = 44;
constexpr size_t kFanSize = 56;

constexpr int32_t kFruRecordSize = 256;
constexpr size_t kNameLengthByte = 43;

// What differs between the models. The fans of their trays stand in the order of the trays.
struct ModelRow {
  uint32_t model;
  const lmainte_fan_count *fans;
  int32_t trays;
};

constexpr ModelRow kModels[] = {
    {LMAINTE_MODEL_QA, max_fan_num_qa, 4},    {LMAINTE_MODEL_QB1, max_fan_num_qb1, 6},
    {LMAINTE_MODEL_QB2, max_fan_num_qb2, 8},  {LMAINTE_MODEL_QE1, max_fan_num_qe1, 12},
    {LMAINTE_MODEL_QE2, max_fan_num_qe2, 16}, {LMAINTE_MODEL_QE3, max_fan_num_qe3, 32},
};

// The number of fans of a tray; 0 for a tray that the model lacks.
int32_t fans_of(const ModelRow &model, int32_t tray) {
  return tray >= 0 && tray < model.trays ? model.fans[tray].fans : 0;
}

void fill_head(const FlaggedEntries &trays, int32_t tray, FantrayData &out) {
  lmainte::fill_head(LMAINTE_TYPE_FANTRAY, tray, trays.entry(tray), trays.status(tray), out);
  out.mainte_status = out.status;
  out.flags = trays.flags(tray);
}

void fill_fans(int32_t count, const RecordView &entry, FantrayData &out) {
  out.fan_count = count;
  for (int32_t i = 0; i < count; ++i) {
    const RecordView fan = entry.at(kFanSize * static_cast<size_t>(i));
    const uint8_t flags = fan.byte(kFanFlagByte);
    out.fan[i].status = static_cast<int32_t>(lmainte::merged_status(fan.at(kFanStatusByte).word(0), flags));
    out.fan[i].flags = flags;
  }
}

// What a read works with. The FRU records exist on the high end only.
struct Source {
  const ModelRow &model;
  const FlaggedEntries &trays;
  const AccessTable *names;
};

// Reads tray `tray` into a record whose fans are those of the entry of `fan_tray`.
bool read_tray(const Call &call, const Source &source, int32_t tray, int32_t fan_tray, FantrayData &out) {
  if (!source.trays.has(tray)) {
    call.error(ReadFantrays::kNoEntry, tray);
    return false;
  }
  fill_head(source.trays, tray, out);
  const int32_t fans = fans_of(source.model, tray);
  if (fans == 0) {
    call.error(ReadFantrays::kNoFantray, tray);
    return false;
  }
  fill_fans(fans, source.trays.entry(fan_tray), out);
  return source.names == nullptr ||
         lmainte::copy_name(call, ReadFantrays::kNoFruRecord, *source.names, kNameLengthByte, out);
}

// The list of the smallest high-end model shows trays 2 to 5 before trays 0 and 1.
int32_t listed_tray(int32_t position) {
  if (position < 4) return position + 2;
  if (position < 6) return position - 4;
  return position;
}

bool read(const Source &source, bool is_list, const UnitRange &range, FantrayData *out) {
  const Call call(trace, kRead);
  if (source.trays.are_missing()) {
    call.error(ReadFantrays::kNoRecord);
    return false;
  }
  for (int32_t i = 0; i < range.count; ++i) {
    // In the list, the record's head is that of the tray shown and its fans are those of the tray at this position. The
    // commands rely on it.
    const int32_t place = range.first + i;
    if (!read_tray(call, source, is_list ? listed_tray(place) : place, place, out[i])) return false;
  }
  return true;
}

bool fetch_and_read(const Call &call, const ModelRow &model, bool is_list, const UnitRange &range, FantrayData *out) {
  AccessTable current(0, 1, lmainte::kFantrayRecord);
  if (!current.fetch(LMAINTE_DB_CURRENT)) {
    call.error(GetFantrayData::kNoCurrent, LMAINTE_DB_CURRENT);
    return false;
  }
  const FlaggedEntries trays(current.find(0), lmainte::kFantrayRecord.size, kEntrySize);
  if (lmainte::family_of(model.model) != lmainte::Family::kQe) return read({model, trays, nullptr}, false, range, out);
  AccessTable names(range.first, range.count, {"fru_fan_qe_info_%02d", kFruRecordSize});
  if (!names.fetch(LMAINTE_DB_FRU, trays.absence_of_names())) {
    call.error(GetFantrayData::kNoFruRecords, LMAINTE_DB_FRU, range.first);
    return false;
  }
  return read({model, trays, &names}, is_list && model.model == LMAINTE_MODEL_QE1, range, out);
}

}  // namespace

int32_t lmainte_get_fantray_data(int32_t tray, int32_t count, int32_t model, FantrayData *out) {
  const Call call(trace, kGetFantrayData);
  const ModelRow *row = lmainte::row_of(kModels, model);
  if (count == 0 || out == nullptr || row == nullptr) {
    call.error(GetFantrayData::kRefused, count, model);
    return LMAINTE_FAILED;
  }
  const bool is_list = tray == lmainte::kAllUnits;
  return fetch_and_read(call, *row, is_list, lmainte::range_of(tray, count), out) ? LMAINTE_OK : LMAINTE_FAILED;
}
