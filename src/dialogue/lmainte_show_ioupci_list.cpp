#include "include/lmainte.h"

#include "src/dialogue/pci_slots.h"
#include "src/dialogue/unit_lines.h"
#include "src/frame/trace.h"

namespace {

lmainte::Trace trace;
constexpr lmainte::Block kBlock = lmainte::plain_block(0x01A);

}  // namespace

int32_t lmainte_show_ioupci_list(int32_t, uint32_t slots, const SbData *board, const ListLine *lines) {
  lmainte::Call call(trace, kBlock);
  if (!lmainte::is_given(call, 1, board) || !lmainte::is_given(call, 2, lines)) return call.returns(LMAINTE_FAILED);
  return call.returns(lmainte::Table(call, 3).show(lines, [&](lmainte::Table &table) {
    int32_t number = 0;
    return lmainte::write_installed_slots(table, board->iou.reserved, slots, number);
  }));
}
