#include "include/lmainte.h"

#include "src/frame/trace.h"
#include "trace_events/model.h"

namespace {

using trace_events::ConvertStrtofrutype;

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::block_of<ConvertStrtofrutype>();

}  // namespace

int32_t lmainte_convert_strtofrutype(const char *path, lmainte_fru_type *result) {
  const lmainte::Call call(trace, kBlock);
  if (path == nullptr || result == nullptr) {
    call.error(ConvertStrtofrutype::kNullArgument);
    return LMAINTE_FAILED;
  }
  lmainte_unit_position position = {};
  const int32_t converted = lmainte_get_unit_position_id(LMAINTE_POSITION_FRU, path, &position);
  if (converted != LMAINTE_OK) {
    call.error(ConvertStrtofrutype::kNotConverted, converted);
    return converted;
  }
  result->type = position.type;
  result->count = position.count;
  for (uint32_t i = 0; i < position.count; ++i) result->id[i] = position.id[i];
  return LMAINTE_OK;
}
