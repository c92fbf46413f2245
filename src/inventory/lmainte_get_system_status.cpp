#include "include/lmainte.h"

#include "src/db/access_table.h"
#include "src/frame/trace.h"
#include "trace_events/inventory.h"

namespace {

using trace_events::GetSystemStatus;

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::block_of<GetSystemStatus>();

}  // namespace

int32_t lmainte_get_system_status(SystemStatus *out) {
  const lmainte::Call call(trace, kBlock);
  if (out == nullptr) {
    call.error(GetSystemStatus::kNoResult);
    return LMAINTE_FAILED;
  }
  lmainte::AccessTable table(0, 1, lmainte::kSystemRecord);
  if (!table.fetch(LMAINTE_DB_CURRENT)) {
    call.error(GetSystemStatus::kNotRead);
    return LMAINTE_FAILED;
  }
  const void *record = table.find(0);
  if (record == nullptr) {
    call.error(GetSystemStatus::kNoRecord);
    return LMAINTE_FAILED;
  }
  const lmainte::RecordView view(record);
  out->system_status = view.word(2);
  out->system_info_8 = view.word(8);
  return LMAINTE_OK;
}
