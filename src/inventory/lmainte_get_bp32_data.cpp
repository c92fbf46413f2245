#include "include/lmainte.h"

#include "src/db/access_table.h"
#include "src/frame/trace.h"
#include "src/inventory/unit_entries.h"
#include "src/model/unit_status.h"
#include "trace_events/inventory.h"

namespace {

using lmainte::AccessTable;
using lmainte::Call;
using lmainte::RecordView;
using trace_events::GetBp32Data;

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::block_of<GetBp32Data>();

constexpr int32_t kDdcUnits = 2;
constexpr size_t kFirstDdc = 456;
constexpr size_t kDdcSize = 40;

constexpr size_t kDdcNameByte = 64;

// The status word is taken as it is stored: these units have no flag byte.
void fill_head(int32_t type, int32_t number, const RecordView &entry, BpUnitData &out) {
  lmainte::fill_head(type, number, entry, out);
  out.mainte_status = out.status;
}

bool fill(const Call &call, const void *current, const void *backplane, const AccessTable &ddcs, Bp32Data &out) {
  if (current == nullptr || backplane == nullptr) {
    call.error(GetBp32Data::kNoRecord);
    return false;
  }
  const RecordView view(current);
  fill_head(LMAINTE_TYPE_BP, 0, view, out.bp);
  if (lmainte::is_installed(out.bp.status))
    RecordView(backplane).copy_name(lmainte::kIdentityNameByte, out.bp.fru_name);
  for (int32_t k = 0; k < kDdcUnits; ++k) {
    BpUnitData &unit = out.ddc[k];
    fill_head(LMAINTE_TYPE_DDC, k, view.at(kFirstDdc + kDdcSize * static_cast<size_t>(k)), unit);
    if (!lmainte::copy_name(call, GetBp32Data::kNoFruRecord, ddcs, kDdcNameByte, unit)) return false;
  }
  return true;
}

bool read(const Call &call, Bp32Data &out) {
  AccessTable current(0, 1, lmainte::kBp32Record);
  if (!current.fetch(LMAINTE_DB_CURRENT)) {
    call.error(GetBp32Data::kNoCurrent);
    return false;
  }
  AccessTable backplane(0, 1, {"fru_bpa_info", lmainte::kIdentitySize});
  if (!backplane.fetch(LMAINTE_DB_FRU)) {
    call.error(GetBp32Data::kNoBackplane);
    return false;
  }
  AccessTable ddcs(0, kDdcUnits, {"fru_ddca_info_%02d", 320});
  if (!ddcs.fetch(LMAINTE_DB_FRU)) {
    call.error(GetBp32Data::kNoDdcs);
    return false;
  }
  return fill(call, current.find(0), backplane.find(0), ddcs, out);
}

}  // namespace

int32_t lmainte_get_bp32_data(int32_t, int32_t count, int32_t model, Bp32Data *out) {
  const Call call(trace, kBlock);
  if (count == 0 || out == nullptr || model != LMAINTE_MODEL_QE1) {
    call.error(GetBp32Data::kRefused, count, model);
    return LMAINTE_FAILED;
  }
  return read(call, *out) ? LMAINTE_OK : LMAINTE_FAILED;
}
