#include "include/lmainte.h"

#include "src/db/access_table.h"
#include "src/frame/trace.h"

namespace {

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::plain_block(0x041);

}  // namespace

int32_t lmainte_get_system_status(SystemStatus *out) {
  const lmainte::Call call(trace, kBlock);
  if (out == nullptr) {
    call.error(1);
    return LMAINTE_FAILED;
  }
  lmainte::AccessTable table(0, 1, lmainte::kSystemRecord);
  if (!table.fetch(LMAINTE_DB_CURRENT)) {
    call.error(2);
    return LMAINTE_FAILED;
  }
  const void *record = table.find(0);
  if (record == nullptr) {
    call.error(3);
    return LMAINTE_FAILED;
  }
  const lmainte::RecordView view(record);
  out->system_status = view.word(2);
  out->system_info_8 = view.word(8);
  return LMAINTE_OK;
}
