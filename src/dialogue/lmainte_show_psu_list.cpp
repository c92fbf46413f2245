#include "include/lmainte.h"

#include "src/dialogue/status_text.h"
#include "src/dialogue/unit_table.h"
#include "src/frame/trace.h"

namespace {

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::plain_block(0x013);

}  // namespace

int32_t lmainte_show_psu_list(int32_t, uint32_t count, const PsuData *psus, const ListLine *lines) {
  lmainte::Call call(trace, kBlock);
  if (psus == nullptr) {
    call.error(1);
    return call.returns(LMAINTE_FAILED);
  }
  if (lines == nullptr) {
    call.error(2);
    return call.returns(LMAINTE_FAILED);
  }
  const lmainte::TableEvents events = {.file = {.open = 3, .show = 5, .remove = 6}, .name = 4};
  return call.returns(lmainte::Table(call, events).show(lines, [&](lmainte::Table &table) {
    for (uint32_t i = 0; i < count; ++i) {
      const PsuData &psu = psus[i];
      lmainte::UnitName name;
      if (!table.find_name(psu.unit_id, lmainte::NameForm::kLocation, name)) return false;
      table.write_unit("%2d. %-16s%s\n", static_cast<int>(i + 1), name.shown(),
                       lmainte::flagged_status_text(psu.status, psu.mainte_status, psu.flags));
    }
    return true;
  }));
}
