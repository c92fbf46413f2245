#include "include/lmainte.h"

#include "src/frame/trace.h"
#include "src/model/unit_range.h"
#include "trace_events/inventory.h"

namespace {

using trace_events::GetDdcaData;

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::block_of<GetDdcaData>();

constexpr int32_t kDdcUnits = 2;

bool exist(const lmainte::UnitRange &range) {
  return range.first >= 0 && range.first < kDdcUnits && range.count <= kDdcUnits - range.first;
}

}  // namespace

int32_t lmainte_get_ddca_data(int32_t ddc, int32_t count, int32_t model, BpUnitData *out) {
  const lmainte::Call call(trace, kBlock);
  if (count <= 0 || out == nullptr || model != LMAINTE_MODEL_QE1) {
    call.error(GetDdcaData::kRefused, count, model);
    return LMAINTE_FAILED;
  }
  const lmainte::UnitRange range = lmainte::range_of(ddc, count);
  if (!exist(range)) {
    call.error(GetDdcaData::kNoUnits, ddc, count);
    return LMAINTE_FAILED;
  }
  Bp32Data units = {};
  const int32_t result = lmainte_get_bp32_data(0, 1, model, &units);
  if (result != LMAINTE_OK) {
    call.error(GetDdcaData::kNotRead, result);
    return LMAINTE_FAILED;
  }
  for (int32_t i = 0; i < range.count; ++i) out[i] = units.ddc[range.first + i];
  return LMAINTE_OK;
}
