#include "include/lmainte.h"

#include "src/frame/trace.h"

namespace {

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::plain_block(0x052);

}  // namespace

int32_t lmainte_convert_strtofrutype(const char *path, lmainte_fru_type *result) {
  const lmainte::Call call(trace, kBlock);
  if (path == nullptr || result == nullptr) {
    call.error(1);
    return LMAINTE_FAILED;
  }
  lmainte_unit_position position = {};
  const int32_t converted = lmainte_get_unit_position_id(LMAINTE_POSITION_FRU, path, &position);
  if (converted != LMAINTE_OK) {
    call.error(2, converted);
    return converted;
  }
  result->type = position.type;
  result->count = position.count;
  for (uint32_t i = 0; i < position.count; ++i) result->id[i] = position.id[i];
  return LMAINTE_OK;
}
