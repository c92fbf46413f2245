#include "include/lmainte.h"

#include "src/db/access_table.h"
#include "src/frame/trace.h"
#include "src/model/unit_status.h"

namespace {

using lmainte::AccessTable;
using lmainte::Call;
using lmainte::RecordView;

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::second_block(0x011);

constexpr int32_t kDdcUnits = 2;
constexpr size_t kFirstDdcWord = 114;
constexpr size_t kDdcWords = 10;

constexpr size_t kBackplaneNameByte = 6187;
constexpr size_t kDdcNameByte = 64;

void fill_head(int32_t type, int32_t number, const RecordView &current, size_t first_word, BpUnitData &out) {
  const auto status = static_cast<int32_t>(current.word(first_word + 2));
  out.type = type;
  out.number = number;
  out.unit_id[0] = current.word(first_word);
  out.unit_id[1] = current.word(first_word + 1);
  out.status = status;
  out.mainte_status = status;
}

bool is_installed(const BpUnitData &unit) {
  return lmainte::is_installed(static_cast<uint32_t>(unit.status));
}

bool fill(const Call &call, const void *current, const void *backplane, const AccessTable &ddcs, Bp32Data &out) {
  if (current == nullptr || backplane == nullptr) {
    call.error(5);
    return false;
  }
  const RecordView view(current);
  fill_head(LMAINTE_TYPE_BP, 0, view, 0, out.bp);
  if (is_installed(out.bp)) RecordView(backplane).copy_name(kBackplaneNameByte, out.bp.fru_name);
  for (int32_t k = 0; k < kDdcUnits; ++k) {
    BpUnitData &unit = out.ddc[k];
    fill_head(LMAINTE_TYPE_DDC, k, view, kFirstDdcWord + kDdcWords * static_cast<size_t>(k), unit);
    if (!is_installed(unit)) continue;
    const void *fru = ddcs.find(k);
    if (fru == nullptr) {
      call.error(6, k);
      return false;
    }
    RecordView(fru).copy_name(kDdcNameByte, unit.fru_name);
  }
  return true;
}

bool read(const Call &call, Bp32Data &out) {
  AccessTable current(0, 1, 1008, "current_bp32_info");
  if (!current.fetch(LMAINTE_DB_CURRENT)) {
    call.error(2);
    return false;
  }
  AccessTable backplane(0, 1, 8192, "fru_bpa_info");
  if (!backplane.fetch(LMAINTE_DB_FRU)) {
    call.error(3);
    return false;
  }
  AccessTable ddcs(0, kDdcUnits, 320, "fru_ddca_info_%02d");
  if (!ddcs.fetch(LMAINTE_DB_FRU)) {
    call.error(4);
    return false;
  }
  return fill(call, current.find(0), backplane.find(0), ddcs, out);
}

}  // namespace

int32_t lmainte_get_bp32_data(int32_t, int32_t count, int32_t model, Bp32Data *out) {
  const Call call(trace, kBlock);
  if (count == 0 || out == nullptr || model != LMAINTE_MODEL_QE1) {
    call.error(1, count, model);
    return LMAINTE_FAILED;
  }
  return read(call, *out) ? LMAINTE_OK : LMAINTE_FAILED;
}
