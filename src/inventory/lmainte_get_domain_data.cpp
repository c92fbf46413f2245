#include "include/lmainte.h"

#include "src/db/access_table.h"
#include "src/frame/trace.h"
#include "src/model/model_family.h"
#include "src/model/unit_range.h"
#include "trace_events/inventory.h"

namespace {

using trace_events::GetDomainData;

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::block_of<GetDomainData>();

}  // namespace

int32_t lmainte_get_domain_data(int32_t domain, int32_t count, int32_t model, DomainData *out) {
  const lmainte::Call call(trace, kBlock);
  if (count == 0 || out == nullptr) {
    call.error(GetDomainData::kRefused, count);
    return LMAINTE_FAILED;
  }
  if (!lmainte::is_model(model)) {
    call.error(GetDomainData::kNoModel, model);
    return LMAINTE_FAILED;
  }
  const lmainte::UnitRange range = lmainte::range_of(domain, count);
  lmainte::AccessTable table(range.first, range.count, {"current_domain_info_%02d", 1464});
  if (!table.fetch(LMAINTE_DB_CURRENT)) {
    call.error(GetDomainData::kNotRead);
    return LMAINTE_FAILED;
  }
  for (int32_t i = 0; i < range.count; ++i) {
    const int32_t number = range.first + i;
    const void *record = table.find(number);
    if (record == nullptr) {
      call.error(GetDomainData::kNoRecord, number, i);
      return LMAINTE_FAILED;
    }
    const lmainte::RecordView view(record);
    out[i].number = number;
    out[i].dom_info_0 = view.word(0);
    out[i].dom_byte_44 = view.byte(44);
  }
  return LMAINTE_OK;
}
