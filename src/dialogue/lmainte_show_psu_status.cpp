#include "include/lmainte.h"

#include "src/dialogue/status_text.h"
#include "src/dialogue/unit_table.h"
#include "src/frame/trace.h"

namespace {

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::plain_block(0x023);

}  // namespace

int32_t lmainte_show_psu_status(int32_t, const PsuData *psu, const ListLine *lines) {
  const lmainte::Call call(trace, kBlock);
  if (psu == nullptr) {
    call.error(1);
    return LMAINTE_FAILED;
  }
  if (lines == nullptr) {
    call.error(2);
    return LMAINTE_FAILED;
  }
  const lmainte::TableEvents events = {.file = {.open = 3, .show = 5, .remove = 6}, .name = 4};
  return lmainte::Table(call, events).show(lines, [&](lmainte::Table &table) {
    lmainte::UnitName name;
    if (!table.find_name(psu->unit_id, lmainte::NameForm::kLocation, name)) return false;
    table.write_unit("%-14s%s\n", name.shown(),
                     lmainte::flagged_status_text(psu->status, psu->mainte_status, psu->flags));
    return true;
  });
}
