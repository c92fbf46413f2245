#include "include/lmainte.h"

#include "src/db/access_table.h"
#include "src/frame/trace.h"
#include "src/inventory/unit_entries.h"
#include "src/model/model_family.h"
#include "src/model/unit_range.h"
#include "trace_events/inventory.h"

namespace {

using lmainte::AccessTable;
using lmainte::Block;
using lmainte::Call;
using lmainte::Family;
using lmainte::FlaggedEntries;
using lmainte::RecordView;
using lmainte::UnitRange;
using trace_events::FetchPsus;
using trace_events::GetPsuData;
using trace_events::ReadPsus;

lmainte::Trace trace;
constexpr Block kGetPsuData = lmainte::block_of<GetPsuData>();
constexpr Block kFetch = lmainte::block_of<FetchPsus>();
constexpr Block kRead = lmainte::block_of<ReadPsus>();

// The current record holds sixty entries.
constexpr int32_t kEntrySize = 56;
constexpr size_t kInfoByte = 24;

constexpr int32_t kFruRecordSize = 320;
constexpr size_t kNameLengthByte = 79;
constexpr uint8_t kNoInfo = 255;

// What differs between the families. The entry model keeps its FRU records under the high end's names.
struct FamilyRow {
  Family family;
  const char *fru_record;
  bool has_info_byte;
};

constexpr FamilyRow kFamilies[] = {
    {Family::kQb, "fru_psu_qb_info_%02d", true},
    {Family::kQa, "fru_psu_qe_info_%02d", true},
    {Family::kQe, "fru_psu_qe_info_%02d", false},
};

void fill(const FlaggedEntries &psus, int32_t number, const FamilyRow &family, PsuData &out) {
  const RecordView entry = psus.entry(number);
  lmainte::fill_head(LMAINTE_TYPE_PSU, number, entry, psus.status(number), out);
  out.mainte_status = out.status;
  out.info_byte = family.has_info_byte ? entry.byte(kInfoByte) : kNoInfo;
  out.flags = psus.flags(number);
}

bool read(const UnitRange &range, const FamilyRow &family, const FlaggedEntries &psus, const AccessTable &names,
          PsuData *out) {
  const Call call(trace, kRead);
  for (int32_t i = 0; i < range.count; ++i) {
    const int32_t number = range.first + i;
    if (!psus.has(number)) {
      call.error(ReadPsus::kNoEntry, number);
      return false;
    }
    fill(psus, number, family, out[i]);
    if (!lmainte::copy_name(call, ReadPsus::kNoFruRecord, names, kNameLengthByte, out[i])) return false;
  }
  return true;
}

bool fetch_and_read(const UnitRange &range, const FamilyRow &family, PsuData *out) {
  const Call call(trace, kFetch);
  AccessTable current(0, 1, lmainte::kPsuRecord);
  if (!current.fetch(LMAINTE_DB_CURRENT)) {
    call.error(FetchPsus::kNoCurrent);
    return false;
  }
  const FlaggedEntries psus(current.find(0), lmainte::kPsuRecord.size, kEntrySize);
  AccessTable names(range.first, range.count, {family.fru_record, kFruRecordSize});
  if (!names.fetch(LMAINTE_DB_FRU, psus.absence_of_names())) {
    call.error(FetchPsus::kNoFruRecords, range.first, range.count);
    return false;
  }
  if (psus.are_missing()) {
    call.error(FetchPsus::kNoRecord);
    return false;
  }
  return read(range, family, psus, names, out);
}

}  // namespace

int32_t lmainte_get_psu_data(int32_t psu, int32_t count, int32_t model, PsuData *out) {
  const Call call(trace, kGetPsuData);
  const FamilyRow *family = lmainte::row_of(kFamilies, model);
  if (count == 0 || out == nullptr || family == nullptr) {
    call.error(GetPsuData::kRefused, count, model);
    return LMAINTE_FAILED;
  }
  const UnitRange range = lmainte::range_of(psu, count);
  if (!fetch_and_read(range, *family, out)) {
    call.error(GetPsuData::kNotRead, range.first, range.count);
    return LMAINTE_FAILED;
  }
  return LMAINTE_OK;
}
