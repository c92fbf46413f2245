#include "include/lmainte.h"

#include "src/db/access_table.h"
#include "src/frame/trace.h"
#include "src/model/model_family.h"
#include "src/model/unit_range.h"
#include "trace_events/inventory.h"

namespace {

using lmainte::AccessTable;
using lmainte::Call;
using lmainte::RecordView;
using lmainte::UnitRange;
using trace_events::GetXsbData;

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::block_of<GetXsbData>();

void fill(int32_t number, const RecordView &setup, const RecordView &current, XsbData &out) {
  out.number = number;
  out.cur_info_0 = current.word(0);
  out.cur_info_13 = current.word(13);
  out.current_domain = static_cast<int32_t>(current.word(14));
  out.setup_domain = static_cast<int32_t>(setup.word(32));
  out.active = current.byte(61);
}

bool read(const Call &call, const UnitRange &range, XsbData *out) {
  AccessTable setup(range.first, range.count, {"setup_xsb_info_%02d", 192});
  if (!setup.fetch(LMAINTE_DB_SETUP)) {
    call.error(GetXsbData::kNoSetup);
    return false;
  }
  AccessTable current(range.first, range.count, {"current_xsb_info_%02d", 152});
  if (!current.fetch(LMAINTE_DB_CURRENT)) {
    call.error(GetXsbData::kNoCurrent);
    return false;
  }
  for (int32_t i = 0; i < range.count; ++i) {
    // A number beyond the highest one wraps. It has no record.
    const auto number = static_cast<int32_t>(static_cast<uint32_t>(range.first) + static_cast<uint32_t>(i));
    const void *setup_record = setup.find(number);
    const void *current_record = current.find(number);
    if (setup_record == nullptr || current_record == nullptr) {
      call.error(GetXsbData::kNoRecord, number, i);
      return false;
    }
    fill(number, RecordView(setup_record), RecordView(current_record), out[i]);
  }
  return true;
}

}  // namespace

int32_t lmainte_get_xsb_data(int32_t xsb, int32_t count, int32_t model, XsbData *out) {
  const Call call(trace, kBlock);
  if (count == 0 || out == nullptr || !lmainte::is_high_end(model)) {
    call.error(GetXsbData::kRefused, count, model);
    return LMAINTE_FAILED;
  }
  // A number does not limit the read to one record: count of them are read from it on.
  const UnitRange range = {xsb == lmainte::kAllUnits ? 0 : xsb, count};
  return read(call, range, out) ? LMAINTE_OK : LMAINTE_FAILED;
}
