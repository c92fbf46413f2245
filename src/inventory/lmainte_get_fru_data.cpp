#include "include/lmainte.h"

#include "src/frame/trace.h"
#include "src/inventory/unit_readers.h"
#include "src/model/model_family.h"
#include "trace_events/inventory.h"

namespace {

using lmainte::Call;
using lmainte::UnitReader;
using trace_events::GetFruData;

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::block_of<GetFruData>();

// The service processor units are known and not served here: they have readers of their own.
bool is_read_elsewhere(int32_t type) {
  return type == LMAINTE_TYPE_EMGBU || type == LMAINTE_TYPE_EMGBR;
}

}  // namespace

int32_t lmainte_get_fru_data(int32_t type, int32_t index, int32_t count, int32_t model, void *out) {
  const Call call(trace, kBlock);
  if (count == 0 || out == nullptr) {
    call.error(GetFruData::kRefused, count);
    return LMAINTE_FAILED;
  }
  if (!lmainte::is_model(model)) {
    call.error(GetFruData::kNoModel, model);
    return LMAINTE_FAILED;
  }
  const UnitReader *reader = lmainte::reader_of(type);
  if (reader == nullptr) {
    if (!is_read_elsewhere(type)) call.error(GetFruData::kNoType, type);
    return LMAINTE_FAILED;
  }
  const int32_t result = reader->read(index, count, model, out);
  if (result == LMAINTE_OK) return LMAINTE_OK;
  call.error(GetFruData::kNotRead, result);
  return LMAINTE_FAILED;
}
